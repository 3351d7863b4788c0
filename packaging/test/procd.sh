# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=dash
# The words of rc.common and procd that an init script uses: settings are read from $ROOT/etc/config, and what would go
# to procd is printed, a line each, its arguments separated by tabs.
#
#   sh procd.sh INIT-SCRIPT FUNCTION
: "${ROOT:=}"

config_load() {
	settings=$(awk -v quote="'" '
		$1 == "config" { section = $3; gsub(quote, "", section) }
		$1 == "option" { value = $0; sub(/^[ \t]*option[ \t]+[a-z_]+[ \t]+/, "", value); gsub(quote, "", value)
			print section "." $2 "=" value }' "$ROOT/etc/config/$1")
}

config_get() { # VARIABLE SECTION OPTION [DEFAULT]
	# shellcheck disable=SC2034 # read below
	value_=$(printf '%s\n' "$settings" | sed -n "s/^$2\.$3=//p")
	eval "$1=\${value_:-\${4:-}}"
}

config_get_bool() {
	config_get "$@"
	eval "case \$$1 in 1|on|true|yes|enabled) $1=1 ;; *) $1=0 ;; esac"
}

say() {
	word=$1
	shift
	printf '%s' "$word"
	[ $# -eq 0 ] || printf '\t%s' "$@"
	printf '\n'
}

for word in open_instance close_instance set_param append_param add_jail add_jail_mount add_jail_mount_rw \
	add_reload_trigger; do
	eval "procd_$word() { say $word \"\$@\"; }"
done

# shellcheck source=/dev/null
. "$1"
"$2"
