# The description of the web service for other clients (WSDL), made from the definition that our own
# client is made from. For desks alone: a controller serves, and whoever writes a client for it works
# elsewhere.

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
