# Sourced by the scripts of the root: has the Debian packages that a build wants.
#
# want_packages NAME...: installs what is missing when run as root, else says in one line what to install.

want_packages() {
    local missing=()
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    if [ "$(id -u)" -ne 0 ]; then
        echo "missing packages: apt-get install ${missing[*]}" >&2
        exit 1
    fi
    echo "installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    { apt-get -qq update && apt-get -qq install -y --no-install-recommends "${missing[@]}"; } >/dev/null || {
        echo "apt-get could not install ${missing[*]}" >&2
        exit 1
    }
}

build_packages=(g++ cmake ninja-build libcli11-dev libfmt-dev nlohmann-json3-dev)
test_packages=(googletest binutils)
word_packages=(g++-multilib)
