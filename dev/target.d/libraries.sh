# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# The libraries that a device has, with the options that its distribution builds them with, in a root of their own with
# musl; and what the tests need beside that, GoogleTest and the simulated cloud's HTTP, which leaves no file that a
# device would load.
: "${repo:?}" "${jobs:?}" "${tools:?}"
device_libraries="json-c mbedtls curl openssl mosquitto"
test_libraries="googletest cpp-httplib"

library() { # NAME OPTIONS...
    local name=$1
    shift
    cmake -G Ninja -S "$scratch/$name" -B "$scratch/build-$name" -DCMAKE_INSTALL_PREFIX=/usr \
        -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_TOOLCHAIN_FILE="$repo/cmake/toolchain-aarch64-musl.cmake" \
        -DQVTK_CROSS_PREFIX="$cross" -DQVTK_SYSROOT="$root" -DCMAKE_BUILD_TYPE=MinSizeRel -DBUILD_SHARED_LIBS=ON \
        -DCMAKE_C_FLAGS="-ffunction-sections -fdata-sections" -DCMAKE_SHARED_LINKER_FLAGS="-Wl,--gc-sections" "$@"
    cmake --build "$scratch/build-$name" -j "$jobs"
    DESTDIR=$root cmake --install "$scratch/build-$name"
}

openssl_library() {
    mkdir "$scratch/build-openssl"
    cd "$scratch/build-openssl" || return
    "$scratch/openssl/Configure" linux-aarch64 --prefix=/usr --libdir=lib --openssldir=/etc/ssl no-tests no-engine \
        no-afalgeng no-async no-legacy no-cms no-ts no-ct no-srp no-dtls no-comp no-sm2 no-sm3 no-sm4 no-aria no-idea \
        no-seed no-camellia no-bf no-cast no-rc2 no-rc4 no-mdc2 no-whirlpool no-gost \
        CC="${cross}gcc" AR="${cross}ar" RANLIB="${cross}ranlib" -Os
    make -j"$jobs" build_libs
    make DESTDIR="$root" install_dev
    rm -f "$root"/usr/lib/lib{ssl,crypto}.a
    cd "$repo" || return
}

make_device() { # PART SCRATCH, for keep
    local root=$1 scratch=$2 cross=$tools/bin/aarch64-linux-musl-
    # shellcheck disable=SC2086 # lists of names
    sources "$scratch" $device_libraries $test_libraries >"$root/made-from"
    cp -a "$tools/usr" "$tools/lib" "$root/"
    rm -f "$root"/lib/*.a
    library json-c -DBUILD_STATIC_LIBS=OFF -DDISABLE_WERROR=ON -DBUILD_TESTING=OFF -DBUILD_APPS=OFF
    library mbedtls -DENABLE_PROGRAMS=OFF -DENABLE_TESTING=OFF -DUSE_SHARED_MBEDTLS_LIBRARY=ON \
        -DUSE_STATIC_MBEDTLS_LIBRARY=OFF -DMBEDTLS_FATAL_WARNINGS=OFF
    library curl -DHTTP_ONLY=ON -DCURL_USE_MBEDTLS=ON -DCURL_USE_OPENSSL=OFF -DCURL_ZLIB=OFF -DUSE_LIBIDN2=OFF \
        -DCURL_USE_LIBPSL=OFF -DCURL_USE_LIBSSH2=OFF -DENABLE_THREADED_RESOLVER=OFF -DBUILD_CURL_EXE=OFF \
        -DENABLE_MANUAL=OFF -DBUILD_TESTING=OFF -DCURL_CA_BUNDLE=/etc/ssl/certs/ca-certificates.crt -DCURL_CA_PATH=none
    openssl_library
    library mosquitto -DWITH_TLS=ON -DWITH_BROKER=OFF -DWITH_APPS=OFF -DWITH_CLIENTS=OFF -DWITH_PLUGINS=OFF \
        -DDOCUMENTATION=OFF -DWITH_LIB_CPP=OFF -DWITH_SRV=OFF -DWITH_THREADING=ON
    library googletest -DBUILD_SHARED_LIBS=OFF
    cp "$scratch/cpp-httplib/httplib.h" "$root/usr/include/"
    printf 'Name: cpp-httplib\nDescription: HTTP in one header\nVersion: 0\nCflags: -DCPPHTTPLIB_OPENSSL_SUPPORT\n' \
        >"$root/usr/lib/pkgconfig/cpp-httplib.pc"
}
