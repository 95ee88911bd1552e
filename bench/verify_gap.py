#!/usr/bin/env python3
"""The longest gap in the flight picture while an operator checks a large setup.

    unshare -rn python3 bench/verify_gap.py [path/to/tessark-server] [GiB]

Copies the server into an empty directory beside a Wine prefix of its own whose installation holds
one sparse file of GiB gibibytes (2 by default), lists a setup naming that file, and starts the
server headless with that prefix. A player reports a position every 10 ms and an AWACS client
notes when each INDATA arrives. After two seconds the operator runs `setups verify 1`; two
seconds after it ends, the script prints how long the verify took and the longest gap between
INDATAs before, during and after it, then stops the server with SIGTERM. Run it in a network
namespace of its own: the server listens on the fixed ports.
"""
import os, shutil, signal, socket, subprocess, sys, tempfile, threading, time

exe = os.path.realpath(sys.argv[1] if len(sys.argv) > 1 else "build/tessark-server")
gib = float(sys.argv[2]) if len(sys.argv) > 2 else 2
work = tempfile.mkdtemp()
env = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(data)


def connect(port):
    for _ in range(500):
        try:
            return socket.create_connection(("127.0.0.1", port))
        except OSError:
            time.sleep(0.01)
    sys.exit(f"nothing listens on {port}")


try:
    prefix = os.path.join(work, "prefix")
    write(os.path.join(prefix, "system.reg"),
          b'WINE REGISTRY Version 2\n\n[Software\\\\Wow6432Node\\\\Microprose\\\\Falcon\\\\4.0] 1700000000\n'
          b'"baseDir"="C:\\\\Falcon4"\n"curTheater"="Korea KTO"\n')
    big = os.path.join(prefix, "drive_c", "Falcon4", "Data", "big.dat")
    write(big, b"")
    os.truncate(big, int(gib * 1024 ** 3))
    write(os.path.join(prefix, "drive_c", "Falcon4", "cobra.cfg"), b"set g_bFoo 1\r\n")
    program = os.path.join(work, "program")
    os.makedirs(program)
    shutil.copy(exe, program)
    setup = os.path.join(program, "Big.stp")
    write(setup, b"Big\r\nCURSET@COB\r\nCURTHE@Korea KTO\r\nCHKSUM@Data\\big.dat@0\r\n")
    write(os.path.join(program, "tessark.ini"),
          b"[SETUPLIST]\r\nNUM=1\r\n[SETUPLIST1]\r\nFNAME=" + setup.encode() + b"\r\n")
    env.update(WINEPREFIX=prefix, TMPDIR=work, XDG_RUNTIME_DIR=work)
    server = subprocess.Popen([os.path.join(program, os.path.basename(exe)), "--dir", program], env=env,
                              stderr=subprocess.DEVNULL)
    ai_spy = connect(5554)  # the last port opened
    awacs = connect(5556)
    awacs.sendall(b"NAWACS\0")
    player = connect(5555)
    player.sendall(b"VALIDRViper\0")
    arrivals = []
    done = threading.Event()

    def listen():
        pending = b""
        awacs.settimeout(0.2)
        while not done.is_set():
            try:
                chunk = awacs.recv(65536)
            except socket.timeout:
                continue
            if not chunk:
                return
            now = time.perf_counter()
            pending += chunk
            *messages, pending = pending.split(b"\0")
            arrivals.extend(now for m in messages if m.startswith(b"INDATA"))

    def report():
        n = 0
        while not done.is_set():
            player.sendall(b"F4LOCA%d\0" % n)
            n += 1
            time.sleep(0.01)

    threads = [threading.Thread(target=listen), threading.Thread(target=report)]
    for t in threads:
        t.start()
    time.sleep(2)
    began = time.perf_counter()
    verify = subprocess.run([os.path.join(program, os.path.basename(exe)), "--dir", program, "setups", "verify",
                             "1"], env=env, capture_output=True, text=True)
    ended = time.perf_counter()
    time.sleep(2)
    done.set()
    for t in threads:
        t.join()
    server.send_signal(signal.SIGTERM)
    server.wait(timeout=30)

    # Gaps that overlap the window, the one across its start and end included.
    def longest(a, b):
        gaps = [y - x for x, y in zip(arrivals, arrivals[1:]) if y >= a and x <= b]
        return max(gaps, default=float("nan")) * 1000

    first, last = arrivals[0], arrivals[-1]
    print(f"verify of a {gib:g} GiB file: {ended - began:.2f} s, status {verify.returncode}")
    print(f"INDATA received: {len(arrivals)}")
    print(f"longest gap between INDATAs: before {longest(first, began):.0f} ms, "
          f"during {longest(began, ended):.0f} ms, after {longest(ended, last):.0f} ms")
finally:
    shutil.rmtree(work, ignore_errors=True)
