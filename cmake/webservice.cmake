# The generated web-service client: made from webservice/lumows.gsoap in the build directory, compiled
# as C with exactly the flags that the runtime was compiled with. Other flags link and then crash.

find_program(SOAPCPP2 soapcpp2 REQUIRED)

# Cross builds read the target's own runtime, unpacked below the build directory.
if(CMAKE_CROSSCOMPILING)
    set(TARGET_ROOT ${PROJECT_BINARY_DIR}/runtime)
    execute_process(
        COMMAND ${PROJECT_SOURCE_DIR}/scripts/fetch-armhf-runtime ${TARGET_ROOT}
        COMMAND_ERROR_IS_FATAL ANY)
    set(ENV{PKG_CONFIG_SYSROOT_DIR} ${TARGET_ROOT}/root)
    set(ENV{PKG_CONFIG_LIBDIR}
        ${TARGET_ROOT}/root/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig)
endif()

find_package(PkgConfig REQUIRED)
pkg_check_modules(GSOAP REQUIRED gsoap)
pkg_get_variable(GSOAP_LIBRARY_DIR gsoap libdir)
pkg_get_variable(GSOAP_INCLUDE_DIR gsoap includedir)
set(GSOAP_LIBRARY ${GSOAP_LIBRARY_DIR}/libgsoap.a)
include(cmake/gsoap.cmake)

set(GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)
set(GENERATED_FILES
    ${GENERATED_DIR}/soapC.c ${GENERATED_DIR}/soapClient.c
    ${GENERATED_DIR}/soapH.h ${GENERATED_DIR}/soapStub.h ${GENERATED_DIR}/lumows.nsmap)
add_custom_command(
    OUTPUT ${GENERATED_FILES}
    COMMAND ${CMAKE_COMMAND}
        -DSOAPCPP2=${SOAPCPP2}
        -DDEFINITION=${PROJECT_SOURCE_DIR}/webservice/lumows.gsoap
        -DOUTPUT_DIR=${GENERATED_DIR}
        -P ${PROJECT_SOURCE_DIR}/cmake/generate_client.cmake
    DEPENDS ${PROJECT_SOURCE_DIR}/webservice/lumows.gsoap
        ${PROJECT_SOURCE_DIR}/cmake/generate_client.cmake
    COMMENT "Generating the web-service client"
    VERBATIM)

add_library(lumows_client STATIC
    ${GENERATED_FILES} webservice/client_runtime.c)
target_include_directories(lumows_client PRIVATE ${PROJECT_SOURCE_DIR})
target_include_directories(lumows_client SYSTEM PUBLIC ${GENERATED_DIR})
if(CMAKE_CROSSCOMPILING)
    # Before the desk's /usr/include, which the cross compiler searches as well.
    target_include_directories(lumows_client SYSTEM PUBLIC ${GSOAP_INCLUDE_DIR})
endif()
# WITH_COMPAT keeps C++'s own streams and constructors out of the header; the C side has none.
target_compile_definitions(lumows_client PUBLIC $<$<COMPILE_LANGUAGE:CXX>:WITH_COMPAT>)
target_compile_options(lumows_client PUBLIC ${GSOAP_CFLAGS_OTHER})
target_link_libraries(lumows_client PUBLIC soap_runtime PRIVATE lumocmd_product)

if(NOT CMAKE_CROSSCOMPILING)
    include(cmake/description.cmake)
endif()
