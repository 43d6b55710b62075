#!/bin/bash
# wine-run.sh <prefix> <program> [arguments]: runs one Windows program in the given prefix.
here=$(dirname "$(readlink -f "$0")")
. "$here/environment.sh"
WINEPREFIX=$(readlink -f "$1")
export WINEPREFIX
shift
exec "${wineStart[@]}" "$wine64" "$@"
