#!/usr/bin/env bash
# Slow consumer: 48 players stream F4LOCA to 48 AWACS clients. In the "stalled" runs one of
# the AWACS clients stops reading after 2 s; the other 47 should see the same latency and
# throughput as in the "all read" runs, and the server's memory should stay bounded by its
# 4 MiB output cap per connection. Runs alternate (all, stalled, all, stalled...), each with
# a fresh server, and the medians are compared.
#
#   bench/squadron/slow-consumer.sh SERVER_EXE [SECONDS_PER_RUN]
#
# Environment: ROUNDS (2), HZ (20: F4LOCA per player per second), PAYLOAD (200 bytes),
# PIN (1: server on CPU 0, simulator on CPU 1), SQUADRON (as for soak.sh).
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
[[ $# -ge 1 ]] || { sed -n '2,12p' "$0"; exit 2; }
server_exe="$1"
seconds="${2:-60}"
ROUNDS="${ROUNDS:-2}" HZ="${HZ:-20}" PAYLOAD="${PAYLOAD:-200}"
export PIN="${PIN:-1}"
results="$(mktemp -d /tmp/tessark-slow.XXXXXX)"

common=(--players 48 --sims 0 --no-ai --churn-per-min 0 --rogues none --revalidate-s 0 --sim-churn-s 0
        --f4-hz "$HZ,$HZ" --payload "$PAYLOAD" --measure-after 10 --report-every 1000 --quiet)
for round in $(seq "$ROUNDS"); do
    for mode in all stalled; do
        if [[ $mode == all ]]; then shape=(--awacs 48 --stalled 0); else shape=(--awacs 47 --stalled 1 --stall-after 2); fi
        OUT="$results/$mode-$round" "$here/soak.sh" "$server_exe" "$seconds" -- "${common[@]}" "${shape[@]}" \
            > "$results/$mode-$round.log" 2>&1 || echo "slow-consumer: $mode run $round not clean (see $results/$mode-$round.log)" >&2
        grep '^{' "$results/$mode-$round/squadron.txt" | tail -1 | jq -c --arg mode "$mode" '. + {mode: $mode}' >> "$results/runs.jsonl"
        jq -r '"\(.mode) run: p50 \(.indata_p50_us) us, p99 \(.indata_p99_us) us, \(.indata_per_s) INDATA/s to the readers, server peak RSS \(.rss_peak_kb/1024*10|floor/10) MiB, missing \(.missing_other)+\(.missing_split)"' \
            <<< "$(tail -1 "$results/runs.jsonl")"
    done
done

echo
echo "== slow consumer (medians of $ROUNDS runs each, ${seconds}s, 48 players x ${HZ} Hz, payload ${PAYLOAD} B; raw: $results/runs.jsonl)"
jq -s -r '
  def median: sort | if length % 2 == 1 then .[length/2|floor] else (.[length/2-1] + .[length/2]) / 2 end;
  def m(f): map(f) | median;
  (map(select(.mode == "all"))) as $a | (map(select(.mode == "stalled"))) as $s |
  "readers p50 latency: \($a|m(.indata_p50_us)) us all reading, \($s|m(.indata_p50_us)) us with one stalled",
  "readers p99 latency: \($a|m(.indata_p99_us)) us all reading, \($s|m(.indata_p99_us)) us with one stalled",
  "readers throughput:  \($a|m(.indata_per_s)) INDATA/s all reading, \($s|m(.indata_per_s)) INDATA/s with one stalled (47 readers instead of 48)",
  "per reader:          \($a|m(.indata_per_s/48)|floor) INDATA/s vs \($s|m(.indata_per_s/47)|floor) INDATA/s",
  "server peak RSS:     \($a|m(.rss_peak_kb/1024)*10|floor/10) MiB all reading, \($s|m(.rss_peak_kb/1024)*10|floor/10) MiB with one stalled",
  "missing (other):     \($a|map(.missing_other)|add) all reading, \($s|map(.missing_other)|add) with one stalled"' "$results/runs.jsonl"
