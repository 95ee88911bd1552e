#!/usr/bin/env bash
# Renders docs/screenshots/status-window-windows.png: the real tessark-server.exe of the Windows
# build under Wine, on a Wine desktop (taskbar and notification area) on a virtual display
# (Xvfb), serving three players and an AWACS client over loopback; then ends it with
# File > Exit, as an operator would, and checks that the players were told "DISCON".
# Usage: docs/screenshots/make-windows-screenshot.sh [BUILD_DIR]   (default: build-windows)
# Needs: xvfb, xdotool, x11-utils, imagemagick, wine (and iproute2 for a loopback of its own).
set -euo pipefail
HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
ROOT=$(cd "$HERE/../.." && pwd)

if [ "${1:-}" != --inside ]; then
    BUILD=$(cd "${1:-$ROOT/build-windows}" && pwd)
    [ -f "$BUILD/tessark-server.exe" ] || { echo "build it first: scripts/setup windows" >&2; exit 2; }
    WORK=$(mktemp -d)
    trap 'rm -rf -- "$WORK"' EXIT
    # The program directory as the ZIP gives it.
    mkdir -p "$WORK/app/platforms" "$WORK/app/styles"
    cp "$BUILD"/tessark-server.exe "$BUILD"/Qt6{Core,Gui,Widgets,Network}.dll "$BUILD"/lib*.dll "$WORK/app/"
    cp "$BUILD/platforms/qwindows.dll" "$WORK/app/platforms/"
    cp "$BUILD/styles/qwindowsvistastyle.dll" "$WORK/app/styles/"
    inside=(xvfb-run -a -s "-screen 0 800x600x24" "$0" --inside "$WORK")
    if unshare -n true 2>/dev/null; then
        unshare -n sh -c 'ip link set lo up && exec "$@"' sh "${inside[@]}"
    else
        "${inside[@]}"
    fi
    exit
fi

WORK=$2
export WINEPREFIX=$WORK/prefix WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=
trap 'wineserver -k 2>/dev/null || true' EXIT
wineboot --init >/dev/null 2>&1
# Wine's own Tahoma and Marlett (window captions) where Windows programs look for fonts.
cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
wine explorer /desktop=Tessark,800x600 "$WORK/app/tessark-server.exe" &

connect() { # fd port
    for _ in $(seq 300); do { eval "exec $1<>/dev/tcp/127.0.0.1/$2"; } 2>/dev/null && return 0; sleep 0.1; done
    return 1
}
say() { printf '%s\0' "$2" >&"$1"; sleep 0.2; } # one message per write
connect 3 5555 && connect 4 5555 && connect 5 5555 && connect 6 5556
say 3 VALIDRViper
say 3 VERFOK
say 4 VALIDRIceman
say 4 VERNOK
say 5 VALIDRGoose
say 6 NAWACS
window=$(xdotool search --sync --name '^QUILLON v1\.1\.0b$' | head -1)
sleep 2 # let the window paint
import -window root "$HERE/status-window-windows.png"
echo "$HERE/status-window-windows.png"

# File > Exit.
X=$(xwininfo -id "$window" | sed -n 's/.*Absolute upper-left X: *//p')
Y=$(xwininfo -id "$window" | sed -n 's/.*Absolute upper-left Y: *//p')
xdotool mousemove $((X + 20)) $((Y + 34)) click 1
sleep 0.5
xdotool key Down Return
told=$(timeout 10 cat <&3 | tr '\0' '\n' | grep -c DISCON || true)
[ "$told" = 1 ] || { echo "the player was not told DISCON" >&2; exit 1; }
if (exec 7<>/dev/tcp/127.0.0.1/5555) 2>/dev/null; then echo "still listening after Exit" >&2; exit 1; fi
echo "File > Exit: the player was told DISCON and the server is gone"
