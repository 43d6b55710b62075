#!/bin/bash
# check-hardening.sh <file ...>: each may be loaded at any address (64-bit ones too) and executes no data.
set -eu
status=0
for file in "$@"; do
    flags=$("${OBJDUMP:-objdump}" -p "$file" | sed -n '/^DllCharacteristics/,/^SizeOfStackReserve/p')
    for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
        grep -qw "$flag" <<<"$flags" || {
            echo "$(basename "$file") lacks $flag"
            status=1
        }
    done
    # Without relocations the loader has no choice, whatever the flag says.
    "${OBJDUMP:-objdump}" -h "$file" | grep -qw '\.reloc' || {
        echo "$(basename "$file") has no relocations"
        status=1
    }
done
exit $status
