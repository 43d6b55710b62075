#!/bin/bash
# check-library.sh exports|imports|update_exports <7xAutoUpdateTools.dll>
#
# Compares what the built library exports (imports) with exports.txt (imports.txt) beside this script. OBJDUMP and CXXFILT name the tools.
set -eu
here=$(dirname "$(readlink -f "$0")")
dll=$2
export LC_ALL=C

if [ "$(basename "$dll")" != 7xAutoUpdateTools.dll ]; then
    echo "the library is called $(basename "$dll")"
    exit 1
fi

# Type information is left out: whether it is exported with its class is each compiler's own business.
exports()
{
    "${OBJDUMP:-objdump}" -p "$dll" |
        awk '/^\[Ordinal\/Name Pointer\]/ { inside = 1; next } /^$/ { inside = 0 } inside { print $NF }' |
        grep -v '^_ZT[IS]' | "${CXXFILT:-c++filt}" | sort -u
}

imports()
{
    "${OBJDUMP:-objdump}" -p "$dll" | sed -n 's/^[[:space:]]*DLL Name: //p' | tr '[:upper:]' '[:lower:]' | sort -u
}

case $1 in
update_exports)
    exports >"$here/exports.txt"
    ;;
exports)
    if ! diff --unchanged-line-format= --old-line-format='no longer exported: %L' --new-line-format='new export: %L' \
        "$here/exports.txt" <(exports); then
        echo "If this is meant, build the target update_exports, describe what is new in docs/reference.md, and commit both."
        exit 1
    fi
    ;;
imports)
    others=$(imports | grep -vxF -f <(grep -v '^#' "$here/imports.txt")) || exit 0
    echo "imported, but not among the libraries of imports.txt:"
    echo "$others"
    exit 1
    ;;
esac
