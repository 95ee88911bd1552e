# The Windows build (cross-compiled with cmake/mingw-w64.cmake): every program beside the DLLs
# it needs, as Windows finds them (it has no run path); GoogleTest compiled from Debian's
# sources; the deployment windeployqt would make; the ZIP and the installer.

# Programs made from here on (tests, benchmarks) land beside the server and its DLLs.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
set_target_properties(tessark-server PROPERTIES WIN32_EXECUTABLE ON)
# The icon Explorer, the Start menu entry and the taskbar show, and the version record; the
# installer states the same (cmake/WindowsPackage.cmake).
set(TESSARK_WINDOWS_DIR ${CMAKE_CURRENT_LIST_DIR}/windows)
set(TESSARK_WINDOWS_COMPANY "Tessark")
set(TESSARK_WINDOWS_COPYRIGHT "Copyright 2026 the Tessark Server developers. MIT licence.")
configure_file(${TESSARK_WINDOWS_DIR}/tessark-server.rc.in ${CMAKE_BINARY_DIR}/tessark-server.rc @ONLY)
target_sources(tessark-server PRIVATE ${CMAKE_BINARY_DIR}/tessark-server.rc)

# Debian ships GoogleTest for MinGW only as source (libgtest-dev: /usr/src/googletest).
set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
# It names its targets GTest::gtest and GTest::gmock, as the installed package does.
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
# Listing a test program's cases means running it (under Wine): done when CTest runs, not when
# the program is linked, so building needs no Wine.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)

# The deployment: Qt's DLLs and plugins, the MinGW runtime (stripped: Debian's libstdc++ DLL
# carries 20 MB of debugging data).
get_filename_component(TESSARK_QT_PREFIX "${Qt6_DIR}/../../.." ABSOLUTE)
set(TESSARK_MINGW_RUNTIME
    /usr/lib/gcc/x86_64-w64-mingw32/12-posix/libstdc++-6.dll
    /usr/lib/gcc/x86_64-w64-mingw32/12-posix/libgcc_s_seh-1.dll
    /usr/x86_64-w64-mingw32/lib/libwinpthread-1.dll)
set(TESSARK_QT_DLLS Core Gui Widgets Network)
list(TRANSFORM TESSARK_QT_DLLS REPLACE "(.+)" "${TESSARK_QT_PREFIX}/bin/Qt6\\1.dll")
set(TESSARK_QT_PLUGINS platforms/qwindows.dll styles/qwindowsvistastyle.dll)

set(deployed)
macro(tessark_deploy source destination strip)
  set(target_file ${CMAKE_BINARY_DIR}/${destination})
  get_filename_component(target_dir ${target_file} DIRECTORY)
  if(${strip})
    set(copy ${CMAKE_STRIP} --strip-unneeded -o ${target_file} ${source})
  else()
    set(copy ${CMAKE_COMMAND} -E copy ${source} ${target_file})
  endif()
  add_custom_command(OUTPUT ${target_file} DEPENDS ${source}
                     COMMAND ${CMAKE_COMMAND} -E make_directory ${target_dir}
                     COMMAND ${copy} VERBATIM)
  list(APPEND deployed ${target_file})
endmacro()
foreach(dll ${TESSARK_MINGW_RUNTIME})
  get_filename_component(name ${dll} NAME)
  tessark_deploy(${dll} ${name} ON)
endforeach()
# Tests also need QtTest and the offscreen platform.
foreach(dll ${TESSARK_QT_DLLS} ${TESSARK_QT_PREFIX}/bin/Qt6Test.dll)
  get_filename_component(name ${dll} NAME)
  tessark_deploy(${dll} ${name} OFF)
endforeach()
foreach(plugin ${TESSARK_QT_PLUGINS} platforms/qoffscreen.dll)
  tessark_deploy(${TESSARK_QT_PREFIX}/plugins/${plugin} ${plugin} OFF)
endforeach()
add_custom_target(windows_deploy ALL DEPENDS ${deployed})
add_dependencies(tessark-server windows_deploy)

include(${CMAKE_CURRENT_LIST_DIR}/WindowsPackage.cmake)

# Keep-alive and retransmission limits on accepted connections are set through Winsock.
target_link_libraries(tessark_core PUBLIC ws2_32)
