# The WSDL of the web service, for other clients, made from the same definition as our own client. Not in
# cross builds: clients are developed on desks.

set(DESCRIPTION_DIR ${PROJECT_BINARY_DIR}/description)
set(SERVICE_DESCRIPTION ${DESCRIPTION_DIR}/lumows.wsdl)
add_custom_command(
    OUTPUT ${SERVICE_DESCRIPTION}
    COMMAND ${CMAKE_COMMAND}
        -DSOAPCPP2=${SOAPCPP2}
        -DDEFINITION=${PROJECT_SOURCE_DIR}/webservice/lumows.gsoap
        -DOUTPUT_DIR=${DESCRIPTION_DIR}
        -P ${PROJECT_SOURCE_DIR}/cmake/generate_description.cmake
    DEPENDS ${PROJECT_SOURCE_DIR}/webservice/lumows.gsoap
        ${PROJECT_SOURCE_DIR}/cmake/generate_description.cmake
    COMMENT "Generating the description of the web service"
    VERBATIM)
add_custom_target(lumows_description ALL DEPENDS ${SERVICE_DESCRIPTION})
install(FILES ${SERVICE_DESCRIPTION}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lumocmd)
