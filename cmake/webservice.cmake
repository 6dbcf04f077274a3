# The generated web-service client: made from webservice/lumows.gsoap in the build directory, compiled
# as C with exactly the flags that the runtime was compiled with. Other flags link and then crash.

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
# WITH_COMPAT removes C++ streams and constructors from the header, as C sees it.
target_compile_definitions(lumows_client PUBLIC $<$<COMPILE_LANGUAGE:CXX>:WITH_COMPAT>)
target_link_libraries(lumows_client PUBLIC soap_runtime PRIVATE lumocmd_product)

if(NOT CMAKE_CROSSCOMPILING)
    include(cmake/description.cmake)
endif()
