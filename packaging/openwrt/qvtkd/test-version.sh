#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# test-version.sh PACKAGE VERSION: each program says the package's version and ends.

# shellcheck disable=SC2034 # the checks' own names
PKG_NAME="$1"
PKG_VERSION="$2"

[ "$PKG_NAME" = qvtkd ] || exit 0
for program in qvtkd post_data common_put_file post_file; do
	said=$("$program" --version) || exit 1
	[ "$said" = "$program $PKG_VERSION" ] || {
		echo "$program --version says '$said', not '$program $PKG_VERSION'"
		exit 1
	}
done
