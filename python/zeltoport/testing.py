"""pytest fixtures: a device of the test run's own, and a navigator on it for each test.

In conftest.py:

    pytest_plugins = ["zeltoport.testing"]

A test then takes `navigator`; the module's calls go to it without the five seconds of a first
start. Options of zelto-navigator, its faults among them, by a mark:

    @pytest.mark.zelto_navigator("--silent")
    def test_gives_up(navigator): ...

A script of what is to be asked and answered, a file's path or the steps themselves, by another. The
test fails when the client did not keep to it:

    @pytest.mark.zelto_script([{"call": "goto", "fault": "late"}, {"call": "goto"}])
    def test_tries_again(navigator): ...

Each process has one device, so tests may run side by side in processes (pytest -n).
"""

import json
import os
import pathlib
import subprocess
import tempfile
import time

import pytest

import zeltoport

from . import _library

_PATIENCE = 10.0  # seconds for a process to do what takes it milliseconds
_COMPLAINT = "script: "  # how the navigator's lines about its script begin


def pytest_configure(config):
    config.addinivalue_line(
        "markers", "zelto_navigator(*options): options of zelto-navigator for this test"
    )
    config.addinivalue_line("markers", "zelto_script(script): a file's path, or a list of steps")


def _until(done, what):
    end = time.monotonic() + _PATIENCE
    while not done():
        if time.monotonic() > end:
            raise TimeoutError(what)
        time.sleep(0.002)


def _is_open():
    try:
        zeltoport.is_open()
    except zeltoport.ZeltoPortError:
        return False
    return True


class Navigator:
    """A running stand-in navigator.

    device: the device's folder. log: what the navigator printed, a file.
    """

    def __init__(self, device, options):
        self.device = device
        self.log = device / "navigator.log"
        self._journal = device / "journal.json"
        with open(self.log, "wb") as log:
            self._process = subprocess.Popen(
                [_library.program("zelto-navigator"), "--journal", str(self._journal), *options],
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=log,
            )
        try:
            _until(self._ready, f"the navigator opened no window; see {self.log}")
        except BaseException:
            self.stop()
            raise

    def _ready(self):
        if self._process.poll() is not None:
            raise RuntimeError(
                f"the navigator ended with status {self._process.returncode}: "
                + self.log.read_text(errors="replace")
            )
        return _is_open()

    def journal(self):
        """All requests so far: dictionaries with `bytes` (the request line), `reply` and more. The
        navigator writes an entry just after its reply; see wait_for."""
        if not self._journal.exists():
            return []
        lines = self._journal.read_text(encoding="utf-8").split("\n")[:-1]
        return [json.loads(line) for line in lines]

    def wait_for(self, request):
        """Returns the journal's entry of the request line (without its line feed), once it is there."""

        def entries():
            return [entry for entry in self.journal() if entry["bytes"] == request + "\n"]

        _until(entries, f"no request {request!r}; there are {[e['bytes'] for e in self.journal()]}")
        return entries()[-1]

    def close(self):
        """Closes the navigator's window; returns how its script was not kept, a list of lines."""
        subprocess.run([_library.program("zeltoport"), "close", "--window"], check=True)
        status = self._process.wait(_PATIENCE)
        lines = self.log.read_text(errors="replace").splitlines()
        return [line for line in lines if line.startswith(_COMPLAINT)] if status else []

    def stop(self):
        """Ends the navigator, whatever state it is in."""
        self._process.kill()
        self._process.wait()
        self._journal.unlink(missing_ok=True)


@pytest.fixture(scope="session")
def zelto_device():
    """The folder of this process's own device, the navigator registered; removed afterwards."""
    with tempfile.TemporaryDirectory(prefix="zelto") as folder:
        device = pathlib.Path(folder) / "device"
        os.environ["ZELTO_DEVICE"] = str(device)
        subprocess.run(
            [_library.program("zeltoport"), "device", "init", "--navigator",
             _short_path(_library.program("zelto-navigator"), folder)],
            check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
        )
        yield device


def _short_path(program, folder):
    """A link to the program by a path that the library takes, which is at most 99 characters."""
    link = pathlib.Path(folder) / "zelto-navigator"
    link.symlink_to(program)
    return str(link)


def _script_file(script, folder):
    if not isinstance(script, list):
        return str(script)
    file = folder / "script.json"
    file.write_text(json.dumps({"steps": script}), encoding="utf-8")
    return str(file)


@pytest.fixture
def navigator(request, zelto_device):
    """A fresh navigator; connected to, where no mark says how it behaves."""
    mark = request.node.get_closest_marker("zelto_navigator")
    script = request.node.get_closest_marker("zelto_script")
    options = list(mark.args) if mark else []
    if script:
        options += ["--script", _script_file(script.args[0], zelto_device)]
    running = Navigator(zelto_device, options)
    try:
        if not options:
            zeltoport.init()
        yield running
        broken = running.close() if script else []
        if broken:
            pytest.fail("the script was not kept:\n" + "\n".join(broken), pytrace=False)
    finally:
        running.stop()
