# Finds gSOAP by pkg-config or below GSOAP_ROOT. Each part can be named by itself: in a cross build the
# generator is a program of this machine, the library is the target's.

set(GSOAP_ROOT "" CACHE PATH "Prefix of a gSOAP that is not pkg-config's")
if(GSOAP_ROOT)
    # Its gsoap.pc has the flags that the library was compiled with.
    set(usual_search "$ENV{PKG_CONFIG_LIBDIR}")
    set(directories ${GSOAP_ROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE} ${GSOAP_ROOT}/lib ${GSOAP_ROOT}/lib64)
    list(TRANSFORM directories APPEND /pkgconfig OUTPUT_VARIABLE search)
    list(JOIN search ":" search)
    set(ENV{PKG_CONFIG_LIBDIR} "${search}")
    set(library_search HINTS ${directories} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    set(header_search HINTS ${GSOAP_ROOT}/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
endif()
find_package(PkgConfig REQUIRED)
pkg_check_modules(GSOAP gsoap)
if(GSOAP_ROOT)
    # An empty PKG_CONFIG_LIBDIR would hide every package.
    unset(ENV{PKG_CONFIG_LIBDIR})
    if(usual_search)
        set(ENV{PKG_CONFIG_LIBDIR} "${usual_search}")
    endif()
    if(NOT CMAKE_CROSSCOMPILING)
        set(program_search HINTS ${GSOAP_ROOT}/bin)
    endif()
else()
    set(library_search HINTS ${GSOAP_LIBDIR})
    set(header_search HINTS ${GSOAP_INCLUDEDIR})
endif()

find_program(SOAPCPP2 soapcpp2 ${program_search} REQUIRED DOC "gSOAP's generator, of this machine")
find_library(GSOAP_LIBRARY libgsoap.a ${library_search} REQUIRED DOC "gSOAP's static library for C")
find_path(GSOAP_INCLUDE_DIR stdsoap2.h ${header_search} REQUIRED DOC "Where gSOAP's stdsoap2.h is")
# The flags decide the layout of the runtime's records: with other flags the program links, then crashes.
if(NOT GSOAP_FOUND AND NOT DEFINED CACHE{GSOAP_FLAGS})
    message(FATAL_ERROR "pkg-config knows no gsoap: name its prefix in GSOAP_ROOT, or in GSOAP_FLAGS "
        "the definitions that ${GSOAP_LIBRARY} was compiled with, such as \"-DWITH_IPV6;-DWITH_DOM\".")
endif()
set(GSOAP_FLAGS "${GSOAP_CFLAGS_OTHER}" CACHE STRING
    "Flags that GSOAP_LIBRARY was compiled with, separated by semicolons")

# The runtime does not check every allocation. So the program links a copy of it in which malloc is renamed
# to a function that ends the process when there is no memory (webservice/runtime_memory.cpp). The linker's
# --wrap would replace libc's own calls as well in a static program.
file(READ ${GSOAP_LIBRARY} beginning LIMIT 8 HEX)
string(HEX "!<arch>\n" archive_mark)
if(NOT beginning STREQUAL archive_mark)
    message(FATAL_ERROR "GSOAP_LIBRARY names ${GSOAP_LIBRARY}, which is not a static library. "
        "The calls of a shared one cannot be renamed: set GSOAP_LIBRARY to libgsoap.a.")
endif()

if(NOT CMAKE_OBJCOPY)
    message(FATAL_ERROR "The toolchain has no objcopy: name one in CMAKE_OBJCOPY.")
endif()
set(runtime ${PROJECT_BINARY_DIR}/libgsoap-of-lumocmd.a)
add_custom_command(
    OUTPUT ${runtime}
    COMMAND ${CMAKE_OBJCOPY} --redefine-sym malloc=lumocmd_runtime_malloc ${GSOAP_LIBRARY} ${runtime}
    DEPENDS ${GSOAP_LIBRARY} ${CMAKE_CURRENT_LIST_FILE}
    COMMENT "Copying the SOAP runtime with its own allocator"
    VERBATIM)
add_custom_target(soap_runtime_copy DEPENDS ${runtime})
add_library(soap_runtime STATIC IMPORTED)
set_target_properties(soap_runtime PROPERTIES IMPORTED_LOCATION ${runtime})
add_dependencies(soap_runtime soap_runtime_copy)
# A directory with this header alone. The one that it came from may hold the target's C headers, which the
# host compiler must not read; and a cross compiler could find another stdsoap2.h in /usr/include first.
set(SOAP_HEADER_DIR ${PROJECT_BINARY_DIR}/gsoap)
configure_file(${GSOAP_INCLUDE_DIR}/stdsoap2.h ${SOAP_HEADER_DIR}/stdsoap2.h COPYONLY)
target_include_directories(soap_runtime SYSTEM INTERFACE ${SOAP_HEADER_DIR})
target_compile_options(soap_runtime INTERFACE ${GSOAP_FLAGS})
# The runtime is last on the link line and refers to these symbols of the libraries before it.
target_link_options(soap_runtime INTERFACE
    -Wl,--undefined=namespaces -Wl,--undefined=lumocmd_runtime_malloc
    -Wl,--undefined=lumows_runtime_release)
