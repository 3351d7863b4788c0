# SPDX-License-Identifier: Apache-2.0
# What the shell programs of this repository share: help, and wrong usage, which is one line and exit status 2.
# A program sources this; the comment at its head, from the third line on, is its help.

# say MESSAGE: on standard error, after the program's folder and name
say() { echo "$(realpath -- "$0" | sed 's|.*/\([^/]*/[^/]*\)$|\1|'): $1" >&2; }

# fail MESSAGE: what went wrong although the program was used rightly
fail() {
    say "$1"
    exit 1
}

# wrong MESSAGE: what is wrong about the arguments
wrong() {
    say "$1; see --help"
    exit 2
}

# other_argument WORD: help where WORD asks for it; any other is one that the program does not know
other_argument() {
    case $1 in
        --help|-h) sed -n '3,/^[^#]/{/^#/!d; s/^# \{0,1\}//p}' "$0"; exit 0 ;;
        -*) wrong "unknown option $1" ;;
        *) wrong "unexpected argument \"$1\"" ;;
    esac
}

# needs_value OPTION [VALUE...]: that something follows the option
needs_value() { [ $# -ge 2 ] && [ -n "$2" ] || wrong "$1 needs a value"; }
