#!/usr/bin/env bash
# Hostile peers: the same squadron evening once without attackers and then once per attack,
# each against a fresh copy of the server (soak.sh), with one hostile peer at work for the
# whole traffic period. At the end the simulator SIGTERMs the server while every peer is still
# connected. Prints the runs side by side as a table, then one JSON line per run.
#
#   bench/squadron/hostile.sh SERVER_EXE [DURATION_S]      (20 s of traffic per run)
#
# Environment: ATTACKS (all of them, in the order below), NETNS (1: a private network
# namespace per run; vanish needs it), SERVER_FDS (256: the server's descriptor limit),
# BIG_SETUP_LINES (100000: the large setup of the bigread run), RATE (1: --attack-rate), CONF
# (the runs' tessark-server.conf, see below), OUT (a new directory under /tmp), SQUADRON and PIN
# as for soak.sh.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
[[ $# -ge 1 ]] || { sed -n '2,12p' "$0"; exit 2; }
server_exe="$1"
duration="${2:-20}"
read -r -a attacks <<< "${ATTACKS:-simnew validr errget nuls nawacs churn getlst-noread aispy-nul bigread silent one-address numbers names vanish}"
# The operator's settings of every run: the squadron's members come from addresses of their own
# (the simulator spreads them over 64), so one address may hold 3 connections of a port; a
# connection has 5 s to register and a peer that answers nothing is given up after 5 s, so that
# what the attacks leave behind shows within 20 s of traffic. CONF replaces them.
export SERVER_CONF="${CONF-$(printf '[access]\nper-address = 3\nidle-grace = 5\nsilence-limit = 5')}"
export NETNS="${NETNS:-1}" SERVER_FDS="${SERVER_FDS:-256}" SQUADRON_STOPS=1
big_lines="${BIG_SETUP_LINES:-100000}"
rate="${RATE:-1}"
results="${OUT:-$(mktemp -d /tmp/tessark-hostile.XXXXXX)}"
mkdir -p "$results"
: > "$results/runs.jsonl"

# The evening of soak.sh without its own misbehaving peers, its stalled AWACS client or the
# simulator churn (a hostile SIM client takes a slot, which moves the simulators' records);
# the players keep to the two small setups, so that only the hostile peer fetches the large one;
# every second a newcomer AWACS client checks that one can still join.
common=(--rogues none --stalled 0 --sim-churn-s 0 --player-setups 2 --newcomer-every 1 --report-every 5
        --attack-rate "$rate")

echo "hostile: ${duration}s per run, server descriptors $SERVER_FDS, results in $results"
for name in none "${attacks[@]}"; do
    lines=0; [[ $name == bigread ]] && lines="$big_lines"
    # A vanished peer's slot takes the silence limit and, for an AWACS client, 10 s more to come
    # back: that run lasts twice as long, with room for two hosts' worth of AWACS clients.
    run_s="$duration" extra=()
    [[ $name == vanish ]] && { run_s=$((duration * 2)); extra=(--awacs 38); }
    BIG_SETUP_LINES="$lines" OUT="$results/$name" "$here/soak.sh" "$server_exe" "$run_s" -- \
        "${common[@]}" "${extra[@]}" --attack "$name" > "$results/$name.log" 2>&1 || true
    json="$(grep -h '^{' "$results/$name/squadron.txt" 2>/dev/null | tail -1)"
    [[ -n $json ]] || json='{"clean":false}'
    server_exit="$(cat "$results/$name/server-exit.txt" 2>/dev/null || echo "not run")"
    said="$(grep -m2 -E 'terminate|what\(\)|bad_alloc|Abort|Segmentation' "$results/$name/server.out" 2>/dev/null |
            tr '\n' ' ' || true)"
    jq -c --arg run "$name" --arg exit "$server_exit" --arg said "$said" \
        '. + {run: $run, server_exit: $exit, server_said: $said}' <<< "$json" >> "$results/runs.jsonl"
    jq -r '"  \(.run): \(.server_exit); INDATA p99 \((.indata_p99_us // 0) / 1000) ms, peak RSS \(((.vmhwm_kb // 0) / 1024) | floor) MiB"' \
        <<< "$(tail -1 "$results/runs.jsonl")"
done

echo
echo "== hostile peers, ${duration}s of traffic per run (noise: compare with the baseline row only)"
jq -s -r '
  def ms: . / 1000 | . * 10 | round / 10;
  def mib: . / 1024 | . * 10 | round / 10;
  (map(select(.run == "none")) | first // {}) as $b |
  def fails:
    [ (if .server_alive != true then "died" else empty end),
      (if .server_exit != "exit 0" then "SIGTERM" else empty end),
      (if (.vmhwm_kb // 0) >= 65536 then "RSS" else empty end),
      (if (.missing_other // 1) > ($b.missing_other // 0) then "INDATA missing" else empty end),
      (if (.indata_per_s // 0) / (.awacs // 1) < 0.9 * ($b.indata_per_s // 0) / ($b.awacs // 1) then "INDATA rate" else empty end),
      (if (.indata_p99_us // 1e12) > 3 * ($b.indata_p99_us // 0) + 5000 then "p99" else empty end),
      (if (.replies_wrong // 1) + (.replies_missing // 1) > 0 then "replies" else empty end),
      (if (.injected // 1) > 0 then "injected" else empty end),
      (if (.notices_got // 0) < (.notices_owed // 1) then "DISCON" else empty end),
      (if (.newcomers_joined // 0) < (.newcomers_tried // 1) then "newcomers" else empty end),
      (if .run == "bigread" and ((.rounds_cut // 1) > 0 or (.rounds_whole // 0) == 0) then "cut replies" else empty end)
    ] | if length == 0 then "ok" else join(", ") end;
  def hostile:
    if .run == "none" then "-"
    elif .run == "bigread" then "replies whole \(.rounds_whole), cut \(.rounds_cut)"
    elif .run == "churn" then "\(.attack_connections) sessions, \(.attack_held_back) held back"
    elif (.run | IN("silent", "one-address", "numbers", "vanish")) then "\(.attack_connections) connections, \(.attack_closed_by_server) closed by the server"
    else "\(.attack_messages) cmds, \(.attack_writes) writes, \(.attack_held_back) held back" end;
  def stop: if .server_exit == "exit 0" then "exit 0, \(.shutdown_s) s" else .server_exit end;
  "| run | INDATA owed | received | missing | INDATA/s | p99 ms | replies ok/wrong/missing | peak RSS MiB | CPU s | fds peak | alive | SIGTERM | DISCON got/owed | newcomers in | injected | hostile peer | verdict |",
  "|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|",
  (.[] | "| \(if .run == "none" then "baseline" else .run end) | \(.owed) | \(.owed_received) | \(.missing_other)+\(.missing_split) | \(.indata_per_s) | \(.indata_p99_us | ms) | \(.replies_ok)/\(.replies_wrong)/\(.replies_missing) | \(.vmhwm_kb | mib) | \(.server_cpu_s) | \(.fds_peak) | \(.server_alive) | \(stop) | \(.notices_got)/\(.notices_owed) | \(.newcomers_joined)/\(.newcomers_tried) | \(.injected) | \(hostile) | \(fails) |")
' "$results/runs.jsonl"
if grep -q '"server_said":"[^"]' "$results/runs.jsonl"; then
    echo
    echo "server's last words:"
    jq -r 'select(.server_said != "") | "  \(.run): \(.server_said)"' "$results/runs.jsonl"
fi
echo
echo "runs (JSON, also in $results/runs.jsonl):"
cat "$results/runs.jsonl"
