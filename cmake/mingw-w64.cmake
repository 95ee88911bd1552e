# Cross-compiling for 64-bit Windows with Debian's MinGW-w64 (GCC, POSIX threads model).
#
#   cmake -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake -S . -B build-windows
#
# TESSARK_WINDOWS_DEPS is the folder that holds what Debian does not ship for MinGW: the
# cross-built Qt (qt6-mingw/, from scripts/build-qt-mingw or a ready tarball) and ISA-L (isal/,
# from scripts/build-isal-mingw). scripts/setup windows fills it; default build-windows-deps/.
# Qt's own tools (moc, rcc) are the host's: Debian's qt6-base-dev-tools, of the same version.
# Programs built here run under Wine (scripts/windows/wine-run), which CTest uses as emulator.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TESSARK_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${TESSARK_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TESSARK_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${TESSARK_MINGW_TRIPLE}-windres)
set(CMAKE_AR /usr/bin/${TESSARK_MINGW_TRIPLE}-ar CACHE FILEPATH "")
set(CMAKE_RANLIB /usr/bin/${TESSARK_MINGW_TRIPLE}-ranlib CACHE FILEPATH "")

# -O2 as the Linux build: at -O3, GCC 12 reports a false overlap in libstdc++'s string copy
# (-Wrestrict), which warnings-as-errors would stop at.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG" CACHE STRING "")

get_filename_component(TESSARK_SOURCE_ROOT "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
if(NOT TESSARK_WINDOWS_DEPS)
  if(DEFINED ENV{TESSARK_WINDOWS_DEPS})
    set(TESSARK_WINDOWS_DEPS "$ENV{TESSARK_WINDOWS_DEPS}")
  else()
    set(TESSARK_WINDOWS_DEPS "${TESSARK_SOURCE_ROOT}/build-windows-deps")
  endif()
endif()
set(TESSARK_WINDOWS_DEPS "${TESSARK_WINDOWS_DEPS}" CACHE PATH "cross-built Qt (qt6-mingw/) and ISA-L (isal/)")
# try_compile projects read this file again: hand them the same folder.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TESSARK_WINDOWS_DEPS)

set(TESSARK_QT_MINGW "${TESSARK_WINDOWS_DEPS}/qt6-mingw")
set(TESSARK_ISAL_MINGW "${TESSARK_WINDOWS_DEPS}/isal")
set(CMAKE_FIND_ROOT_PATH /usr/${TESSARK_MINGW_TRIPLE} "${TESSARK_QT_MINGW}" "${TESSARK_ISAL_MINGW}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
list(APPEND CMAKE_PREFIX_PATH "${TESSARK_QT_MINGW}")
set(Qt6_DIR "${TESSARK_QT_MINGW}/lib/cmake/Qt6" CACHE PATH "")
set(QT_HOST_PATH /usr CACHE PATH "host Qt tools (moc, rcc): Debian's qt6-base-dev-tools")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake CACHE PATH "")

# pkg-config must see the MinGW libraries only, never the host's libisal.
set(ENV{PKG_CONFIG_LIBDIR} "${TESSARK_ISAL_MINGW}/lib/pkgconfig:/usr/${TESSARK_MINGW_TRIPLE}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

set(CMAKE_CROSSCOMPILING_EMULATOR "${TESSARK_SOURCE_ROOT}/scripts/windows/wine-run")
