# SPDX-License-Identifier: Apache-2.0
# Cross-builds for 64-bit ARM with Debian's g++-aarch64-linux-gnu. QVTK_SYSROOT is a folder that the arm64 packages of
# json-c and libcurl (and, for a device's own bus libraries, those) have been unpacked into; README says how.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(QVTK_SYSROOT "" CACHE PATH "Folder with the target's libraries and headers")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QVTK_SYSROOT)
set(CMAKE_FIND_ROOT_PATH ${QVTK_SYSROOT} /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Nothing of the building machine's, and what the libraries need in turn.
set(ENV{PKG_CONFIG_DIR} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${QVTK_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${QVTK_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${QVTK_SYSROOT}/usr/lib/pkgconfig:${QVTK_SYSROOT}/usr/share/pkgconfig)
foreach(folder /usr/lib/aarch64-linux-gnu /lib/aarch64-linux-gnu /usr/lib)
  string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,-rpath-link,${QVTK_SYSROOT}${folder}")
endforeach()
