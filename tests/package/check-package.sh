#!/bin/bash
# check-package.sh consumer|pkgconfig|parts|symbols|signing|without_tests <build tree>
#
#   consumer        installs the package, builds the small project beside this script against it, and runs its program with
#                   nothing but the package's `bin` in its path
#   pkgconfig       the same program, built by hand with what pkg-config says of the package, after the package was moved
#   parts           installs each component alone and looks at what it lays out
#   symbols         the installed library has no symbols of its own, and the debugger finds those that were split off
#   signing         the packager's command signs our files; one that fails ends the installation
#   without_tests   configures with BUILD_TESTING=OFF and looks for anything that belongs to tests
#
# CMAKE, GENERATOR, TOOLCHAIN and COMPILER say how the build tree was made.
set -eu
here=$(dirname "$(readlink -f "$0")")
buildTree=$(readlink -f "$2")
work=$buildTree/package/$1
configure=("$CMAKE" -G "$GENERATOR" "-DCMAKE_TOOLCHAIN_FILE=$TOOLCHAIN" "-DAUTOOLS_COMPILER=$COMPILER" -DCMAKE_BUILD_TYPE=Release)
rm -rf "$work"
mkdir -p "$work"

expectFile()
{
    if [ ! -f "$work/installed/$1" ]; then
        echo "not installed: $1"
        exit 1
    fi
}

# install <further arguments>: lays out the package in $work/installed.
install()
{
    "$CMAKE" --install "$buildTree" --prefix "$work/installed" "$@" >"$work/install.log" 2>&1
}

runConsumer()
{
    export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$buildTree/wine/cache}" WINEPATH="Z:$1"
    "$here/../support/wine/run-suite.sh" "package_$2" "$work/build/consumer.exe"
}

# expectOnly <component> <pattern>: everything the component lays out is of this kind, and there is something.
expectOnly()
{
    rm -rf "$work/installed"
    install --component "$1"
    local files
    files=$(cd "$work/installed" && find . -type f | sed 's,^\./,,' | sort)
    if [ -z "$files" ] || grep -vE "^($2)\$" <<<"$files"; then
        echo "the component $1 is not what it should be"
        exit 1
    fi
}

case $1 in
consumer)
    install
    for file in bin/{7xAutoUpdateTools,7xFileTransfer,libstdc++-6,libgcc_s_seh-1,libwinpthread-1}.dll \
        lib/lib7xAutoUpdateTools.dll.a include/7xAutoUpdateTools.h; do
        expectFile "$file"
    done
    "${configure[@]}" -S "$here/consumer" -B "$work/build" "-DCMAKE_PREFIX_PATH=$work/installed" >"$work/log" ||
        { cat "$work/log"; exit 1; }
    "$CMAKE" --build "$work/build"
    runConsumer "$work/installed/bin" consumer
    ;;
pkgconfig)
    install
    mv "$work/installed" "$work/moved elsewhere"
    mkdir "$work/build"
    export PKG_CONFIG_LIBDIR="$work/moved elsewhere/lib/pkgconfig"
    version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$buildTree/CMakeCache.txt")
    pkgconf --exact-version "$version" 7xAutoUpdateTools
    eval "flags=($(pkgconf --cflags --libs 7xAutoUpdateTools))"
    x86_64-w64-mingw32-g++-posix -std=c++17 "$here/consumer/main.cpp" -o "$work/build/consumer.exe" "${flags[@]}"
    runConsumer "$work/moved elsewhere/bin" pkgconfig
    ;;
parts)
    expectOnly runtime 'bin/[^/]*\.dll'
    expectOnly development '(include|lib)/.*\.(h|a|cmake|pc)'
    expectOnly symbols 'bin/[^/]*\.debug'
    expectOnly debugging 'share/7xAutoUpdateTools/[^/]*\.(natvis|py)'
    expectOnly tools 'bin/autool\.exe'
    ;;
symbols)
    install
    installed=$work/installed/bin/7xAutoUpdateTools.dll
    if x86_64-w64-mingw32-objdump -h "$installed" | grep -w '\.debug_info'; then
        echo "the installed library still has its debug symbols"
        exit 1
    fi
    expectFile bin/7xAutoUpdateTools.dll.debug
    # The library exports this function, so its name alone proves nothing: its source line does.
    shown=$(gdb --batch --nx -ex 'info line stristr' "$installed" 2>&1)
    if ! grep -q 'StringSearch\.cpp' <<<"$shown"; then
        echo "the debugger does not find the symbols: $shown"
        exit 1
    fi
    ;;
signing)
    openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=Packager -addext extendedKeyUsage=codeSigning -days 2 \
        -keyout "$work/key.pem" -out "$work/certificate.pem" 2>/dev/null
    AUTOOLS_SIGN_COMMAND="$here/sign.sh;$work/certificate.pem;$work/key.pem" install
    for file in 7xAutoUpdateTools.dll 7xFileTransfer.dll; do
        osslsigncode verify -CAfile "$work/certificate.pem" -in "$work/installed/bin/$file" >"$work/verified" ||
            { cat "$work/verified"; exit 1; }
    done
    # What is not ours is not signed by us.
    ! osslsigncode verify -CAfile "$work/certificate.pem" -in "$work/installed/bin/libstdc++-6.dll" >/dev/null 2>&1
    if AUTOOLS_SIGN_COMMAND=false install; then
        echo "the installation went on although nothing could be signed"
        exit 1
    fi
    ;;
without_tests)
    # GoogleTest need not even be there.
    "${configure[@]}" -S "$here/../.." -B "$work" -DBUILD_TESTING=OFF -DAUTOOLS_BUILD_EXAMPLES=OFF \
        -DAUTOOLS_GOOGLETEST_DIR=/nowhere >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
    targets=$("$CMAKE" --build "$work" --target help | sed "s,$work/,,") # the folder's own name says "tests"
    if ! grep -q '^7xAutoUpdateTools' <<<"$targets"; then
        echo "the library itself is not among the targets"
        exit 1
    fi
    if grep -E '_tests|gtest|autools_test_support|msxmlfront|autoupdatesrv|webconfigurator|updatecycle' <<<"$targets"; then
        echo "these belong to the tests and the examples"
        exit 1
    fi
    ;;
esac
