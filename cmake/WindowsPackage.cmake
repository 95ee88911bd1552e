# The Windows release: a ZIP (unpack anywhere and run) and an installer, both named with the
# version: cmake --build build-windows --target package
#
# Everything sits in one folder, the program directory, where the server writes tessark.ini,
# its setups and its logs. The installer therefore installs for the current user, under
# %LOCALAPPDATA%\Programs, where that user may write without administrator rights.
install(TARGETS tessark-server RUNTIME DESTINATION .)
install(FILES ${TESSARK_QT_DLLS} DESTINATION .)
foreach(dll ${TESSARK_MINGW_RUNTIME})
  get_filename_component(name ${dll} NAME)
  install(FILES ${CMAKE_BINARY_DIR}/${name} DESTINATION .) # the stripped copies
endforeach()
foreach(plugin ${TESSARK_QT_PLUGINS})
  get_filename_component(folder ${plugin} DIRECTORY)
  install(FILES ${TESSARK_QT_PREFIX}/plugins/${plugin} DESTINATION ${folder})
endforeach()

set(CPACK_PACKAGE_NAME tessark-server)
set(CPACK_PACKAGE_VENDOR "Tessark")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Tessark Server: players, setups and the flight picture for a squadron")
set(CPACK_PACKAGE_INSTALL_DIRECTORY "Tessark Server")
set(CPACK_PACKAGE_INSTALL_REGISTRY_KEY "Tessark Server")
set(CPACK_SYSTEM_NAME win64)
set(CPACK_GENERATOR ZIP NSIS)
set(CPACK_STRIP_FILES ON)
# The ZIP unpacks into a folder tessark-server-<version>-win64/; the installer picks its own.
file(WRITE ${CMAKE_BINARY_DIR}/cpack/per-generator.cmake
     "if(CPACK_GENERATOR STREQUAL \"ZIP\")\n  set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)\n"
     "else()\n  set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)\nendif()\n")
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_BINARY_DIR}/cpack/per-generator.cmake)
set(CPACK_PACKAGE_EXECUTABLES tessark-server "Tessark Server") # the Start menu entry

set(CPACK_NSIS_INSTALL_ROOT "$LOCALAPPDATA\\\\Programs")
set(CPACK_NSIS_EXECUTABLES_DIRECTORY .)
set(CPACK_NSIS_DISPLAY_NAME "Tessark Server")
# The licence page shows the project's own licence, not CPack's placeholder.
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_NSIS_PACKAGE_NAME "Tessark Server ${PROJECT_VERSION}")
set(CPACK_NSIS_MUI_ICON ${CMAKE_CURRENT_LIST_DIR}/windows/tessark-server.ico)
set(CPACK_NSIS_MUI_UNIICON ${CMAKE_CURRENT_LIST_DIR}/windows/tessark-server.ico)
set(CPACK_NSIS_INSTALLED_ICON_NAME tessark-server.exe)
set(CPACK_NSIS_ENABLE_UNINSTALL_BEFORE_INSTALL ON)

# The installer's version record and the option to start the server at log on
# (cmake/windows/installer.nsh.in, included at the top of the script below).
configure_file(${CMAKE_CURRENT_LIST_DIR}/windows/installer.nsh.in ${CMAKE_BINARY_DIR}/cpack/installer.nsh @ONLY)
set(CPACK_NSIS_EXTRA_INSTALL_COMMANDS "Call TessarkInstallAutoStart")
set(CPACK_NSIS_EXTRA_UNINSTALL_COMMANDS "Call un.TessarkRemoveAutoStart")

# CMake's installer script asks for administrator rights and installs for all users; this one
# is the same script for the current user, and a 64-bit installer for the 64-bit program (which
# is also what 64-bit-only Wine runs).
file(READ ${CMAKE_ROOT}/Modules/Internal/CPack/NSIS.template.in nsis_template)
string(REPLACE "SetCompressor @CPACK_NSIS_COMPRESSOR@" "Target amd64-unicode\n  SetCompressor @CPACK_NSIS_COMPRESSOR@"
               nsis_template "${nsis_template}")
string(REPLACE "RequestExecutionLevel admin" "RequestExecutionLevel user" nsis_template "${nsis_template}")
string(REPLACE "SetShellVarContext all" "SetShellVarContext current" nsis_template "${nsis_template}")
string(REPLACE "HKLM \"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall"
               "SHCTX \"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall" nsis_template "${nsis_template}")
# The version record and the autostart option: the definitions, what was chosen before (read
# before an old version is uninstalled) and the last page's checkbox.
string(REPLACE "@CPACK_NSIS_DEFINES@" "!include \"${CMAKE_BINARY_DIR}/cpack/installer.nsh\"\n@CPACK_NSIS_DEFINES@"
               nsis_template "${nsis_template}")
string(REPLACE "Function .onInit\n" "Function .onInit\n  Call TessarkReadAutoStart\n" nsis_template
               "${nsis_template}")
string(REPLACE "  !insertmacro MUI_PAGE_FINISH\n"
               "  !define MUI_PAGE_CUSTOMFUNCTION_PRE TessarkFinishPre\n  !insertmacro MUI_PAGE_FINISH\n"
               nsis_template "${nsis_template}")
file(WRITE ${CMAKE_BINARY_DIR}/cpack/NSIS.template.in "${nsis_template}")
list(APPEND CMAKE_MODULE_PATH ${CMAKE_BINARY_DIR}/cpack)

include(CPack)
