# Runs the code generator. It exits 0 whatever it warns about, a misspelt directive included, so every
# warning fails here, and so does an operation without the action.

file(MAKE_DIRECTORY ${OUTPUT_DIR})
execute_process(
    COMMAND ${SOAPCPP2} -c -C -L -x -w -d ${OUTPUT_DIR} ${DEFINITION}
    OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE status)
# What it says about the files it writes must not be taken for a warning, whatever they are called.
string(REPLACE "${OUTPUT_DIR}" "" said_alone "${said}")
string(REPLACE "${DEFINITION}" "" said_alone "${said_alone}")
string(TOLOWER "${said_alone}" said_lower)
if(NOT status EQUAL 0 OR said_lower MATCHES "warning|error|unrecognized")
    message(FATAL_ERROR "The web-service client was not generated cleanly:\n${said}")
endif()

file(STRINGS ${DEFINITION} operations REGEX "^int ns__service_")
file(STRINGS ${OUTPUT_DIR}/soapClient.c actions REGEX "soap_action = \"urn:xmethods-lumows\";")
list(LENGTH operations operation_count)
list(LENGTH actions action_count)
if(NOT operation_count EQUAL 33 OR NOT action_count EQUAL operation_count)
    message(FATAL_ERROR
        "${operation_count} operations, ${action_count} of them with their SOAPAction; 33 expected")
endif()
