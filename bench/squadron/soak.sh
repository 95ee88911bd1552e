#!/usr/bin/env bash
# Soak run: a copy of the given server in a fresh temporary directory (two setups, logging
# off, or on with LOG=1), started headless, a squadron's evening against it for DURATION
# seconds, then SIGTERM and a summary: memory and descriptors over time, per-peer
# completeness, and for LOG=1 the growth of the traffic log.
#
#   bench/squadron/soak.sh SERVER_EXE [DURATION_S] [-- squadron options...]
#
# Environment: LOG=0|1 (0), SQUADRON=path of the squadron binary (the build next to this
# script), OUT=directory for the run's files (a new one under /tmp), PIN=1 pins the server
# to CPU 0 and the simulator to CPU 1, PORT_WAIT=seconds to wait for busy ports (600),
# NETNS=1 runs server and simulator in a private network namespace (needs root or user
# namespaces), so other runs on the machine's ports 5554-5557 are no obstacle; KEEP_LOG=1
# keeps the whole traffic log of a LOG=1 run (only its first and last lines otherwise);
# SERVER_FDS=n starts the server with at most n descriptors; BIG_SETUP_LINES=n adds a third
# setup of n lines; SQUADRON_STOPS=1 lets the simulator send the SIGTERM at the end, while its
# peers are still connected (it counts the DISCON they get); SERVER_CONF=text becomes the run's
# tessark-server.conf. The server's end is written to server-exit.txt in the run's directory.
set -euo pipefail

if [[ ${NETNS:-0} == 1 && -z ${SOAK_IN_NETNS:-} ]]; then
    exec unshare -n env SOAK_IN_NETNS=1 bash -c 'ip link set lo up && exec "$0" "$@"' "$0" "$@"
fi

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
[[ $# -ge 1 ]] || { sed -n '2,16p' "$0"; exit 2; }
server_exe="$(realpath "$1")"; shift
duration=300
if [[ $# -ge 1 && $1 != -- ]]; then duration="$1"; shift; fi
[[ ${1:-} == -- ]] && shift
extra=("$@")

LOG="${LOG:-0}"
SQUADRON="${SQUADRON:-$here/../../build/bench/squadron/squadron}"
PIN="${PIN:-0}"
PORT_WAIT="${PORT_WAIT:-600}"
[[ -x $server_exe ]] || { echo "soak: no server executable at $server_exe" >&2; exit 2; }
[[ -x $SQUADRON ]] || { echo "soak: build the squadron target first ($SQUADRON)" >&2; exit 2; }

ports_busy() { ss -ltn | awk '{print $4}' | grep -Eq ':(5554|5555|5556|5557)$'; }
waited=0
while ports_busy; do
    if (( waited >= PORT_WAIT )); then echo "soak: ports 5554-5557 still busy after ${PORT_WAIT}s" >&2; exit 3; fi
    (( waited == 0 )) && echo "soak: ports 5554-5557 are busy (another run?); waiting" >&2
    sleep 5; waited=$((waited + 5))
done

dir="${OUT:-$(mktemp -d /tmp/tessark-soak.XXXXXX)}"
mkdir -p "$dir"
cp "$server_exe" "$dir/tessark-server"
printf 'Evening Sortie\r\nCURSET@BMS\r\nCURTHE@Theater A\r\nCHKSUM@data\\file1.dat@1234\r\nCHKSUM@data\\sub\\file2.dat@5678\r\nCONFIG@entry_one@1\r\nCONFIG@entry_two@0\r\n' > "$dir/Evening Sortie.stp"
printf 'Night Ops\r\nCURSET@BMS\r\nCHKSIM\r\nCURTHE@Theater B\r\nCHKSUM@campaign\\save.cam@99\r\nCONFIG@entry_one@2\r\n' > "$dir/Night Ops.stp"
setups=("$dir/Evening Sortie.stp" "$dir/Night Ops.stp")
if [[ ${BIG_SETUP_LINES:-0} -gt 0 ]]; then   # a large reply: one player's fetch passes the output cap
    { printf 'Big Sortie\r\nCURSET@BMS\r\nCURTHE@Theater A\r\n'
      awk -v n="$BIG_SETUP_LINES" 'BEGIN { for (i = 3; i <= n; i++) printf "CHKSUM@data\\terrain\\tile%06d.dat@1234567890\r\n", i }'
    } > "$dir/Big Sortie.stp"
    setups+=("$dir/Big Sortie.stp")
fi
[[ -n ${SERVER_CONF:-} ]] && printf '%s\n' "$SERVER_CONF" > "$dir/tessark-server.conf"
{ printf '[SETUPLIST]\nNUM=%d\n' "${#setups[@]}"
  for i in "${!setups[@]}"; do printf '[SETUPLIST%d]\nFNAME=%s\n' $((i + 1)) "${setups[$i]}"; done
  printf '[DEBUG]\nLOG=%s\n' "$LOG"
} > "$dir/tessark.ini"

pin_server=() pin_sim=()
if [[ $PIN == 1 ]]; then pin_server=(taskset -c 0); pin_sim=(taskset -c 1); fi
fd_limit=(); [[ -n ${SERVER_FDS:-} ]] && fd_limit=(prlimit --nofile="$SERVER_FDS")
(cd "$dir" && exec "${fd_limit[@]}" env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM TMPDIR="$dir" "${pin_server[@]}" ./tessark-server) \
    > "$dir/server.out" 2>&1 &
pid=$!
for _ in $(seq 100); do
    ss -ltn | awk '{print $4}' | grep -Eq ':5557$' && break
    kill -0 "$pid" 2>/dev/null || { echo "soak: the server did not start:" >&2; cat "$dir/server.out" >&2; exit 4; }
    sleep 0.1
done

# With logging on, the traffic log's size every second: it should grow steadily.
logger_pid= steps_pid=
if [[ $LOG == 1 ]]; then
    ( start=$(date +%s.%N)
      while kill -0 "$pid" 2>/dev/null; do
          printf '%s %s\n' "$(echo "$(date +%s.%N) - $start" | bc)" \
              "$(stat -c %s "$dir/TessarkSrvLog.txt" 2>/dev/null || echo 0)"
          sleep 1
      done ) > "$dir/log-growth.txt" &
    logger_pid=$!
    # Halfway through, 5 s of the log's size every 20 ms: buffered writes show as a few large
    # steps instead of a crawl of one line at a time.
    ( sleep "$(echo "$duration / 2" | bc)"
      for _ in $(seq 250); do stat -c %s "$dir/TessarkSrvLog.txt" 2>/dev/null || echo 0; sleep 0.02; done ) > "$dir/log-steps.txt" &
    steps_pid=$!
fi

rogues=all; [[ $LOG == 1 ]] && rogues=safe   # lone NULs end a logging server by design
echo "soak: server pid $pid in $dir, LOG=$LOG, ${duration}s"
set +e
stop=(); [[ ${SQUADRON_STOPS:-0} == 1 ]] && stop=(--stop-server)
"${pin_sim[@]}" "$SQUADRON" --duration "$duration" --server-pid "$pid" --rogues "$rogues" --stalled 1 \
    --report-every 30 "${stop[@]}" "${extra[@]}" | tee "$dir/squadron.txt"
sim_status=${PIPESTATUS[0]}
set -e

[[ ${SQUADRON_STOPS:-0} == 1 ]] || kill -TERM "$pid" 2>/dev/null || true
server_status=gone
for _ in $(seq 150); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
if kill -0 "$pid" 2>/dev/null; then kill -KILL "$pid"; server_status="hung on SIGTERM (killed)"; fi
wait "$pid" 2>/dev/null && server_status="exit 0" || { rc=$?; [[ $server_status == gone ]] && server_status="exit $rc"; }
echo "$server_status" > "$dir/server-exit.txt"
[[ -n $logger_pid ]] && wait "$logger_pid" 2>/dev/null || true
[[ -n $steps_pid ]] && wait "$steps_pid" 2>/dev/null || true

json="$(grep '^{' "$dir/squadron.txt" | tail -1)"
echo
echo "== soak summary ($dir)"
echo "$json" | jq -r '"server RSS: start \(.rss_start_kb/1024|floor) MiB, after warm-up \(.rss_warm_kb/1024*10|floor/10) MiB, peak \(.rss_peak_kb/1024*10|floor/10) MiB, end \(.rss_end_kb/1024*10|floor/10) MiB",
  "server fds: start \(.fds_start), peak \(.fds_peak), end \(.fds_end); alive to the end: \(.server_alive)",
  "relay: owed \(.owed), received \(.owed_received), missing by split/merged reads \(.missing_split), other \(.missing_other), dup/reorder \(.dup_reorder)",
  "player replies: ok \(.replies_ok), wrong \(.replies_wrong), missing \(.replies_missing), excused \(.replies_excused)",
  "anomalies: corrupt \(.corrupt) unannounced \(.unannounced) wrong-number \(.wrong_number) unexpected-close \(.unexpected_close) connect-failed \(.connect_failed)",
  "INDATA latency p50 \(.indata_p50_us) us, p99 \(.indata_p99_us) us, max \(.indata_max_us) us; \(.indata_per_s) INDATA/s",
  "simulator verdict: \(if .clean then "clean" else "NOT CLEAN" end)"'
echo "server on SIGTERM: $server_status"
if [[ -s $dir/TessarkSrvErrorLog.txt ]]; then echo "error log:"; tail -5 "$dir/TessarkSrvErrorLog.txt"; else echo "error log: empty"; fi
if [[ $LOG == 1 && -s $dir/log-growth.txt ]]; then
    # Growth per second while the simulator ran.
    lines=$(wc -l < "$dir/TessarkSrvLog.txt")
    awk -v dur="$duration" -v lines="$lines" '
        { if (NR > 1 && $1 < dur) { d = $2 - prev; if (d <= 0) flat++; if (d > maxd) maxd = d; if (mind == "" || d < mind) mind = d }
          prev = $2; t = $1 }
        END { printf "traffic log: %.1f MiB, %d lines in %.0f s (%.0f KiB/s); 1-s growth min %.0f KiB max %.0f KiB, seconds without growth %d\n",
                     prev / 1048576, lines, t, prev / 1024 / t, mind / 1024, maxd / 1024, flat
            }' "$dir/log-growth.txt"
    awk 'NR > 1 && $1 != prev { print $1 - prev } { prev = $1 }' "$dir/log-steps.txt" | sort -n |
        awk '{ d[NR] = $1 } END { if (!NR) { print "traffic log: no growth in the 5-s close look"; exit }
             printf "traffic log, 5-s close look: %d steps, median %.0f KiB, smallest %.0f KiB (one line is about 0.1 KiB)\n",
                    NR, d[int((NR + 1) / 2)] / 1024, d[1] / 1024 }'
    if [[ ${KEEP_LOG:-0} != 1 ]]; then   # it can reach a gigabyte; keep its ends
        { head -20 "$dir/TessarkSrvLog.txt"; echo ...; tail -20 "$dir/TessarkSrvLog.txt"; } > "$dir/TessarkSrvLog.ends.txt"
        rm -f "$dir/TessarkSrvLog.txt"
    fi
fi
[[ $sim_status == 0 && $server_status == "exit 0" ]]
