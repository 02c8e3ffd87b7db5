#!/usr/bin/env python3
"""A recorded log through a real gpsd: what "gpspipe -r | zeltoport nmea -" makes the navigator's
position is gpsd's own.

    gpsd_test.py ZELTOPORT NAVIGATOR LOG      77: skipped, gpsd is not there
"""

import json
import math
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
PATIENCE = 20  # seconds
METRES_PER_DEGREE = 111_195


def listener():
    server = socket.create_server(("127.0.0.1", 0))
    server.settimeout(PATIENCE)
    return server, server.getsockname()[1]


def free_port():
    server, port = listener()
    server.close()
    return port


def await_port(port):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return
        time.sleep(0.02)
    raise TimeoutError("gpsd does not listen")


def positions(text):
    """Time and place of each report of gpsd."""
    reports = [json.loads(line) for line in text.splitlines() if '"TPV"' in line]
    return {report["time"]: (report["lat"], report["lon"]) for report in reports if "lat" in report}


def metres(a, b):
    east = (a[1] - b[1]) * math.cos(math.radians(a[0]))
    return math.hypot(a[0] - b[0], east) * METRES_PER_DEGREE


def run(port_program, navigator, log, folder):
    os.environ["ZELTO_DEVICE"] = f"{folder}/device"
    navigator = shutil.copy(navigator, folder)  # where its path is short enough
    subprocess.run([port_program, "device", "init", "--navigator", navigator], check=True)
    source, source_port = listener()
    gpsd_port = free_port()
    started = [subprocess.Popen([navigator], stdout=subprocess.PIPE, text=True),
               subprocess.Popen(["gpsd", "-N", "-n", "-S", str(gpsd_port),
                                 f"tcp://127.0.0.1:{source_port}"])]
    try:
        assert started[0].stdout.readline() == "ready\n"
        receiver, _ = source.accept()
        await_port(gpsd_port)
        address = f"127.0.0.1:{gpsd_port}"
        watcher = subprocess.Popen(["gpspipe", "-w", address], stdout=subprocess.PIPE, text=True)
        pipe = subprocess.Popen(["gpspipe", "-r", address], stdout=subprocess.PIPE)
        feed = subprocess.Popen([port_program, "nmea", "-"], stdin=pipe.stdout)
        started += [watcher, pipe, feed]
        time.sleep(0.5)  # both are clients of gpsd by now
        for line in open(log, "rb"):
            receiver.sendall(line.rstrip() + b"\r\n")
            time.sleep(0.005)
        time.sleep(0.5)
        watcher.terminate()
        pipe.terminate()
        taken = feed.wait(PATIENCE)
        known = positions(watcher.communicate(timeout=PATIENCE)[0])
        told = subprocess.run([port_program, "get", "position"], check=True, capture_output=True,
                              text=True).stdout
    finally:
        for process in reversed(started):
            process.terminate()
            process.wait(PATIENCE)
    assert taken == 0, f"zeltoport nmea - ended with {taken}"
    last = known[max(known)]
    apart = metres(last, [float(part) for part in told.split(",")[:2]])
    print(f"{len(known)} positions by gpsd, the last {last}; the navigator's {told.strip()}: "
          f"{apart:.3f} m apart")
    assert len(known) > 50 and apart < 1


def main():
    os.environ["PATH"] += ":/usr/sbin"
    missing = [name for name in ("gpsd", "gpspipe") if not shutil.which(name)]
    if missing:
        print("skipped: the packages gpsd and gpsd-clients are not there")
        return SKIPPED
    with tempfile.TemporaryDirectory(prefix="zelto") as folder:
        run(*sys.argv[1:4], folder)
    return 0


if __name__ == "__main__":
    sys.exit(main())
