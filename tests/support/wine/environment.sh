# Sourced by the other scripts of this folder: where Wine is and how its programs are started here.
#
# Every start goes through wineStart, for three reasons:
#  - address randomisation off: now and then Wine's loader finds a fixed address taken and the program dies silently;
#  - root loses the right to pass over file permissions, or nothing could ever be denied to a program under test;
#  - the caller's display, time zone, proxies and language do not leak in.

for wineFolder in /usr/lib/wine /usr/lib/wine-stable /opt/wine-stable/bin ""; do
    wine64=$(command -v "${wineFolder:+$wineFolder/}wine64") && break
done
for wineServer in "${wineFolder:+$wineFolder/}wineserver64" "${wineFolder:+$wineFolder/}wineserver"; do
    wineServer=$(command -v "$wineServer") && break
done
if [ -z "$wine64" ] || [ -z "$wineServer" ]; then
    echo "wine64 is not installed" >&2
    exit 127
fi

unset DISPLAY WAYLAND_DISPLAY TZ LANG LANGUAGE http_proxy https_proxy ftp_proxy no_proxy HTTP_PROXY HTTPS_PROXY NO_PROXY
# A test of daylight saving names a zone of its own.
[ -z "${AUTOOLS_TZ:-}" ] || export TZ=$AUTOOLS_TZ
export LC_ALL=C.UTF-8 WINEARCH=win64 WINEDEBUG="${WINEDEBUG:--all}"

wineStart=()
if [ "$(id -u)" = 0 ]; then
    dropped=-dac_override,-dac_read_search
    if setpriv --bounding-set=$dropped --inh-caps=$dropped true 2>/dev/null; then
        wineStart+=(setpriv --bounding-set=$dropped --inh-caps=$dropped)
    fi
fi
if setarch -R true 2>/dev/null; then
    wineStart+=(setarch -R)
fi
