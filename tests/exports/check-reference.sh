#!/bin/bash
# check-reference.sh: compares docs/reference.md with the golden list of exports, exports.txt beside this script.
#
# What it knows of the page: "## folder" begins a subsystem, "### `Class`" a class, "### Functions" free functions and data.
# The line behind a "###" heading begins with a link to the header, and each line "- `Name`: words" stands for an exported
# name; behind "Name" may be arguments, so that overloads can have a line each. Construction, destruction and copying have no lines.
# "### Header only: ..." is not compared: nothing of it is exported.
set -eu
here=$(dirname "$(readlink -f "$0")")
root=$(dirname "$(dirname "$here")")
page=${1:-$root/docs/reference.md}
export LC_ALL=C

# One "class X" for each class and one line for each name, without its arguments.
exported()
{
    sed -E 's/\(.*//; s/operator char const\*/operator const char*/' "$here/exports.txt" | awk '
        sub(/^vtable for /, "") { print "class " $0; next }
        !match($0, /.*::/) { print; next }
        {
            owner = substr($0, 1, RLENGTH - 2)
            name = substr($0, RLENGTH + 1)
            print "class " owner
            sub(/.*::/, "", owner)
            if (name != owner && name != "~" owner && name != "operator=")
                print
        }' | sort -u
}

# "<name>\t<header>" for each class and line of the page, "wrong <line>" for what has another form.
described()
{
    awk '
        /^## / { folder = $2; header = ""; inside = "nothing" ; next }
        /^### `[^`]+`$/ { owner = substr($0, 6, length($0) - 6); inside = "class"; wanted = 1; next }
        /^### Functions$/ { owner = ""; inside = "functions"; wanted = 1; next }
        /^### Header only: `[^`]+`$/ { inside = "header only"; wanted = 1; next }
        /^##/ { print "wrong " $0; next }
        /^$/ { next }
        wanted {
            wanted = 0
            header = $0
            if (match(header, /^\[[^]]+\]\(\.\.\/src\/[A-Za-z0-9_\/]+\.h\): ./)) {
                header = substr(header, 2, index(header, "]") - 2)
                if (index($0, "](../src/" header "):") == 0 || index(header, folder "/") != 1)
                    print "wrong " $0
            } else {
                print "wrong " $0
                header = ""
            }
            if (inside == "class")
                print "class " owner "\t" header
            next
        }
        /^- / && inside != "header only" && inside != "" {
            if (!match($0, /^- `[^`]+`: ./) || seen[owner, substr($0, 1, RLENGTH)]++) { print "wrong " $0; next }
            name = substr($0, 4, RLENGTH - 7)
            sub(/\(.*/, "", name)
            print (inside == "class" ? owner "::" : "") name "\t" header
        }' "$page"
}

lines=$(described)
status=0
complain()
{
    echo "$1"
    status=1
}

while read -r line; do
    complain "docs/reference.md has a line twice, or of another form than the others: $line"
done < <(sed -n 's/^wrong //p' <<<"$lines")

names=$(grep -v '^wrong ' <<<"$lines" | cut -f1 | sort -u)
while read -r name; do
    complain "exported, but missing in docs/reference.md: $name"
done < <(comm -13 <(echo "$names") <(exported))
while read -r name; do
    complain "in docs/reference.md, but not exported (or under another class): $name"
done < <(comm -23 <(echo "$names") <(exported))

# The header that a section names is the one that declares what the section lists.
while IFS=$'\t' read -r name header; do
    word=${name##*::}
    word=${word/#class /class AUTOOLS_API }
    if [ ! -f "$root/src/$header" ] || ! grep -qwF -- "$word" "$root/src/$header"; then
        complain "not declared in src/$header: $name"
    fi
done < <(grep -v '^wrong ' <<<"$lines")

exit $status
