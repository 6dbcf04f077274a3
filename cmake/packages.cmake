# Installation and the Debian packages: lumocmd for controllers and desks, lumosim for desks.

install(TARGETS lumocmd RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT lumocmd)

set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The Lumotron developers <developers@lumotron.example>")

# Debian wants manuals compressed without a time stamp, and a copyright file and changelog per package.
find_program(GZIP gzip REQUIRED)
set(READ_CHANGELOG ${PROJECT_SOURCE_DIR}/packaging/debian-changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md
    ${PROJECT_VERSION})

function(install_documents component page)
    add_custom_command(
        OUTPUT ${page}.gz
        COMMAND ${GZIP} -9nc ${PROJECT_BINARY_DIR}/man/${page} > ${page}.gz
        DEPENDS ${PROJECT_BINARY_DIR}/man/${page}
        VERBATIM)
    add_custom_command(
        OUTPUT ${component}-changelog.gz
        COMMAND ${READ_CHANGELOG} log ${component} ${CPACK_PACKAGE_CONTACT} > ${component}-changelog
        COMMAND ${GZIP} -9nc ${component}-changelog > ${component}-changelog.gz
        DEPENDS ${PROJECT_SOURCE_DIR}/packaging/debian-changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md
        VERBATIM)
    add_custom_target(${component}_documents ALL DEPENDS ${page}.gz ${component}-changelog.gz)
    install(FILES ${PROJECT_BINARY_DIR}/${page}.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
    install(FILES ${PROJECT_BINARY_DIR}/${component}-changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${component} RENAME changelog.gz
        COMPONENT ${component})
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${component} COMPONENT ${component})
endfunction()

install_documents(lumocmd lumocmd.1)
add_dependencies(lumocmd_documents lumocmd_manual)

# What scripts read, and its page.
install(FILES ${PROJECT_SOURCE_DIR}/share/lumocmd/lumo.sh
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lumocmd COMPONENT lumocmd)
add_custom_command(
    OUTPUT lumo.sh.7.gz
    COMMAND ${GZIP} -9nc ${PROJECT_SOURCE_DIR}/man/lumo.sh.7 > lumo.sh.7.gz
    DEPENDS ${PROJECT_SOURCE_DIR}/man/lumo.sh.7
    VERBATIM)
add_custom_target(lumo_sh_manual ALL DEPENDS lumo.sh.7.gz)
install(FILES ${PROJECT_BINARY_DIR}/lumo.sh.7.gz
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT lumocmd)
set(CPACK_COMPONENTS_ALL lumocmd)
if(TARGET lumosim)
    install(TARGETS lumosim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT lumosim)
    # Below the prefix /usr this is where systemd looks for the units of packages.
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/lumosim.service
        DESTINATION lib/systemd/system COMPONENT lumosim)
    install_documents(lumosim lumosim.1)
    add_dependencies(lumosim_documents lumosim_manual)
    list(APPEND CPACK_COMPONENTS_ALL lumosim)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)

set(CPACK_DEBIAN_LUMOCMD_PACKAGE_NAME lumocmd)
set(CPACK_DEBIAN_LUMOSIM_PACKAGE_NAME lumosim)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "tools for a Lumotron home-automation controller")
set(CPACK_DEBIAN_LUMOCMD_DESCRIPTION
    "lumocmd sends one request to one of the controller's daemons or to its web
service, shows the answer and exits with its status code.")
set(CPACK_DEBIAN_LUMOSIM_DESCRIPTION
    "lumosim is a simulated controller: it answers everything that lumocmd can ask,
checks requests strictly and can be told to misbehave. It listens on
Unix-domain sockets and on loopback only.")
set(CPACK_DEBIAN_LUMOSIM_PACKAGE_SUGGESTS lumocmd)
if(CMAKE_CROSSCOMPILING)
    # The tool that reads needs from a program knows no foreign libraries.
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
    set(CPACK_DEBIAN_LUMOCMD_PACKAGE_DEPENDS "libc6 (>= 2.34)")
else()
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

# The same sources make the same bytes.
configure_file(${PROJECT_SOURCE_DIR}/packaging/before_packing.cmake.in before_packing.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/before_packing.cmake)

include(CPack)
