# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# What is fetched: Debian's sources and arm64 packages of one stable release, by apt lists of our own; nothing of the
# machine's apt is changed.
: "${work:?}"

apt_setup() {
    local apt=$work/apt mirror key='[signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]'
    # shellcheck disable=SC2016 # apt's own words
    mirror=$(APT_CONFIG='' apt-get indextargets --format '$(REPO_URI)' 'Origin: Debian' 'Release: bookworm' | head -n 1)
    [ -n "$mirror" ] || die "apt knows no mirror of Debian 12; as root: apt-get update"
    export APT_CONFIG=$apt/conf
    [ -z "$(find "$apt/updated" -mmin -60 2>/dev/null)" ] || return 0 # older lists may name what the mirror has no more
    mkdir -p "$apt"/{lists/partial,archives/partial,state}
    touch "$apt/status"
    printf '%s\n' "deb-src $key $mirror bookworm main" "deb $key $mirror bookworm main" >"$apt/sources.list"
    cat >"$apt/conf" <<END
APT::Architecture "arm64"; APT::Architectures { "arm64"; };
APT::Sandbox::User "root";
Dir::State "$apt/state"; Dir::State::lists "$apt/lists"; Dir::State::status "$apt/status";
Dir::Cache "$apt"; Dir::Cache::archives "$apt/archives";
Dir::Etc::sourcelist "$apt/sources.list"; Dir::Etc::sourceparts "/dev/null";
END
    apt-get update -q
    touch "$apt/updated"
}

# sources SCRATCH NAME...: the sources of Debian packages, patched as Debian has them, in SCRATCH/NAME; their versions
# on standard output.
sources() {
    local scratch=$1 name
    shift
    apt_setup >&2
    for name in "$@"; do
        mkdir "$scratch/fetch"
        (cd "$scratch/fetch" && apt-get source -q --only-source "$name" >&2)
        sed -n "s/^Version: /$name /p" "$scratch"/fetch/*.dsc | head -n 1
        mv "$(find "$scratch/fetch" -mindepth 1 -maxdepth 1 -type d)" "$scratch/$name"
        rm -r "$scratch/fetch"
    done
}
