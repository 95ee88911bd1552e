# The Debian package: cpack -G DEB in the build folder (scripts/setup package) makes
# tessark-server_<version>_<arch>.deb with
#   /usr/bin/tessark-server                                the program
#   /usr/lib/systemd/system/tessark-server.service          the headless service (cmake/linux/)
#   /etc/tessark-server/tessark-server.conf                 the service's settings (a conffile)
#   /usr/share/applications/tessark-server.desktop          the menu entry for desktop users
#   /usr/share/icons/hicolor/<size>/apps/tessark-server.png  its icon: the server icon
#   /usr/share/man/man1/tessark-server.1.gz
#   /usr/share/doc/tessark-server/                          README.Debian, changelog.gz, copyright
# and maintainer scripts that enable and start the service on installation, restart it after
# an upgrade and stop it on removal, as debhelper's would (cmake/linux/postinst, prerm, postrm).
#
# The menu entry starts the program without arguments. /usr/bin is not its users' to write (nor
# root's, by the file system hierarchy), so an installed program keeps tessark.ini, its setups
# and its logs in the user's data directory, ~/.local/share/tessark-server
# (src/app/ProgramDirChoice.h). The service passes --dir /var/lib/tessark-server.
#
# lintian (2.116, bookworm) has no errors or warnings for it. With -I --pedantic it adds
# informational tags only, kept as they are:
#   package-supports-alternative-init-but-no-init.d-script: the service is for systemd; without
#     it, run "tessark-server --dir DIR" under whatever supervises the host.
#   spelling-error-in-binary (allready, differrent, occured, succesfully): texts players' and
#     operators' tools expect word for word.

# The package's Maintainer field. The project has named no address yet: a reserved .invalid one
# until it does (-DTESSARK_PACKAGE_CONTACT="Name <address>").
set(TESSARK_PACKAGE_CONTACT "Tessark Server maintainers <maintainers@tessark.invalid>"
    CACHE STRING "Maintainer of the Debian package: name <address>")

# The service names /usr/bin/tessark-server (cmake --install to another prefix would need its
# own ExecStart=).
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(tessark_linux ${CMAKE_CURRENT_LIST_DIR}/linux)
set(tessark_generated ${CMAKE_BINARY_DIR}/package)

install(TARGETS tessark-server RUNTIME DESTINATION bin)
# A stripped program (CPACK_STRIP_FILES) without the compiler's notes either, as dh_strip leaves it.
install(CODE "if(CMAKE_INSTALL_DO_STRIP)
  execute_process(COMMAND \"${CMAKE_OBJCOPY}\" --remove-section=.comment --remove-section=.note
                          \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/tessark-server\" COMMAND_ERROR_IS_FATAL ANY)
endif()")
install(FILES ${tessark_linux}/tessark-server.service DESTINATION lib/systemd/system)
install(FILES ${tessark_linux}/tessark-server.conf DESTINATION /etc/tessark-server)
install(FILES ${tessark_linux}/tessark-server.desktop DESTINATION share/applications)

# The icon goes to the folder of its real size, read from the PNG header (IHDR: width, height).
set(tessark_icon ${PROJECT_SOURCE_DIR}/resources/icons/server.png)
file(READ ${tessark_icon} ihdr OFFSET 16 LIMIT 8 HEX)
string(SUBSTRING ${ihdr} 0 8 width)
string(SUBSTRING ${ihdr} 8 8 height)
math(EXPR width "0x${width}")
math(EXPR height "0x${height}")
install(FILES ${tessark_icon} DESTINATION share/icons/hicolor/${width}x${height}/apps RENAME tessark-server.png)

# Manual page and changelog, compressed as Debian wants them (gzip -9n: no name, no time).
string(TIMESTAMP TESSARK_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC) # SOURCE_DATE_EPOCH when set
configure_file(${tessark_linux}/tessark-server.1 ${tessark_generated}/tessark-server.1 @ONLY)
configure_file(${tessark_linux}/changelog.in ${tessark_generated}/changelog @ONLY)
foreach(name tessark-server.1 changelog)
  execute_process(COMMAND gzip -9nc ${name} WORKING_DIRECTORY ${tessark_generated}
                  OUTPUT_FILE ${tessark_generated}/${name}.gz COMMAND_ERROR_IS_FATAL ANY)
endforeach()
install(FILES ${tessark_generated}/tessark-server.1.gz DESTINATION share/man/man1)
install(FILES ${tessark_linux}/copyright ${tessark_linux}/README.Debian ${tessark_generated}/changelog.gz
        DESTINATION share/doc/tessark-server)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessark-server)
set(CPACK_PACKAGE_VENDOR "Tessark")
set(CPACK_PACKAGE_CONTACT ${TESSARK_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "squadron host for players, setups and the flight picture")
# CPack puts the summary first and indents the rest itself; an empty line becomes " .".
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Tessark Server serves a squadron that flies a combat flight simulator
together: players register and fetch the squadron's setups, AWACS display
clients receive the flight picture, simulators and the AI Spy feed it.

On a desktop it runs as a tray application from the menu; on a host without
one it runs headless as the tessark-server service.")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT) # tessark-server_<version>_<arch>.deb
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Dependencies from the libraries the program links (dpkg-shlibdeps, from dpkg-dev). The
# status window also needs a Qt platform plugin, which no library link names.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The unit's ExecReload= runs /bin/kill.
set(CPACK_DEBIAN_PACKAGE_DEPENDS procps)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS qt6-qpa-plugins)
# The maintainer scripts, and the settings file dpkg keeps when an operator has changed it.
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${tessark_linux}/postinst ${tessark_linux}/prerm ${tessark_linux}/postrm
                                       ${tessark_linux}/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
