#!/usr/bin/env bash
# run.sh - the setup wizard's checksum throughput against plain reading (cat > /dev/null) of the
# same page-cached files. Target: the checksum at >= 80% of plain reading.
#
# Usage: bench/crc/run.sh [BUILD_DIR]        (default: build; needs the crc_bench target built)
# Knobs: REPS=5 MIB=512 (size of the file set: a few large files, some medium, many small)
#        CRC_DATA_DIR= (keep and reuse the file set there instead of a fresh temp dir)
set -eu
export LC_ALL=C
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
BUILD=${1:-$ROOT/build}
BIN=$BUILD/bench/crc/crc_bench
REPS=${REPS:-5}
MIB=${MIB:-512}
[ -x "$BIN" ] || { echo "build it first: make -C $BUILD crc_bench" >&2; exit 2; }

OWN=""
if [ -n "${CRC_DATA_DIR:-}" ]; then DATA=$CRC_DATA_DIR; mkdir -p "$DATA"; else OWN=$(mktemp -d); DATA=$OWN; fi
trap '[ -n "$OWN" ] && rm -rf -- "$OWN"' EXIT

# Half the bytes in 4 large files, a quarter in 16 medium ones, a quarter in 1 MiB files.
if [ ! -f "$DATA/.complete-$MIB" ]; then
    rm -f "$DATA"/*.bin
    big=$((MIB / 8)); med=$((MIB / 64)); small=$((MIB / 4))
    for i in 1 2 3 4; do head -c $((big << 20)) /dev/urandom >"$DATA/big$i.bin"; done
    for i in $(seq 1 16); do head -c $((med << 20)) /dev/urandom >"$DATA/med$i.bin"; done
    for i in $(seq 1 "$small"); do head -c $((1 << 20)) /dev/urandom >"$DATA/small$i.bin"; done
    touch "$DATA/.complete-$MIB"
fi
mapfile -t FILES < <(find "$DATA" -name '*.bin' -type f | sort)
BYTES=$(cat "${FILES[@]}" | wc -c)
cat "${FILES[@]}" >/dev/null # into the page cache
echo "== ${#FILES[@]} files, $BYTES bytes, REPS=$REPS, $(nproc) CPUs"

cat_rates=(); read_rates=(); crc_rates=()
for ((r = 0; r < REPS; r++)); do
    t0=$(date +%s.%N); cat "${FILES[@]}" >/dev/null; t1=$(date +%s.%N)
    cat_rates+=("$(awk -v a="$t0" -v b="$t1" -v n="$BYTES" 'BEGIN { printf "%.3f", n / (b - a) / 1e9 }')")
    read_rates+=("$("$BIN" --plain "${FILES[@]}" | sed 's/.*GBps=\([0-9.]*\).*/\1/')")
    crc_rates+=("$("$BIN" "${FILES[@]}" | sed 's/.*GBps=\([0-9.]*\).*/\1/')")
done
median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
mc=$(median "${cat_rates[@]}"); mr=$(median "${read_rates[@]}"); mk=$(median "${crc_rates[@]}")
echo "cat > /dev/null : $mc GB/s  [${cat_rates[*]}]"
echo "same reads, no checksum : $mr GB/s  [${read_rates[*]}]"
echo "wizard checksum : $mk GB/s  [${crc_rates[*]}]"
awk -v c="$mc" -v r="$mr" -v k="$mk" 'BEGIN { printf "crc: checksum at %.0f%% of cat, %.0f%% of the same reads without it\n", 100 * k / c, 100 * k / r }'
