#!/usr/bin/env python3
"""Peak memory of the headless server starting with one listed setup of nothing but line feeds.

    unshare -rn python3 bench/big_setup.py [path/to/tessark-server] [MiB] [cap]

Copies the server into an empty directory with a tessark.ini listing one setup of MiB mebibytes
(16 by default) of bare line feeds after its name line, and, when cap is given, a settings file
raising [files] max-setup-size to it ("64M"). Starts it headless, waits for the AI Spy port (the
last listener opened, so the catalogue is loaded), prints the peak resident memory (VmHWM) and
stops it with SIGTERM. Run it in a network namespace of its own: it listens on the fixed ports.
"""
import os, shutil, signal, socket, subprocess, sys, tempfile, time

exe = os.path.realpath(sys.argv[1] if len(sys.argv) > 1 else "build/tessark-server")
mib = float(sys.argv[2]) if len(sys.argv) > 2 else 16
cap = sys.argv[3] if len(sys.argv) > 3 else None
env = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
d = tempfile.mkdtemp()
try:
    shutil.copy(exe, d)
    env["TMPDIR"] = d
    setup = os.path.join(d, "Big.stp")
    with open(setup, "wb") as f:
        f.write(b"Big\r\n" + b"\n" * int(mib * 1024 * 1024))
    with open(os.path.join(d, "tessark.ini"), "wb") as f:
        f.write(b"[SETUPLIST]\r\nNUM=1\r\n[SETUPLIST1]\r\nFNAME=" + setup.encode() + b"\r\n")
    if cap:
        with open(os.path.join(d, "tessark-server.conf"), "w") as f:
            f.write(f"[files]\nmax-setup-size = {cap}\n")
    start = time.perf_counter()
    proc = subprocess.Popen([os.path.join(d, os.path.basename(exe))], cwd=d, env=env,
                            stderr=subprocess.PIPE, text=True)
    while True:
        try:
            socket.create_connection(("127.0.0.1", 5554), timeout=1).close()
            break
        except OSError:
            if proc.poll() is not None:
                sys.exit("the server ended: " + proc.stderr.read())
            time.sleep(0.005)
    ready_ms = (time.perf_counter() - start) * 1000
    with open(f"/proc/{proc.pid}/status") as f:
        hwm = next(int(l.split()[1]) for l in f if l.startswith("VmHWM"))
    proc.send_signal(signal.SIGTERM)
    _, err = proc.communicate()
    refused = "too large" in err
    print(f"setup_mib {mib:g} cap {cap or 'default'} ready_ms {ready_ms:.0f} peak_rss_mib {hwm / 1024:.1f} "
          f"refused {refused}")
finally:
    shutil.rmtree(d)
