# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# The packages, checked as the distribution's feed would, and the daemon started from them.
: "${repo:?}" "${work:?}" "${run:?}" "${build:?}" "${device:?}"
packaging=$repo/packaging
packages=$work/packages
architecture=aarch64_generic
package_names=(qvtkd qvtkd-sdk-stand-in)

# The same version in every recipe as in the project, where it has its one place.
check_versions() {
    local version name
    version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
    for name in "${package_names[@]}"; do
        grep -qx "PKG_VERSION:=$version" "$packaging/openwrt/$name/Makefile" ||
            { echo "packaging/openwrt/$name/Makefile has another version than the project, $version"; return 1; }
    done
}

make_packages() {
    local name first again
    check_versions
    shellcheck -s dash "$packaging"/openwrt/qvtkd/{files/qvtkd.init,test-version.sh} "$packaging/test/procd.sh"
    local installed=$run/packaged again_in=$run/again
    rm -rf "$installed" "$packages"
    mkdir -p "$packages" "$again_in"
    DESTDIR=$installed cmake --install "$build" --prefix /usr
    for name in "${package_names[@]}"; do
        first=$("$packaging/ipk" "$name" "$installed" "$architecture" "$packages")
        again=$(umask 077 && "$packaging/ipk" "$name" "$installed" "$architecture" "$again_in")
        cmp "$first" "$again" || { echo "$name is another package when it is made again"; return 1; }
    done
    sha256sum "$packages"/*
}

# unpack ROOT: a device's file system with the packages installed
unpack() {
    local package
    cp -a "$device/lib" "$1/"
    mkdir -p "$1/usr/lib"
    cp -a "$device"/usr/lib/*.so* "$1/usr/lib/"
    for package in "$packages"/*.ipk; do
        mkdir "$1/control"
        tar -xzOf "$package" ./control.tar.gz | tar -xzC "$1/control"
        tar -xzOf "$package" ./data.tar.gz | tar -xzC "$1"
        cat "$1/control/control"
        rm -r "$1/control"
    done
}

check_packages() {
    local package staged=$run/staged
    mkdir -p "$staged"
    for package in "$packages"/*.ipk; do tar -xzOf "$package" ./data.tar.gz | tar -xpzC "$staged"; done
    "$packaging/test/staged.sh" "$staged" "$device" "$repo"
    "$repo/dev/sandbox" "$packaging/test/init_test.sh" dash
    "$repo/dev/sandbox" "$packaging/test/init_test.sh" busybox sh
}

# In the sandbox /usr/bin holds the programs of the package, and the device's files are where qemu looks first.
start_package() {
    local root=$run/root version
    mkdir -p "$root"
    unpack "$root"
    version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
    QEMU_LD_PREFIX=$root "$repo/dev/sandbox" --dir "$root/sandbox" --helpers "$root/usr/bin" \
        /usr/bin/python3 "$packaging/test/start.py" "$build" "$root/sandbox/rig" "$version"
}
