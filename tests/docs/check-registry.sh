#!/bin/bash
# check-registry.sh: holds docs/registry.md against the code. Every value that a reader or writer of the library names stands there
# with its type, and so does every value that autool knows; every value that stands there is named in the library's sources.
set -eu
root=$(readlink -f "$(dirname "$(readlink -f "$0")")/../..")
page=$root/docs/registry.md
status=0
fail()
{
    echo "$1"
    status=1
}

# "<name> <type>" for each row of the page.
documented=$(sed -n 's/^| `\([A-Za-z_0-9]*\)` | \([A-Z_]*\|-\) |.*/\1 \2/p' "$page" | sort -u)
[ "$(wc -l <<<"$documented")" -gt 60 ] || fail "the page's tables were not understood"

# Names that the library gives to values of Windows' own keys.
foreign=" ActiveXCache EnableHttp1_1 INF http "

# read <pattern before the name> <type>
named()
{
    grep -rhoE "$1\"[A-Za-z_0-9]+\"" "$root/src" | sed -E 's/.*"([A-Za-z_0-9]+)"$/\1/' | sort -u |
        while read -r name; do echo "$name $2"; done
}
coded=$(
    named '(readText\([^"]*|TextOfProduct\()' REG_SZ
    named '(readFlag\([^"]*|writeFlag\([^"]*|readNumber\([^"]*|[GS]etFlag\()' REG_DWORD
    named '[GS]etTimeValue\(' REG_QWORD
    named '(SetValue|QueryValue|DeleteValue)\(' any
    sed -n 's/^constexpr char k[A-Za-z]*\[\] = "\([A-Za-z_]*\)";/\1 any/p' "$root"/src/registry/CReg{Network,Component,ProductForComponent}.cpp
    sed -nE 's/.*\{L"[^"]*", L"([^"]+)", (REG_[A-Z]+),.*/\1 \2/p' "$root/tools/autool/state/KnownValues.cpp"
)
[ "$(wc -l <<<"$coded")" -gt 100 ] || fail "the sources were not understood"
while read -r name type; do
    [[ $foreign != *" $name "* ]] || continue
    if [ "$type" = any ]; then
        grep -q "^$name " <<<"$documented" || fail "$name is not on the page"
    else
        grep -qx "$name $type" <<<"$documented" || fail "$name is not on the page as $type"
    fi
done < <(sort -u <<<"$coded")

while read -r name type; do
    grep -rqF "\"$name\"" "$root/src" || fail "$name is on the page, but nowhere in the sources"
done <<<"$documented"
exit $status
