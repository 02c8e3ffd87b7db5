#!/usr/bin/env python3
"""Who may see the navigator's page, and what becomes of those who go away.

    view_test.py ZELTOPORT NAVIGATOR
"""

import http.client
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile


def status(port, method, path, **headers):
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=10)
    body = headers.pop("body", None)
    connection.putrequest(method, path, skip_host="Host" in headers)
    for name, value in headers.items():
        connection.putheader(name, value)
    if body is not None:
        connection.putheader("Content-Length", str(len(body)))
    connection.endheaders(body.encode() if body else None)
    return connection.getresponse().status


def check(zeltoport, navigator, port, token):
    home, acts = f"/?token={token}", f"/acts?token={token}"
    act = lambda **members: {"body": json.dumps(members)}
    cases = [
        (200, "GET", home, {}),
        (200, "GET", home, {"Host": f"localhost:{port}", "Origin": f"http://localhost:{port}"}),
        (403, "GET", "/", {}),
        (403, "GET", f"/?token={token[:-1]}", {}),
        (403, "GET", f"/news?token={'0' * 32}", {}),
        (403, "GET", home, {"Host": "evil"}),
        (403, "GET", home, {"Host": f"evil:{port}"}),
        (403, "GET", home, {"Origin": "http://evil"}),
        (403, "GET", home, {"Origin": "null"}),
        (403, "POST", "/acts", act(act="move", latitude=1, longitude=2)),
        (404, "GET", f"/etc/passwd?token={token}", {}),
        (400, "POST", acts, {"body": "{"}),
        (400, "POST", acts, act(act="dance")),
        (400, "POST", acts, act(act="move", latitude=91, longitude=2)),
        (400, "POST", acts, act(act="faults", faults={"delay": -1})),
        (413, "POST", acts, {"body": " " * 100_000}),
        (204, "POST", acts, act(act="move", latitude=1, longitude=2)),
    ]
    for wanted, method, path, headers in cases:
        got = status(port, method, path, **dict(headers))
        assert got == wanted, f"{got} instead of {wanted}: {method} {path} {headers}"
    # Browsers that go away while they are told the news, more than may be there at a time.
    for _ in range(20):
        with socket.create_connection(("127.0.0.1", port)) as gone:
            gone.sendall(f"GET /news?token={token} HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\n\r\n".encode())
            assert b"HTTP/1.1 " in gone.recv(100)
        subprocess.run([zeltoport, "--quiet", "goto", "1", "2"], check=True)
    other = subprocess.run([navigator, "--view", str(port)], capture_output=True, text=True,
                           env={**os.environ, "ZELTO_DEVICE": os.environ["ZELTO_DEVICE"] + "2"})
    assert subprocess.run([navigator, "--view", "65536"], stderr=subprocess.DEVNULL).returncode == 2
    assert other.returncode == 1 and "another program may be using it" in other.stderr, other.stderr


def main():
    zeltoport, navigator = sys.argv[1:3]
    with tempfile.TemporaryDirectory(prefix="zelto") as folder:
        navigator = shutil.copy(navigator, folder)  # where its path is short enough
        for device in (f"{folder}/device2", f"{folder}/device"):
            os.environ["ZELTO_DEVICE"] = device
            subprocess.run([zeltoport, "device", "init", "--navigator", navigator], check=True,
                           stdout=subprocess.DEVNULL)
        with subprocess.Popen([navigator, "--view"], stdout=subprocess.PIPE, text=True) as process:
            try:
                said = process.stdout.readline() + process.stdout.readline()
                link = re.search(r"view http://127\.0\.0\.1:(\d+)/\?token=([0-9a-f]{32})\n", said)
                check(zeltoport, navigator, int(link[1]), link[2])
                subprocess.run([zeltoport, "--quiet", "close"], check=True)
                assert process.wait(10) == 0
            finally:
                process.kill()


if __name__ == "__main__":
    main()
