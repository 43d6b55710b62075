#!/bin/bash
# install-packages.sh build|test: installs what the build (and the tests) need and this Debian machine lacks.
#
# Runs as root or with sudo. When nothing is missing nothing happens, without any network.
set -eu

packages=(cmake ninja-build ccache g++-mingw-w64-x86-64-posix wine64 libcli11-dev nlohmann-json3-dev)
case ${1:-} in
build) ;;
test)
    packages+=(googletest clang lld)
    packages+=(openssl)                         # serves TLS to the download library
    packages+=(libclang-rt-14-dev)              # sanitizers and coverage-guided fuzzing of the portable sources
    packages+=(chromium)                        # shows the log report as its reader sees it
    packages+=(doxygen gdb pkgconf osslsigncode) # the package and its documentation
    packages+=(gcovr)                           # coverage
    ;;
*)
    sed -n '2,/^set -eu/{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 2
    ;;
esac

if ! command -v dpkg-query >/dev/null; then
    echo "this is no Debian system; it must provide: ${packages[*]}" >&2
    exit 0
fi
missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null) || true
    [ "$state" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

asRoot=()
if [ "$(id -u)" != 0 ]; then
    asRoot=(sudo)
fi
echo "installing ${missing[*]}"
# One unreachable source among several need not matter: installing says whether anything is really missing.
"${asRoot[@]}" apt-get -q update || true
"${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q install --yes --no-install-recommends "${missing[@]}"
