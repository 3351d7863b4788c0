# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# shellcheck disable=SC2034 # for those who source this
# What the steps of dev/target share: where things are, how a step is timed and logged, and how something that takes
# long to make is kept.
here=${repo:?}/dev/target.d
work=$repo/build/target # below the repository, which dev/sandbox shows to what runs in it
logs=$work/logs
cache=$work/cache # deleting it makes everything anew
jobs=$(nproc)
mkdir -p "$logs" "$cache"

die() {
    echo "dev/target: $*" >&2
    exit 1
}

# own_folder: makes $run, a folder for what this run leaves, which goes with it; those of runs that were killed go now.
own_folder() {
    local old
    exec 6>"$work/runs.lock"
    flock 6
    for old in "$work"/run.*/; do
        [ ! -d "$old" ] || flock -n "$old" rm -rf "$old" || true
    done
    run=$(mktemp -d "$work/run.XXXXXX")
    exec 7<"$run"
    flock 7 # until the last process of this run has ended
    exec 6>&-
    trap 'rm -rf "$run"' EXIT
}

# step NAME CMD...: runs CMD, shell function or program, with its output in a log; says how long it took.
step() {
    local name=$1 began=$SECONDS status=0
    shift
    printf 'dev/target: %s ... ' "$name" >&2
    set +e # so that the step itself runs under -e
    (set -e; "$@") >"$logs/$name.log" 2>&1
    status=$?
    set -e
    if [ $status -ne 0 ]; then
        echo "failed after $((SECONDS - began)) s" >&2
        tail -n 40 "$logs/$name.log" >&2
        die "$name failed; all it said is in $logs/$name.log"
    fi
    echo "$((SECONDS - began)) s" >&2
}

# key FILE...: what a kept thing is made from, as a name: recipes, and the machine's compiler and kernel headers.
# Debian's sources are those of one stable release; `made-from` in the kept folder says which they were.
key() {
    {
        (cd "$here" && sha256sum -- "$@")
        dpkg-query -W g++-aarch64-linux-gnu gcc-12-aarch64-linux-gnu binutils-aarch64-linux-gnu linux-libc-dev-arm64-cross
    } | sha256sum | cut -c 1-12
}

# keep DIR MAKER: runs `MAKER PART SCRATCH` unless DIR is there. PART becomes DIR when the maker is through, so that
# one that was interrupted is never taken for whole; SCRATCH goes.
keep() {
    local whole=$1 part=$1.part scratch=$1.scratch
    [ ! -d "$whole" ] || return 0
    rm -rf "$part" "$scratch"
    mkdir -p "$part" "$scratch"
    "$2" "$part" "$scratch"
    rm -rf "$scratch"
    sync -f "$part"
    mv "$part" "$whole"
}
