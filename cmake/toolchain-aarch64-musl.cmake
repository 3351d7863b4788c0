# SPDX-License-Identifier: Apache-2.0
# Cross-builds for a router: 64-bit Arm with musl. QVTK_CROSS_PREFIX is the compiler's programs up to their names, with
# the folder unless that is in PATH; QVTK_SYSROOT is a folder with the device's libraries and headers in usr/lib and
# usr/include. dev/target makes both; with an SDK of the distribution they are its own (docs/porting.md).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(QVTK_CROSS_PREFIX aarch64-linux-musl- CACHE STRING "What stands before gcc, g++ and ar in the names of the compiler's programs")
set(QVTK_SYSROOT "" CACHE PATH "Folder with the device's libraries and headers in usr")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QVTK_CROSS_PREFIX QVTK_SYSROOT)
if(NOT IS_DIRECTORY "${QVTK_SYSROOT}/usr")
  message(FATAL_ERROR "-DQVTK_SYSROOT=... must name the folder with the device's usr/lib and usr/include")
endif()
set(CMAKE_C_COMPILER ${QVTK_CROSS_PREFIX}gcc)
set(CMAKE_CXX_COMPILER ${QVTK_CROSS_PREFIX}g++)
set(CMAKE_AR ${QVTK_CROSS_PREFIX}ar CACHE FILEPATH "Archiver")
set(CMAKE_RANLIB ${QVTK_CROSS_PREFIX}ranlib CACHE FILEPATH "Indexer")
set(CMAKE_STRIP ${QVTK_CROSS_PREFIX}strip CACHE FILEPATH "Stripper")

set(CMAKE_FIND_ROOT_PATH ${QVTK_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Nothing of the building machine's, and what the libraries need in turn.
set(ENV{PKG_CONFIG_DIR} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${QVTK_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${QVTK_SYSROOT}/usr/lib/pkgconfig:${QVTK_SYSROOT}/usr/share/pkgconfig)
foreach(kind EXE SHARED)
  string(APPEND CMAKE_${kind}_LINKER_FLAGS_INIT " -Wl,-rpath-link,${QVTK_SYSROOT}/usr/lib")
endforeach()
