#!/usr/bin/env bash
# Renders docs/screenshots/*.png under a virtual display (Xvfb): the status window with three
# players (verified, failed, not yet verified) and two pages of the Add Setup wizard.
# Usage: docs/screenshots/make-screenshots.sh [BUILD_DIR]   (default: build, already built)
set -eu
HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
ROOT=$(cd "$HERE/../.." && pwd)
BUILD=$(cd "${1:-$ROOT/build}" && pwd)
[ -f "$BUILD/libtessark_core.a" ] || { echo "build the server first (make -C $BUILD)" >&2; exit 2; }
SHOTS_BUILD=$BUILD/screenshots
cmake -S "$HERE" -B "$SHOTS_BUILD" -DTESSARK_SOURCE_DIR="$ROOT" -DTESSARK_BUILD_DIR="$BUILD" >/dev/null
make -C "$SHOTS_BUILD" --no-print-directory -s
unset QT_QPA_PLATFORM WAYLAND_DISPLAY
xvfb-run -a -s "-screen 0 1024x768x24" "$SHOTS_BUILD/screenshots" "$HERE"
ls -1 "$HERE"/*.png
