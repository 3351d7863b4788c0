#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# install_test.sh BUILD VERSION: what the install puts where, and what the daemon needs of the system.
set -euo pipefail
build=$1 version=$2
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
fail() { echo "install: $*" >&2; exit 1; }

DESTDIR=$root cmake --install "$build" --prefix /usr >/dev/null
for program in qvtkd post_data common_put_file post_file; do
    [ -x "$root/usr/bin/$program" ] || fail "usr/bin/$program is missing"
done
[ -f "$root/usr/lib/libtebra_sdk.so" ] || fail "usr/lib/libtebra_sdk.so is missing"

said=$(LD_LIBRARY_PATH=$root/usr/lib "$root/usr/bin/qvtkd" --version)
[ "$said" = "qvtkd $version" ] || fail "qvtkd --version says $said"

dynamic=$(readelf -d "$root/usr/bin/qvtkd")
! grep -qE 'RPATH|RUNPATH' <<<"$dynamic" || fail "qvtkd has a run path"
while read -r needed; do
    case $needed in
        libc.so*|libm.so*|libgcc_s.so*|libstdc++.so*|libpthread.so*|libjson-c.so*|libcurl.so*|ld-*) ;;
        libubus.so*|libubox.so*|libblobmsg_json.so*|libtebra_sdk.so) ;;
        *) fail "qvtkd needs $needed" ;;
    esac
done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
grep -q 'NEEDED.*libtebra_sdk\.so\]' <<<"$dynamic" || fail "qvtkd does not name libtebra_sdk.so"

rm -rf "${root:?}"/*
DESTDIR=$root cmake --install "$build" --prefix /usr --component sdk_stand_in >/dev/null
[ "$(cd "$root" && find . -type f)" = ./usr/lib/libtebra_sdk.so ] || fail "the stand-in's component holds something else"
echo "install: good"
