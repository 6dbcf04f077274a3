# The target's tests: the unit tests run under the emulator, the program tests are the desk's own and
# start the target's program through LUMOCMD_PROGRAM and LUMOCMD_WRAPPER, which the preset sets.

set(NATIVE_DIR ${PROJECT_SOURCE_DIR}/build/release)
add_custom_target(native_tests ALL
    COMMAND ${CMAKE_COMMAND} --preset release
    COMMAND ${CMAKE_COMMAND} --build --preset release --target program_tests
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    USES_TERMINAL VERBATIM)
set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES
    "${NATIVE_DIR}/tests/program_tests[1]_include.cmake")

# The cross compiler searches the desk's /usr/include as well; the runtime's header must not come
# from there.
add_test(NAME Target.UsesItsOwnRuntimeHeader
    COMMAND sh -c "ninja -t deps >deps.txt && grep -q '${SOAP_HEADER_DIR}/stdsoap2.h' deps.txt && ! grep -q '^ */usr/include/stdsoap2.h' deps.txt"
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
