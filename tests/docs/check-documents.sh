#!/bin/bash
# check-documents.sh links                  every relative link of the Markdown files names a file, and a heading of it
# check-documents.sh samples <work folder>  every C++ sample of them compiles, one after the other of a file as one source would
#
# COMPILER, TARGET and FLAGS say with what.
set -eu
root=$(readlink -f "$(dirname "$(readlink -f "$0")")/../..")
mapfile -t documents < <(cd "$root" && find . -name '*.md' -not -path './build/*' -not -path './out/*' | sort)
status=0

# The anchors of a document's headings, as they are made from their texts.
anchors()
{
    sed -n 's/^##* //p' "$1" | tr '[:upper:]' '[:lower:]' | sed 's/[^a-z0-9 _-]//g; s/ /-/g'
}

links()
{
    local document target file anchor
    for document in "${documents[@]}"; do
        # Code is no text: what looks like a link there is none.
        while read -r target; do
            case $target in http://* | https://*) continue ;; esac
            file=${target%%#*}
            anchor=
            [ "$target" = "$file" ] || anchor=${target#*#}
            file=$(cd "$root/$(dirname "$document")" && readlink -f "${file:-$(basename "$document")}") || file=
            if [ ! -e "$file" ]; then
                echo "$document: $target leads nowhere"
                status=1
            elif [ -n "$anchor" ] && ! anchors "$file" | grep -qxF "$anchor"; then
                echo "$document: $target names no heading"
                status=1
            fi
        done < <(sed '/^```/,/^```$/d; s/`[^`]*`//g' "$root/$document" | grep -oE '\]\([^) ]+\)' | sed 's/^](//; s/)$//')
    done
}

# The samples of one document in the order they stand, each in a namespace of its own unless it is a whole program.
samples()
{
    local document count=0 source name
    rm -rf "$1"
    mkdir -p "$1"
    for document in "${documents[@]}"; do
        name=$(sed 's,^\./,,; s,[/.],_,g' <<<"$document")
        awk -v prefix="$1/$name" '/^```cpp$/ { ++n; inside = 1; next } /^```$/ { inside = 0 } inside { print > (prefix "_" n ".cpp") }' \
            "$root/$document"
    done
    for source in "$1"/*.cpp; do
        [ -e "$source" ] || break
        # Statements alone stand within a function; the includes come before it.
        if ! grep -qE '^[a-zA-Z].*\)$|^int main' "$source"; then
            { grep '^#include' "$source"; echo 'void sample()'; echo '{'; grep -v '^#include' "$source"; echo '}'; } >"$source.new"
            mv "$source.new" "$source"
        fi
        count=$((count + 1))
        # shellcheck disable=SC2086 # the flags are several words
        "$COMPILER" ${TARGET:+--target=$TARGET} ${FLAGS:-} -std=c++17 -Wall -Wextra -fsyntax-only -I "$root/src" "$source" || {
            echo "FAILED: $(basename "$source")"
            status=1
        }
    done
    echo "$count samples"
    [ "$count" -ge 6 ] || status=1 # looking for them must find them
}

case $1 in
links) links ;;
samples) samples "$2" ;;
esac
exit $status
