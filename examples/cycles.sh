#!/bin/bash
# cycles.sh <build tree> <prefix> [updatecycle options]: runs what has been built in a Windows prefix made afresh.
#
# Without options: seven update cycles of one workstation with two certificates, and a restart of its Windows. Each is
# checked in what it printed, in the files and in the registry, and in what it asked the Web Configurator; the exit status
# is 0 only when every cycle did what it claims.
# With options, or with CYCLE_RULE, which makes the sample Web Configurator misbehave: one cycle of one certificate with
# them, whose exit status is the host's (see updatecycle --help).
#
# The prefix stays, to be looked into with tests/support/wine/wine-run.sh.
set -u
if [ $# -lt 2 ]; then
    sed -n '2,/^set -u/{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 2
fi
source=$(dirname "$(dirname "$(readlink -f "$0")")")
wine=$source/tests/support/wine
tree=$(readlink -f "$1")
prefix=$2
shift 2
export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$tree/wine/cache}" AUTOOLS_HEAP_CHECKS="${AUTOOLS_HEAP_CHECKS:-0}"
# The certificate IDs: one belongs to the workstation's hardware ID, one is in a certificate of its store.
ledgerId=TGVkZ2VyLUNJRC0x
reportsId=UmVwb3J0cy1DSUQ+MQ==

mkdir -p "$(dirname "$prefix")"
exec 9>"$prefix.lock"
flock -n 9 || {
    echo "another run works in $prefix"
    exit 1
}
work=$(mktemp -d)
cp -r "$source/examples/webconfigurator/templates" "$work/templates"
cleanUp()
{
    exec 7>&- 8>&-
    "$wine/prefix.sh" stop "$prefix" 9>&-
    rm -rf "$work"
}

step()
{
    printf '\n== %s\n' "$*"
}

# windows <program> [arguments]: what it leaves running must not keep the other ends of the pipes (7, 8) open.
windows()
{
    "$wine/wine-run.sh" "$prefix" "$@" 7>&- 8>&- 9>&-
}

makeWindows()
{
    local current='HKLM\Software\Microsoft\Windows\CurrentVersion' programs='C:\Program Files (x86)'
    step "Windows prefix"
    "$wine/prefix.sh" remove "$prefix" 9>&- || exit 1
    trap cleanUp EXIT
    "$wine/prefix.sh" create "$prefix" "$tree/bin/msxmlfront.dll" 9>&- || exit 1
    # What the emulated Windows lacks: the folders of 32-bit programs in their view, and the key of the shared counts.
    {
        windows reg add "$current" /reg:32 /f /v ProgramFilesDir /d "$programs" &&
            windows reg add "$current" /reg:32 /f /v CommonFilesDir /d "$programs\\Common Files" &&
            windows reg add "$current\\SharedDLLs" /f
    } </dev/null >/dev/null || exit 1
    echo "$prefix"
}

port=0
# startServer <rule>...: it serves until its input ends, and says on which port before anything else. It keeps that port
# when it comes back: answers are cached for a host.
startServer()
{
    local rules=() rule line
    for rule in "$@"; do
        rules+=(--rule "$rule")
    done
    rm -f "$work/server.in"
    mkfifo "$work/server.in"
    : >"$work/requests"
    windows "$tree/bin/webconfigurator.exe" --port "$port" --templates "Z:$work/templates" --depot "Z:$tree/depot" \
        "${rules[@]}" <"$work/server.in" >"$work/requests" &
    server=$!
    exec 8>"$work/server.in"
    line=$(firstLine "$work/requests" "$server")
    port=${line#port }
    if [ "$line" = "$port" ]; then
        echo "the Web Configurator did not start"
        exit 1
    fi
}

stopServer()
{
    exec 8>&-
    wait "$server"
}

# firstLine <file> <process that writes it>: waits for it.
firstLine()
{
    local tries
    for ((tries = 0; tries < 300; ++tries)); do
        [ "$(wc -l <"$1")" = 0 ] || break
        kill -0 "$2" 2>/dev/null || break
        sleep 0.1
    done
    head -n 1 "$1" | tr -d '\r'
}

# host <options>: one run of the host, shown and kept in $work/output; its exit code is left in $code.
host()
{
    windows "$tree/bin/updatecycle.exe" --server "127.0.0.1:$port" --data 'C:\Velmora\Data' "$@" \
        </dev/null | sed -u 's/\r$//' | tee "$work/output"
    code=${PIPESTATUS[0]}
}

# autool <arguments>: what the program for people says, shown and kept in $work/output; its exit code is left in $code.
autool()
{
    printf '$ autool %s\n' "$*"
    windows "$tree/bin/autool.exe" "$@" </dev/null 2>&1 | sed -u 's/\r$//' | tee "$work/output"
    code=${PIPESTATUS[0]}
}

# -- one cycle, as asked for

if [ $# -gt 0 ] || [ -n "${CYCLE_RULE:-}" ]; then
    makeWindows
    startServer ${CYCLE_RULE:+"$CYCLE_RULE"} "query.CertificateID=$ledgerId, file=cycle/install.xml, page=wcfgGetProductList.asp"
    step "Update cycle"
    host --cid $ledgerId "$@"
    stopServer
    step "What the Web Configurator was asked"
    tail -n +2 "$work/requests"
    cycleCode=$code
    step "What the client would do now"
    autool plan
    step "What the event log says of it"
    autool log
    step "Exit code $cycleCode"
    exit "$cycleCode"
fi

# -- the seven cycles

# What the client's installer leaves, and where the two certificate IDs come from.
makeWorkstation()
{
    step "The workstation's certificates"
    mkdir -p "$drive/Velmora/AutoUpdateSRV"
    cp "$tree/bin/autoupdatesrv.exe" "$drive/Velmora/AutoUpdateSRV"
    {
        windows reg add 'HKLM\Software\Velmora\7xAutoUpdate' /f /v Current_AutoUpdate_Version /d 4.2.310B1_EN &&
            windows 'C:\Velmora\AutoUpdateSRV\autoupdatesrv.exe' -RegServer &&
            windows reg add 'HKLM\Software\Velmora\AutoUpdateSRV' /f /v HWID /t REG_DWORD /d 4711
    } </dev/null >/dev/null || exit 1
    echo "the local server knows the hardware ID 4711"
    windows "$tree/bin/samplecertificate.exe" "$reportsId" </dev/null | tr -d '\r'
    [ "${PIPESTATUS[0]}" = 0 ] || exit 1
}

# configuration <time stamp> <S> <E>: from now on the server has this one, with installation hours from S to E o'clock.
configuration()
{
    stamp=$1
    sed "s|<TimeStamp>.*</TimeStamp>|<TimeStamp>$1</TimeStamp>|
        s|<InstallStart>.*</InstallStart>|<InstallStart>$2</InstallStart>|
        s|<InstallEnd>.*</InstallEnd>|<InstallEnd>$3</InstallEnd>|" \
        "$source/examples/webconfigurator/templates/kernel-configuration.xml" >"$work/templates/configuration.xml"
}

wrong=0
# claim <what> <command...>: one thing that must be so.
claim()
{
    local what=$1
    shift
    if "$@" >/dev/null 2>&1; then
        echo "ok     $what"
    else
        echo "WRONG  $what"
        wrong=$((wrong + 1))
    fi
}

# cycle <title> <answer for the first certificate> <answer for the second> <exit code>; without answers the server is away
cycle()
{
    local title=$1 ledgerAnswer=$2 reportsAnswer=$3 expected=$4
    local lists="page=wcfgGetProductList.asp" configurations="page=wcfgGetConfigForProduct.asp"
    step "$title"
    : >"$work/requests"
    if [ -n "$ledgerAnswer" ]; then
        startServer "page=wcfgGetCidListFromHWID1.asp, file=cycle/cid-list.xml" \
            "$configurations, query.TimeStamp=$stamp, file=no-change.xml" "$configurations, file=configuration.xml" \
            "$lists, query.CertificateID=$ledgerId, file=$ledgerAnswer" \
            "$lists, query.CertificateID=$reportsId, file=$reportsAnswer"
    fi
    host
    [ -z "$ledgerAnswer" ] || stopServer
    machine
    echo
    claim "exit code $expected" [ "$code" = "$expected" ]
}

# What the server must have been asked, besides for the files of its depot.
askedHardware()
{
    echo "GET /WebConfV1/wcfgGetCidListFromHWID1.asp?HWID1=4711 HTTP/1.1"
}
# In an address "+" is "%2B" and a blank "%20".
inAddress()
{
    sed 's/+/%2B/g; s/ /%20/g' <<<"$1"
}
identity()
{
    echo "CertificateID=$(inAddress "$1")&ProductName=Automatic%20Update&Version=4.2.310&Build=B1&Language=EN"
}
# askedConfiguration <time stamp>
askedConfiguration()
{
    echo "GET /WebConfV1/wcfgGetConfigForProduct.asp?$(identity $ledgerId)&TimeStamp=$(inAddress "$1") HTTP/1.1"
}
# askedList <certificate ID>
askedList()
{
    echo "GET /WebConfV1/wcfgGetProductList.asp?$(identity "$1") HTTP/1.1"
}
# asked <time stamp> <certificate ID>...
asked()
{
    local id
    {
        askedHardware
        askedConfiguration "$1"
        shift
        for id in "$@"; do
            askedList "$id"
        done
    } | cmp - <(tail -n +2 "$work/requests" | grep -v '^GET /Depot/' | tr -d '\r')
}

clientKey='HKEY_LOCAL_MACHINE\Software\Velmora'
sharedKey='HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\SharedDLLs'
classKey='HKEY_LOCAL_MACHINE\Software\Classes\CLSID\{6E0F1C52-58D5-4B0E-9A57-2F6C3B8D1E40}'
pendingKey='HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Session Manager'
drive=$prefix/drive_c
programs="$drive/Program Files (x86)/Velmora"
words="$drive/Program Files (x86)/Common Files/Velmora/Words"
reports="$drive/Program Files/Velmora Reports"

# What the machine looks like now, in $work/machine: the installed files and what the registry says of them.
machine()
{
    {
        find "$programs" "$words" "$reports" -type f -printf '%p\n' 2>/dev/null | sed "s|^$drive/|C:/|" | sort
        local key
        for key in "$clientKey\\7xAutoUpdate\\Products" "$clientKey\\7xAutoUpdate\\Components" "$clientKey\\Reports" \
            "$clientKey\\7xAutoUpdate\\Data" "$clientKey\\7xAutoUpdate\\Config\\Cache\\Certificates" "$sharedKey" "$classKey"; do
            ! windows reg query "$key" /s </dev/null >"$work/key" 2>/dev/null || tr -d '\r' <"$work/key" | grep .
        done
    } >"$work/machine"
}

printed()
{
    grep -qF -- "$1" "$work/output"
}
there()
{
    grep -qF -- "$1" "$work/machine"
}
notThere()
{
    ! there "$1"
}
# value <name> <data>: some key that is shown has this value.
value()
{
    grep -qE "^ *$1 +REG_[A-Z]+ +$2\$" "$work/machine"
}
sameAs()
{
    cmp "$tree/depot/$1" "$2"
}
asLastTime()
{
    cmp "$work/machine.before" "$work/machine"
}
remember()
{
    cp "$work/machine" "$work/machine.before"
}
pendingMoves()
{
    windows reg query "$pendingKey" /v PendingFileRenameOperations </dev/null 2>/dev/null | tr -d '\r' | grep REG_
}

oldest="1980-01-01 00:00:00"
first="2026-01-15 10:00:00"
second="2026-03-02 07:30:00+01"
third="2026-03-09 07:30:00+01"
makeWindows
makeWorkstation
cached="$drive/Velmora/Data/Automatic Update"
kernelData="$drive/Velmora/Data/Client/AUKernelData.xml"

configuration "$first" 0 24
cycle "Cycle 1: two certificates, two products are installed" cycle/ledger.xml cycle/reports.xml 0
claim "the server was asked for the certificates, the configuration and two product lists" \
    asked "$oldest" $ledgerId $reportsId
claim "the configuration is the server's, and cached" \
    eval "grep -F '<TimeStamp>$first<' '$kernelData' && cmp '$cached/127.0.0.1:$port/$ledgerId.dat' '$kernelData'"
claim "the product lists are kept apart" \
    eval "ls '$drive/Velmora/Data/${ledgerId}_productList.xml' '$drive/Velmora/Data/${reportsId}_productList.xml'"
claim "both products were missing" [ "$(grep -c '^  decided      now: not installed' "$work/output")" = 2 ]
claim "LedgerCore went where programs go: the registry names no folder for it" \
    sameAs LedgerCore/7.0.12B1_EN/ledger.txt "$programs/Ledger/ledger.txt"
claim "ReportTemplates went where the registry says" \
    sameAs ReportTemplates/2.4.3P1_EN/balance.txt "$reports/Templates/balance.txt"
claim "the installer of Reports ran" [ -f "$reports/reports.txt" ]
claim "the COM server is registered" there 'C:\Program Files (x86)\Velmora\Ledger\Bin\LedgerServer.dll'
claim "the word list is there once and counted twice" value '.*words.txt' 0x2
claim "both products are recorded" eval "value Version 7.0.12B1 && value Version 2.4.3P1"
claim "their certificates are kept with them" eval "there ' $ledgerId ' && there ' $reportsId '"
step "What the machine looks like after cycle 1"
cat "$work/machine"
remember

cycle "Cycle 2: nothing is necessary" no-change.xml cycle/reports.xml 0
claim "the server was asked only for what changed since" asked "$first" $ledgerId $reportsId
claim "no file was brought again" eval "! grep -F /Depot/ '$work/requests'"
claim "the first certificate has no new list, and nothing left to do" printed 'no new list  0 releases wait from before'
claim "Reports is what is asked for" \
    printed 'decided      nothing to do: installed 2.4.3P1_EN is what is asked for, with all its components'
claim "the machine is as it was" asLastTime

step "Somebody works with the ledger"
mkfifo "$work/holder.in"
: >"$work/holding"
windows "$tree/bin/updatecycle.exe" --hold 'C:\Program Files (x86)\Velmora\Ledger\ledger.txt' \
    <"$work/holder.in" >"$work/holding" &
holder=$!
exec 7>"$work/holder.in"
firstLine "$work/holding" $holder

cycle "Cycle 3: a new build of a file that is in use" cycle/ledger-new-build.xml no-change.xml 8
claim "the server was asked for both" asked "$first" $ledgerId $reportsId
claim "the new build was the reason" \
    printed 'decided      now: component LedgerCore: component build changed: installed 7.0.12B1, asked 7.0.12B2'
claim "the file in use is put off" printed 'ledger.txt is in use, replaced when Windows starts next'
claim "the event log says so" \
    printed 'Warning       Reboot Needed: C:\Program Files (x86)\Velmora\Ledger\ledger.txt'
claim "the old file is still there" sameAs LedgerCore/7.0.12B1_EN/ledger.txt "$programs/Ledger/ledger.txt"
claim "Windows knows what to do" eval "pendingMoves | grep -F ledger.txt"
step "Windows restarts"
exec 7>&-
"$wine/prefix.sh" restart "$prefix" 9>&- || exit 1
wait "$holder"
machine
claim "the new file is there" sameAs LedgerCore/7.0.12B2_EN/ledger.txt "$programs/Ledger/ledger.txt"
claim "nothing is left to do at a restart" eval "! pendingMoves"
claim "no temporary file is left" eval "! ls '$drive'/*.tmp"
claim "the new build is recorded" value ComponentVersion 7.0.12B2
remember

# Hours that begin in two hours and end in four.
hour=$(. "$wine/environment.sh" && date +%-H)
later=$(((hour + 2) % 24))-$(((hour + 4) % 24))
configuration "$second" ${later%-*} ${later#*-}
cycle "Cycle 4: a new configuration, and a new release outside its installation hours" \
    no-change.xml cycle/reports-new-release.xml 0
claim "the server was asked for both" asked "$first" $ledgerId $reportsId
claim "the new configuration is there" grep -F "<TimeStamp>$second<" "$kernelData"
claim "Reports waits for its hours" printed \
    "decided      later: outside the installation hours $later (installed 2.4.3P1_EN, asked 2.4.3P2_EN: differs)"
claim "the event log says so" \
    printed "Installation authorized only during ${later%-*} and ${later#*-} o'clock - Pending"
claim "its record waits, too" eval "[ -f '$drive/Velmora/Data/Reports.lst' ] && there 'Data\\WebConf\\Reports'"
claim "the old templates are still there" \
    sameAs ReportTemplates/2.4.3P1_EN/balance.txt "$reports/Templates/balance.txt"
claim "the old release is still recorded" value Version 2.4.3P1

remember

cycle "Cycle 5: the server is away" "" "" 4
claim "the configuration is used as it was" printed 'AUKernelData.xml is used as it was'
claim "both certificate IDs are known nevertheless" \
    eval "printed 'Certificate  $ledgerId' && printed 'Certificate  $reportsId'"
claim "Reports still waits, for the hours of that configuration" printed \
    "decided      later: outside the installation hours $later (installed 2.4.3P1_EN, asked 2.4.3P2_EN: differs)"
claim "the machine is as it was" asLastTime

step "What the client would do now, and when its hours come"
autool plan
claim "autool decides as the cycle did" eval "printed ' hold ' && printed 'installed only $later o'"
autool plan --at "$(. "$wine/environment.sh" && date -d '2 hours' '+%Y-%m-%d %H:%M')"
claim "two hours later it is installed" printed 'Releases: 1 install'
machine
claim "looking changed nothing" asLastTime

cycle "Cycle 6: the second certificate is revoked" cycle/ledger-new-build.xml error-access-missing.xml 0
claim "the server was asked for both, with the time stamp of the configuration" asked "$second" $ledgerId $reportsId
claim "its releases are withdrawn" printed 'refused      its releases are withdrawn, and it is not asked for again'
claim "the event log says why" \
    printed "Warning       Get info for Certificate $reportsId returned: \"Err 102: certificate expired\""
claim "the certificate is marked" eval "there 'Certificates\\$reportsId' && value Status Revoked"
claim "the waiting release is gone from file and registry" \
    eval "[ ! -e '$drive/Velmora/Data/Reports.lst' ] && notThere 'Data\\WebConf'"
claim "what was installed stays" value Version 2.4.3P1
claim "the other certificate goes on" \
    printed 'decided      nothing to do: installed 7.0.12B1_EN is what is asked for, with all its components'

configuration "$third" 0 24
cycle "Cycle 7: the other certificate's list removes both products" cycle/remove.xml cycle/reports.xml 0
claim "the revoked certificate is not asked for" asked "$second" $ledgerId
claim "the event log says so" printed "CID $reportsId revoked or expired"
claim "no request left a mark" eval "! windows reg query '$clientKey\\7xAutoUpdate\\Config\\Cache\\UpdatingConfigs' /s \
    </dev/null 2>/dev/null | grep -F __config"
claim "the installed releases are the ones to remove" \
    [ "$(grep -cE 'decided      now: installed (7.0.12B1|2.4.3P1)_EN is the one to remove' "$work/output")" = 2 ]
claim "the word list stayed for the second product" printed 'words.txt is used by 1'
claim "its files are gone" eval "! find '$programs' '$words' '$reports' -type f | grep ."
claim "the folders of the products are gone" eval "[ ! -e '$programs/Ledger' ] && [ ! -e '$reports' ]"
claim "the COM server is no longer registered" notThere LedgerServer
claim "the shared count is gone" notThere words.txt
claim "neither products nor components are recorded" eval "notThere Ledger && notThere Report && notThere Wordlist"
claim "no release file is left" eval "! ls '$drive'/Velmora/Data/*.lst"
claim "no component is kept" eval "! find '$drive/Velmora/Data/Components' -type f | grep ."
step "What the machine looks like after cycle 7"
cat "$work/machine"
remember

step "What the client would do now"
autool plan
claim "nothing waits any more" eval "[ $code = 0 ] && printed 'No releases'"
autool plan --products "C:\\Velmora\\Data\\${ledgerId}_productList.xml"
claim "the last product list has been carried out" printed 'Releases: 2 nothing'
step "What the event log says of all cycles"
autool log
claim "the log shows seven cycles" [ "$(grep -cE '^20[0-9]{2}-.* Phase3_End ' "$work/output")" = 7 ]
claim "the log shows the waiting, the restart and the refusal" eval "printed 'Pending' && printed 'Reboot Needed' &&
    printed 'certificate expired'"
machine
claim "looking changed nothing" asLastTime

step "Result"
if [ $wrong != 0 ]; then
    echo "$wrong things are not as they should be"
    exit 1
fi
echo "all seven cycles did what they claim"
