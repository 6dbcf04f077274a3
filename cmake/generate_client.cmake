# Runs the code generator. It exits 0 after warnings and ignores a misspelt directive silently, so every
# directive and every warning is checked here.

file(STRINGS ${DEFINITION} lines REGEX "^//gsoap |^int ns__service_")
set(operations ${lines})
list(FILTER operations INCLUDE REGEX "^int ")
list(TRANSFORM operations REPLACE "^int ns__(service_[A-Za-z0-9_]+).*" "\\1")
set(directives ${lines})
list(FILTER directives INCLUDE REGEX "^//gsoap ns service method-")

# Each operation has exactly these two directives; what is left over belongs to no operation.
foreach(operation IN LISTS operations)
    foreach(wanted "method-action: ${operation} urn:xmethods-lumows"
            "method-response-encoding: ${operation} literal")
        list(FIND directives "//gsoap ns service ${wanted}" index)
        if(index EQUAL -1)
            message(FATAL_ERROR "${DEFINITION}: the operation ${operation} needs the line\n"
                "//gsoap ns service ${wanted}")
        endif()
        list(REMOVE_AT directives ${index})
    endforeach()
endforeach()

# Every operation has its response record, and every field of a record its tag.
file(READ ${DEFINITION} definition)
foreach(operation IN LISTS operations)
    if(NOT definition MATCHES "struct ns__${operation}Response {([^}]*)}")
        message(FATAL_ERROR
            "${DEFINITION}: the operation ${operation} needs the record\n"
            "struct ns__${operation}Response")
    endif()
    string(REGEX REPLACE "    char \\*[A-Za-z0-9_]+ `::[A-Za-z0-9-]+`;\n" "" untagged "${CMAKE_MATCH_1}")
    string(STRIP "${untagged}" untagged)
    if(untagged)
        message(FATAL_ERROR "${DEFINITION}: in the response of ${operation} every line must read\n"
            "    char *name `::name-on-the-wire`;\nand this does not: ${untagged}")
    endif()
endforeach()
if(directives)
    message(FATAL_ERROR "${DEFINITION}: no operation has this directive: ${directives}")
endif()

file(MAKE_DIRECTORY ${OUTPUT_DIR})
execute_process(
    COMMAND ${SOAPCPP2} -c -C -L -x -w -d ${OUTPUT_DIR} ${DEFINITION}
    OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE status)
# Its messages name files, whose paths may hold the word "error".
string(REPLACE "${OUTPUT_DIR}" "" said_alone "${said}")
string(REPLACE "${DEFINITION}" "" said_alone "${said_alone}")
string(TOLOWER "${said_alone}" said_lower)
if(NOT status EQUAL 0 OR said_lower MATCHES "warning|error|unrecognized")
    message(FATAL_ERROR "The web-service client was not generated cleanly:\n${said}")
endif()
