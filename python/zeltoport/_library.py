"""Finds the shared library and the programs that belong to it."""

import ctypes
import functools
import os
import pathlib
import shutil

_SONAME = "libzelto_port.so.4"


def _built(path):
    """The newest file of that name in a build of the source tree around this one, or None."""
    tree = pathlib.Path(__file__).resolve().parents[2]
    found = tree.glob(f"build/*/{path}") if (tree / "CMakePresets.json").exists() else ()
    return max(found, key=lambda file: file.stat().st_mtime, default=None)


@functools.cache
def _load():
    named = os.environ.get("ZELTO_PORT_LIBRARY")
    if named:
        return ctypes.CDLL(named)
    built = _built(f"plugins/zelto_port_dll/{_SONAME}")
    try:
        return ctypes.CDLL(str(built) if built else _SONAME)
    except OSError as error:
        raise OSError(
            f"{_SONAME} cannot be loaded: install the library, or name its file in "
            f"ZELTO_PORT_LIBRARY ({error})"
        ) from None


@functools.cache
def function(export):
    """An export by its symbol. Every one returns a signed 32-bit integer."""
    found = getattr(_load(), export)
    found.restype = ctypes.c_int32
    return found


def program(name):
    """The path of one of the two programs: named by ZELTO_NAVIGATOR_PROGRAM or
    ZELTO_PORT_PROGRAM, of the source tree's newest build, or on the path."""
    variable = {"zelto-navigator": "ZELTO_NAVIGATOR_PROGRAM", "zeltoport": "ZELTO_PORT_PROGRAM"}
    found = os.environ.get(variable[name]) or _built(f"tools/{name}/{name}") or shutil.which(name)
    if not found:
        raise FileNotFoundError(
            f"{name} is not to be found: install it, or name its file in {variable[name]}"
        )
    return str(found)
