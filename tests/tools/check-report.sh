#!/bin/bash
# check-report.sh <build tree>: looks at a report of `autool log --html` in a real browser, headless, as its reader would.
#
# The log is one of three days, with failures and with texts that try to get out of the page. The last check
# puts a script into the file, as if the escaping had failed: it must not run either.
# AUTOOLS_UPDATE_DOCS=1 keeps the screenshot as docs/autool-log.png.
set -u
here=$(dirname "$(readlink -f "$0")")
build=$(readlink -f "$1")
wine=$here/../support/wine
browser=$(command -v chromium || command -v chromium-browser || command -v google-chrome)
if [ -z "$browser" ]; then
    echo "no chromium here: scripts/install-packages.sh test installs it" >&2
    exit 1
fi
work=$build/test-results/autool-report
rm -rf "$work"
mkdir -p "$work"
export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$build/wine/cache}"
prefix=$build/wine/autool-report-$$
cleanUp()
{
    "$wine/prefix.sh" remove "$prefix"
    rm -rf "$work/profile"
}
trap cleanUp EXIT
trap 'exit 130' INT TERM

failures=0
check() # check <what> <command...>
{
    local what=$1
    shift
    if "$@"; then
        echo "ok     $what"
    else
        echo "FAILED $what"
        failures=$((failures + 1))
    fi
}

event() # event <date> <type> <text>
{
    printf '<LogEvent><Date>%s</Date><Type>%s</Type><Event>%s</Event></LogEvent>\r\n' "$1" "$2" "$3"
}

# One day's cycle; the third day's second phase never ends.
day()
{
    local date=26/11/$1 hour
    for hour in 08 13; do
        event "$date $hour:00.00" Phase1_Start ''
        event "$date $hour:00.02" Info 'nb of valid Velmora Certificates: 2'
        event "$date $hour:01.10" Info 'C:\Velmora\Data\UmVwb3J0cy1DSUQproductList.xml file saved'
        event "$date $hour:40.00" Phase1_End ''
        event "$date $hour:41.00" Phase2_Start ''
        event "$date $hour:55.30" Error 'Release file C:\Velmora\Data\Ledger.lst not deleted: error 32'
        [ "$1$hour" = 2113 ] && break
        event "$date $hour:59.00" Phase2_End ''
        event "$date $((10#$hour + 1)):10.00" Phase3_Start ''
        event "$date $((10#$hour + 1)):11.20" Warning 'Reboot Needed: C:\Program Files\Velmora\Ledger\ledger.dll'
        event "$date $((10#$hour + 3)):12.00" Phase3_End ''
    done
}

"$wine/prefix.sh" create "$prefix" || exit 1
log=$prefix/drive_c/Velmora/Data
mkdir -p "$log"
head='<LogAutoUpdate>\r\n<Environment>\r\n<AUVersion>3.3.302B1</AUVersion>\r\n<OS>Windows 7 6.1 Service Pack 1</OS>\r\n<IE>8.0.7601.17514</IE>\r\n</Environment>\r\n'
{
    printf "$head"
    day 19
    printf '</LogAutoUpdate>\r\n'
} >"$log/7xAutoupdateLog_01.xml"
current() # current <more events of the second day>
{
    printf "$head"
    day 20
    printf '%s' "$1"
    day 21
    printf '<LogEvent><Date>26/11/21 13:56.00</Date><Type>Info</Type><Event>Loading C:\Velmora\Da'
}
hostile=$(
    event '26/11/20 18:00.00' Info "</td></table><script>document.title='OWNED'</script><img src=x onerror=document.title='OWNED'>"
    event '26/11/20 18:00.01' '"><script>document.title=1</script>' 'Z'$'\xfc''rich &lt;b&gt;bold&lt;/b&gt;'
)
report() # report <file>
{
    "$wine/wine-run.sh" "$prefix" "$build/bin/autool.exe" log --file 'C:\Velmora\Data' --html "Z:$1"
}
current '' >"$log/7xAutoupdateLog.xml"
report "$work/plain.html"
current "$hostile" >"$log/7xAutoupdateLog.xml"
page=$work/report.html
report "$page"
check "autool ends with 1, findings" [ $? = 1 ]
check "the report is there" [ -s "$page" ] || exit 1

# dom <file> <hash>: the document as the browser has it after its script has run.
dom()
{
    timeout --kill-after=5 100 "$browser" --headless --no-sandbox --disable-gpu --user-data-dir="$work/profile" \
        --virtual-time-budget=3000 --dump-dom "file://$1#$2" 2>>"$work/browser.log"
}
has() { grep -qF -- "$2" "$1"; }
hasNot() { ! has "$@"; }
visibleRows() { grep -c '^<tr[^>]*><td' "$1" | awk -v hidden="$(grep -c '^<tr[^>]* hidden=' "$1")" '{ print $1 - hidden }'; }
shows() { # shows <file> <rows>: the count that the page tells, and the rows that are really not hidden
    has "$1" "id=\"shown\">$2 of $total<" && [ "$(visibleRows "$1")" = "$2" ]
}

total=$(grep -c '^<tr[^>]*><td' "$page")
dom "$page" '' >"$work/all.html"
check "its script runs, and without a filter all $total events are shown" shows "$work/all.html" "$total"
dom "$page" 'type=Error' >"$work/errors.html"
check "six errors" shows "$work/errors.html" 6
dom "$page" 'type=Warning&text=REBOOT' >"$work/reboots.html"
check "a type and a text together, in any case" shows "$work/reboots.html" 5
dom "$page" 'text=%3Cb%3Ebold' >"$work/bold.html"
check "text with brackets is text" shows "$work/bold.html" 1
for file in all errors reboots bold; do
    check "nothing hostile ran ($file)" has "$work/$file.html" '<title>Event log</title>'
done
check "no element came from a text" hasNot "$work/all.html" '<img'
check "the hostile type is no option of its own making" has "$work/all.html" '&lt;script&gt;document.title=1&lt;/script&gt;'
check "phases are bars" has "$work/all.html" 'class="phase"'
check "the phase without end is one, too" has "$work/all.html" 'class="open"'
check "findings are listed" has "$work/all.html" '<b>repeated-error</b>'
check "the cut-off end is said" has "$work/all.html" '<b>cut-off</b>'

sed 's|<h1>|<script>document.title="OWNED"</script><img src="x" onerror="document.title=1"><h1>|' "$page" >"$work/injected.html"
dom "$work/injected.html" 'type=Error' >"$work/injected-dom.html"
check "a script in the file does not run: the page forbids it" has "$work/injected-dom.html" '<title>Event log</title>'
check "while the page's own does" shows "$work/injected-dom.html" 6

timeout --kill-after=5 100 "$browser" --headless --no-sandbox --disable-gpu --user-data-dir="$work/profile" --hide-scrollbars \
    --window-size=1100,820 --virtual-time-budget=3000 --screenshot="$work/report.png" "file://$work/plain.html" 2>>"$work/browser.log"
check "a screenshot below 150 KB" [ "$(stat -c %s "$work/report.png" 2>/dev/null || echo 999999)" -lt 153600 ]
if [ -n "${AUTOOLS_UPDATE_DOCS:-}" ]; then
    cp "$work/report.png" "$here/../../docs/autool-log.png"
fi
[ $failures = 0 ]
