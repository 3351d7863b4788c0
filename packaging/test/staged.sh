#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# staged.sh STAGED DEVICE BUILD: what a device's owner expects of the files of the packages, unpacked in STAGED. The
# libraries that they need are there or in DEVICE; BUILD is a folder that they must not name.
set -euo pipefail
staged=$1 device=$2 build=$3
failed=0
bad() { echo "package: ${file#"$staged"} $*" >&2; failed=1; }

modes=$(cd "$staged" && find . -mindepth 1 -printf '%m %y %P\n')
while read -r mode kind path; do
    file=$staged/$path
    case $kind:$path in
        d:*|f:usr/bin/*|f:etc/init.d/*|f:usr/lib/*.so) wanted=755 ;;
        f:etc/config/*) wanted=600 ;;
        f:*) wanted=644 ;;
        *) wanted="" ;;
    esac
    [ "$mode" = "$wanted" ] || bad "has mode $mode, not $wanted"
done <<<"$modes"

while read -r file; do
    sections=$(readelf -SW "$file")
    dynamic=$(readelf -dW "$file")
    headers=$(readelf -lW "$file")
    symbols=$(readelf --dyn-syms -W "$file")
    [[ $sections != *.symtab* && $sections != *.debug* ]] || bad "is not stripped"
    ! grep -qaF "$build" "$file" || bad "names the build's folder"
    [[ $dynamic != *RPATH* && $dynamic != *RUNPATH* ]] || bad "has a run path"
    [[ $(readelf -hW "$file") = *DYN* ]] || bad "is bound to one address"
    [[ $headers = *GNU_RELRO* && $dynamic = *BIND_NOW* ]] || bad "leaves its tables writable"
    [[ $headers =~ GNU_STACK[^$'\n']*" RW " ]] || bad "has an executable stack"
    [[ $symbols = *__stack_chk_fail* ]] || bad "does not guard its stack"
    [[ $symbols != *_PRIVATE* ]] || bad "uses what a library keeps for itself"
    while read -r needed; do
        [ -e "$device/usr/lib/$needed" ] || [ -e "$staged/usr/lib/$needed" ] || bad "needs $needed"
    done < <(sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p' <<<"$dynamic")
done < <(find "$staged/usr" -type f -exec sh -c 'head -c 4 "$1" | grep -q ELF' sh {} \; -print)
[ $failed -ne 0 ] || echo "files: good"
exit $failed
