# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# A C++ compiler for aarch64-linux-musl: Debian's aarch64 cross gcc, Debian's arm64 musl, and libstdc++ built from
# Debian's gcc source against it. The compiler proper serves both C libraries; only headers, start files, libstdc++
# and one function of the unwinder differ. The folder may be moved: its wrappers find their files beside themselves.
#
#   bin/aarch64-linux-musl-{gcc,g++,...}   musl.specs   include/c++   lib: libstdc++   usr: musl, kernel headers
: "${here:?}" "${jobs:?}"

musl_files() { # TOOLS SCRATCH
    local deb
    for deb in "$2"/musl_*.deb "$2"/musl-dev_*.deb; do dpkg -x "$deb" "$2/musl"; done
    mkdir -p "$1"/usr/{lib,include} "$1/lib"
    cp -r "$2"/musl/usr/include/aarch64-linux-musl/. "$1/usr/include/"
    cp "$2"/musl/usr/lib/aarch64-linux-musl/*.[oa] "$1/usr/lib/"
    cp "$2"/musl/lib/aarch64-linux-musl/libc.so "$1/usr/lib/libc.so"
    ln -s ../usr/lib/libc.so "$1/lib/ld-musl-aarch64.so.1"
    cp -r /usr/aarch64-linux-gnu/include/{linux,asm,asm-generic} "$1/usr/include/"
}

wrapper() { # TOOLS NAME PROGRAM OPTIONS
    cat >"$1/bin/aarch64-linux-musl-$2" <<END
#!/bin/sh
tools=\${0%/*}/..
export QVTK_MUSL="\$tools"
exec $3 -specs="\$tools/musl.specs" -mno-outline-atomics $4 "\$@"
END
    chmod +x "$1/bin/aarch64-linux-musl-$2"
}

compilers() { # TOOLS
    local tool include
    include=$(aarch64-linux-gnu-gcc -print-file-name=include)
    mkdir -p "$1/bin"
    sed "s|@GCC_INCLUDE@|$include|" "$here/musl.specs.in" >"$1/musl.specs"
    wrapper "$1" gcc aarch64-linux-gnu-gcc ""
    # shellcheck disable=SC2016 # for the wrapper
    wrapper "$1" g++ aarch64-linux-gnu-g++ \
        '-nostdinc++ -isystem "$tools/include/c++" -isystem "$tools/include/c++/aarch64-linux-musl" -L"$tools/lib"'
    for tool in as ar ld nm objdump ranlib readelf strip; do
        ln -s "/usr/bin/aarch64-linux-gnu-$tool" "$1/bin/aarch64-linux-musl-$tool"
    done
}

unwinder() { # TOOLS SCRATCH: before anything is linked
    "$1/bin/aarch64-linux-musl-gcc" -Os -fPIC -c "$here/find_object.c" -o "$2/find_object.o"
    "$1/bin/aarch64-linux-musl-ar" rcs "$1/usr/lib/libfind_object.a" "$2/find_object.o"
}

cxx_library() { # TOOLS SCRATCH
    local tools=$1 gcc=$2/gcc cross=$1/bin/aarch64-linux-musl-
    dpkg -x "$2"/gcc-12-source_*.deb "$2/gcc-source"
    mkdir -p "$gcc" "$2/libstdc++"
    tar --no-same-owner -xf "$2"/gcc-source/usr/src/gcc-12/gcc-12*.tar.xz -C "$gcc" --strip-components=1 --wildcards \
        --no-wildcards-match-slash '*/config*' '*/*.sh' '*/*-sh' '*/mkinstalldirs' '*/missing' '*/depcomp' '*/*.am' \
        '*/compile' '*/lt*' '*/mk*' '*/libtool*' '*/libstdc++-v3' '*/libgcc' '*/libiberty' '*/include' \
        '*/gcc/BASE-VER' '*/gcc/DATESTAMP' '*/gcc/DEV-PHASE'
    ln -sf gthr-posix.h "$gcc/libgcc/gthr-default.h" # what libgcc's own build would leave there
    cd "$2/libstdc++" || return
    # The C driver as CXX: the C++ one would look for the library that is being built, and find nothing that links.
    "$gcc/libstdc++-v3/configure" --build=x86_64-linux-gnu --host=aarch64-linux-musl --prefix="$tools" \
        --libdir="$tools/lib" --with-gxx-include-dir="$tools/include/c++" --with-toolexeclibdir="$tools/lib" \
        --disable-multilib --disable-nls --disable-libstdcxx-pch --disable-shared --enable-static --with-pic \
        --disable-libstdcxx-verbose --disable-libstdcxx-filesystem-ts \
        CC="${cross}gcc" CXX="${cross}gcc" AR="${cross}ar" RANLIB="${cross}ranlib" AS="${cross}as" LD="${cross}ld" \
        NM="${cross}nm" CFLAGS="-Os -fPIC -ffunction-sections -fdata-sections" \
        CXXFLAGS="-Os -fPIC -ffunction-sections -fdata-sections"
    # both are silently absent when the checks' programs do not link
    grep "_GLIBCXX_HAS_GTHREADS 1" config.h
    grep "HAVE_OPENAT 1" config.h
    make -j"$jobs"
    make install
    rm -f "$tools"/lib/*.la "$tools"/lib/*.py
}

# Threads, exceptions and a shared library, or it is no compiler. That they run too, the tests show.
try_compiler() { # TOOLS SCRATCH
    cat >"$2/try.cpp" <<'END'
#include <stdexcept>
#include <string>
#include <thread>
int main() {
    try {
        std::thread([] { std::to_string(7); }).join();
        throw std::runtime_error("");
    } catch (const std::exception &) {
        return 0;
    }
}
END
    local kind
    for kind in "-fPIE -pie" "-fPIC -shared -Wl,--whole-archive -lstdc++ -Wl,--no-whole-archive"; do
        # shellcheck disable=SC2086 # options
        "$1/bin/aarch64-linux-musl-g++" -std=c++20 -static-libstdc++ $kind "$2/try.cpp" -o "$2/try"
        "$1/bin/aarch64-linux-musl-readelf" -lW "$2/try" | grep GNU_EH_FRAME
    done
}

make_toolchain() { # PART SCRATCH, for keep
    apt_setup
    (cd "$2" && apt-get download musl musl-dev gcc-12-source)
    find "$2" -name '*.deb' -printf '%f\n' | sort >"$1/made-from"
    musl_files "$@"
    compilers "$@"
    unwinder "$@"
    cxx_library "$@"
    try_compiler "$@"
}
