# What an installation brings; packaging/debian divides it between two packages.

install(TARGETS lumocmd)
install(FILES ${PROJECT_BINARY_DIR}/man/lumocmd.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/docs/man/lumo.sh.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7)
install(FILES ${PROJECT_SOURCE_DIR}/shell/lumo.sh
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lumocmd)
file(GLOB example_scripts LIST_DIRECTORIES false CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/examples/*)
set(example_files ${example_scripts})
list(FILTER example_scripts EXCLUDE REGEX "\\.(py|yml)$")
list(FILTER example_files INCLUDE REGEX "\\.(py|yml)$")
install(PROGRAMS ${example_scripts} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/lumocmd/examples)
install(FILES ${example_files} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/lumocmd/examples)

if(TARGET lumosim)
    install(TARGETS lumosim)
    install(FILES ${PROJECT_BINARY_DIR}/man/lumosim.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    # With the prefix /usr, systemd's directory for units of packages.
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/lumosim.service
        DESTINATION lib/systemd/system)
endif()
