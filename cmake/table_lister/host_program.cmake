# In a cross build the program that fills the templates is compiled for this machine, with the sources of the
# library whose tables it reads.

find_program(HOST_CXX NAMES c++ g++ clang++ REQUIRED NO_CMAKE_FIND_ROOT_PATH
    DOC "C++ compiler for the machine that builds")

get_target_property(library_sources lumocmd_core SOURCES)
list(TRANSFORM sources PREPEND cmake/table_lister/)
set(host_directory ${CMAKE_CURRENT_BINARY_DIR}/host)
file(MAKE_DIRECTORY ${host_directory})
set(objects)
foreach(source IN LISTS sources library_sources)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
    cmake_path(GET source FILENAME name)
    set(object ${host_directory}/${name}.o)
    add_custom_command(
        OUTPUT ${object}
        COMMAND ${HOST_CXX} -std=c++20 -MD -MF ${object}.d -MT ${object} -I${PROJECT_SOURCE_DIR}
            -isystem ${GENERATED_DIR} -isystem ${SOAP_HEADER_DIR} ${GSOAP_FLAGS} -DWITH_COMPAT
            -c ${source} -o ${object}
        DEPENDS ${source} lumows_client # for the generated headers
        DEPFILE ${object}.d
        COMMENT "Compiling ${name} for this machine"
        VERBATIM)
    list(APPEND objects ${object})
endforeach()

# It reads the tables without calling their functions. So it needs no SOAP runtime, which may be there for the
# target alone.
add_custom_command(
    OUTPUT ${host_directory}/table_lister
    COMMAND ${HOST_CXX} -no-pie -Wl,--unresolved-symbols=ignore-all ${objects}
        -o ${host_directory}/table_lister
    DEPENDS ${objects}
    COMMENT "Linking lumocmd_table_lister for this machine"
    VERBATIM)
add_custom_target(host_table_lister DEPENDS ${host_directory}/table_lister)

add_executable(lumocmd_table_lister IMPORTED GLOBAL)
set_target_properties(lumocmd_table_lister PROPERTIES
    IMPORTED_LOCATION ${host_directory}/table_lister CROSSCOMPILING_EMULATOR "")
add_dependencies(lumocmd_table_lister host_table_lister)
