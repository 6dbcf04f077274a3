# The SOAP runtime: found, and copied with its own allocator. It would go on without the memory that it
# did not get, so in the copy its calls of malloc have another name, which webservice/runtime_memory.cpp
# defines. Renaming concerns the runtime's calls alone, however the program is linked; --wrap would take
# libc's own calls as well when that is linked statically.

file(READ ${GSOAP_LIBRARY} beginning LIMIT 8 HEX)
string(HEX "!<arch>\n" archive_mark)
if(NOT beginning STREQUAL archive_mark)
    message(FATAL_ERROR "GSOAP_LIBRARY names ${GSOAP_LIBRARY}, which is not a static library. "
        "The calls of a shared one cannot be renamed: set GSOAP_LIBRARY to libgsoap.a.")
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
# The runtime stands last on the link line and wants these of the libraries before it.
target_link_options(soap_runtime INTERFACE
    -Wl,--undefined=namespaces -Wl,--undefined=lumocmd_runtime_malloc)
