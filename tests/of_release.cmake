# The tests of a program that is for another machine, or instrumented: the unit tests are its own build's;
# the others are the release build's and start it through LUMOCMD_PROGRAM and LUMOCMD_WRAPPER, which the
# preset sets.

set(release ${PROJECT_SOURCE_DIR}/build/release)
add_custom_target(release_tests ALL
    COMMAND ${CMAKE_COMMAND} --preset release
    COMMAND ${CMAKE_COMMAND} --build --preset release --target program_tests
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    USES_TERMINAL VERBATIM)
add_shards(program_tests 6 program ${release}/tests/program_tests)

if(NOT CMAKE_CROSSCOMPILING)
    # An instrumented file is not hardened as the one that ships.
    foreach(shard RANGE 1 6)
        set_property(TEST program_tests.${shard} APPEND PROPERTY
            ENVIRONMENT GTEST_FILTER=-ShippedProgram.*)
    endforeach()
    # What servers can do to it is tried here, as the other failures are not for it.
    add_subdirectory(failures)
    if(TARGET lumosim)
        add_subdirectory(simulator)
    endif()
    return()
endif()

# The cross compiler searches the desk's /usr/include as well; the runtime's header must not come
# from there.
add_test(NAME Target.UsesItsOwnRuntimeHeader
    COMMAND sh -c "ninja -t deps >deps.txt && grep -q '${SOAP_HEADER_DIR}/stdsoap2.h' deps.txt && ! grep -q '^ */usr/include/stdsoap2.h' deps.txt"
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
