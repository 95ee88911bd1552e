#!/usr/bin/env python3
"""Start-to-listening time and idle memory of the headless server.

    bench/startup.py [path/to/tessark-server] [runs]      (IDLE=0: skip the memory reading)

Each run copies the server into an empty directory, starts it headless, polls the AI Spy port
(5554, the last listener opened) until it accepts, and notes the elapsed time; then reads the
server's resident memory after 2 s idle (first run only) and stops it with SIGTERM.
"""
import os, shutil, signal, socket, statistics, subprocess, sys, tempfile, time

exe = os.path.realpath(sys.argv[1] if len(sys.argv) > 1 else "build/tessark-server")
runs = int(sys.argv[2]) if len(sys.argv) > 2 else 10
env = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
times, rss = [], None
for run in range(runs):
    d = tempfile.mkdtemp()
    shutil.copy(exe, d)
    env["TMPDIR"] = d
    start = time.perf_counter()
    proc = subprocess.Popen([os.path.join(d, os.path.basename(exe))], cwd=d, env=env, stderr=subprocess.DEVNULL)
    while True:
        try:
            socket.create_connection(("127.0.0.1", 5554), timeout=1).close()
            break
        except OSError:
            time.sleep(0.0005)
    times.append((time.perf_counter() - start) * 1000)
    if run == 0 and os.environ.get("IDLE", "1") != "0":
        time.sleep(2)
        with open(f"/proc/{proc.pid}/status") as f:
            rss = next(int(l.split()[1]) for l in f if l.startswith("VmRSS"))
    proc.send_signal(signal.SIGTERM)
    proc.wait()
    shutil.rmtree(d)
print(f"start_to_listening_ms median {statistics.median(times):.1f} min {min(times):.1f} max {max(times):.1f} (n={runs})")
if rss is not None:
    print(f"idle_rss_mib {rss / 1024:.1f}")
