#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# init_test.sh SHELL...: what the init script tells procd, in the shell that SHELL runs. In dev/sandbox, since the
# script makes the device's folders.
set -euo pipefail
here=$(CDPATH='' cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
files=$here/../openwrt/qvtkd/files
export ROOT
ROOT=$(mktemp -d)
trap 'rm -rf "$ROOT"' EXIT
mkdir -p "$ROOT/etc/config"
failed=0

init() { "$@" "$here/procd.sh" "$files/qvtkd.init" "$function"; }

check() { # WHAT FOUND WANTED
    [ "$2" = "$3" ] || { echo "init: $1: found '$2', wanted '$3'" >&2; failed=1; }
}

instance=$'open_instance
set_param\tcommand\t/usr/bin/qvtkd
set_param\trespawn\t3600\t10\t0
set_param\tstdout\t1
set_param\tstderr\t1
set_param\tpidfile\t/var/run/qvtkd.pid
set_param\tlimits\tcore=0\tnofile=256 256
set_param\tterm_timeout\t5
set_param\tno_new_privs\t1
set_param\tfile\t/etc/config/qvtk\t/etc/TZ'

function=start_service
cp "$files/qvtkd.config" "$ROOT/etc/config/qvtk"
rm -rf /apvar/log /apetc/rvxa
check "as delivered" "$(init "$@")" "$instance"$'
append_param\tenv\tTEBRA_SDK_BROKER=127.0.0.1:1883
close_instance'
check "folders" "$(stat -c '%a %n' /apvar/log /apetc/rvxa)" $'755 /apvar/log\n755 /apetc/rvxa'

chmod 700 /apetc/rvxa
sed -i "s/enabled '1'/enabled '0'/" "$ROOT/etc/config/qvtk"
check "disabled" "$(init "$@")" ""

cat >"$ROOT/etc/config/qvtk" <<'END'
config broker 'broker'
	option address '[2001:db8::1]:8883'
	option username 'SIM 1'
	option password '$(touch /tmp/x) "*'
	option ca_file '/etc/ssl/ca.pem'
	option tls 'on'
	option report_seconds '30'
END
check "a broker with TLS" "$(init "$@")" "$instance"$'
append_param\tenv\tTEBRA_SDK_BROKER=[2001:db8::1]:8883
append_param\tenv\tTEBRA_SDK_USERNAME=SIM 1
append_param\tenv\tTEBRA_SDK_PASSWORD=$(touch /tmp/x) "*
append_param\tenv\tTEBRA_SDK_CAFILE=/etc/ssl/ca.pem
append_param\tenv\tTEBRA_SDK_TLS=1
append_param\tenv\tTEBRA_SDK_REPORT_SECONDS=30
close_instance'
check "a folder's own mode" "$(stat -c %a /apetc/rvxa)" 700
[ ! -e /tmp/x ] || { echo "init: a setting was run" >&2; failed=1; }

printf "config agent 'agent'\n\toption jail '1'\n" >"$ROOT/etc/config/qvtk"
check "a jail that is not there" "$(init "$@" | grep -c jail || true)" 0
sed "s|^JAIL=.*|JAIL=/bin/sh|; s|^CAPABILITIES=.*|CAPABILITIES=$files/qvtkd.capabilities|" "$files/qvtkd.init" >"$ROOT/init"
files=$ROOT
mv "$ROOT/init" "$ROOT/qvtkd.init"
jail=$(init "$@")
for place in /apvar/run/ubus /apvar/log /apetc/rvxa /aptmp /tmp; do
    grep -q $'^add_jail_mount_rw\t.*'"$place" <<<"$jail" || { echo "init: the jail has no $place" >&2; failed=1; }
done

function=service_triggers
check "triggers" "$(init "$@")" $'add_reload_trigger\tqvtk\tsystem'
[ $failed -ne 0 ] || echo "init script in $*: good"
exit $failed
