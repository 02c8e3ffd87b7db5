"""Remote control of a navigator application: the 26 functions of libzelto_port, with Python's texts.

Call init() once, then the rest in any order:

    import zeltoport

    zeltoport.init()
    zeltoport.goto(42.8467, -2.6727)
    print(zeltoport.get_string("destination"))

One function an export, named like it in lower case. Texts are str, in UTF-8 on their way whatever
the form; the two exports that convert from the system's code page (open_file_a, message_box_a) take
what code page 1252 has. A result other than 0 raises ZeltoPortError; version() has no result and
returns the interface's version. What each call sends and how long it may wait is told in
zelto_port.h.

The device is the folder that the environment variable ZELTO_DEVICE names at the first call; a
process keeps it from then on. The library is the one that ZELTO_PORT_LIBRARY names, else the
installed one, else that of a build in the source tree around this file.

Thread safety: any thread; calls take turns, since the connection is one per process.
"""

import ctypes
import threading

from . import _library
from ._results import MEANINGS

_TEXT_SIZE = 1000  # the longest reply that the library reads, in bytes, where it sets the limit
_SYSTEM_CODE_PAGE = "cp1252"


class ZeltoPortError(Exception):
    """A result other than 0.

    number: the result code. export: the function of the library that returned it.
    meaning: the code in words; a number that is none of the library's own is the navigator's or a
    system error, and the words say so.
    """

    def __init__(self, export, number):
        self.export = export
        self.number = number
        self.meaning = meaning(number)
        super().__init__(f"{export}: {number}, {self.meaning}")

    def __reduce__(self):
        return type(self), (self.export, self.number)


def meaning(number):
    """A result code in words."""
    if number in MEANINGS:
        return MEANINGS[number]
    if number < 0:
        return f"system error {-number} at the second attempt to write, or the navigator's number"
    return "the navigator's own number, or a system error"


_turn = threading.Lock()


def _call(export, *arguments):
    """Calls an export, one caller at a time, and returns its number."""
    function = _library.function(export)
    with _turn:
        return function(*arguments)


def _check(export, *arguments):
    result = _call(export, *arguments)
    if result != 0:
        raise ZeltoPortError(export, result)


def _whole(text):
    if "\0" in text:
        raise ValueError("a text cannot hold a NUL, which would end it")
    return text


def _wide(text):
    """UTF-16 units with a NUL behind them, as the library takes them; None is a null text."""
    if text is None:
        return None
    units = _whole(text).encode("utf-16-le", "surrogatepass") + b"\0\0"
    return (ctypes.c_uint16 * (len(units) // 2)).from_buffer_copy(units)


def _narrow(text, encoding="utf-8"):
    return None if text is None else _whole(text).encode(encoding)


def _number(value):
    """A signed 32-bit integer; ctypes alone would cut a larger one silently."""
    if not -(2**31) <= value < 2**31:
        raise ValueError(f"{value} does not fit in 32 bits")
    return ctypes.c_int32(value)


def _double(value):
    return ctypes.c_double(value)


# ---- Finding, starting, showing and closing the navigator ----------------------------------------


def init():
    """Finds the navigator, starts it if need be (some five seconds), and makes the first contact."""
    _check("ZeltoNavPort_Init")


def is_open():
    """Looks for the navigator's window; raises with number 6 when there is none."""
    _check("ZeltoNavPort_IsOpen")


def version():
    """The version of the interface, 4."""
    return _call("ZeltoNavPort_Version")


def show():
    """Shows the navigator's window."""
    _check("ZeltoNavPort_Show")


def minimize():
    """Minimises the navigator's window."""
    _check("ZeltoNavPort_Minimize")


def close_zelto_nav():
    """Asks the navigator to end."""
    _check("ZeltoNavPort_CloseZeltoNav")


# ---- Questions and messages ----------------------------------------------------------------------


def get_string(request, size=_TEXT_SIZE):
    """Asks for a text. size: the largest reply taken, in bytes, the two of its kind included."""
    if not 0 <= size < 2**31:
        raise ValueError(f"a reply of {size} bytes cannot be taken")
    destination = ctypes.create_string_buffer(size + 16)
    _check("ZeltoNavPort_GetString", _narrow(request), ctypes.c_uint32(size), destination)
    return destination.value.decode("utf-8", "replace")


def position_street():
    """The reply to the question for position and street, its kind byte included."""
    destination = (ctypes.c_uint16 * (_TEXT_SIZE + 24))()
    _check("ZeltoNavPort_PositionStreet", destination)
    return bytes(destination).decode("utf-16-le", "replace").partition("\0")[0]


def position_street_a():
    """Not supported by the library: always raises, with number 1."""
    _check("_Z28ZeltoNavPort_PositionStreetAv")


def message_box(first, second, first_number, second_number):
    """Shows a message box in the navigator."""
    _check("ZeltoNavPort_MessageBox", _wide(first), _wide(second), _number(first_number),
           _number(second_number))


def message_box_a(first, second, first_number, second_number):
    """message_box through the system's code page."""
    _check("ZeltoNavPort_MessageBoxA", _narrow(first, _SYSTEM_CODE_PAGE),
           _narrow(second, _SYSTEM_CODE_PAGE), _number(first_number), _number(second_number))


def cobertura():
    """Asks whether there is coverage; returns when there is."""
    _check("ZeltoNavPort_Cobertura")


# ---- Commands ------------------------------------------------------------------------------------


def open_file(path):
    """Opens a file in the navigator."""
    _check("ZeltoNavPort_OpenFile", _wide(path))


def open_file_a(path):
    """open_file through the system's code page."""
    _check("_Z21ZeltoNavPort_OpenFilePKc", _narrow(path, _SYSTEM_CODE_PAGE))


def new_waypoint(first, second, x, y, z, third=None):
    """Creates a waypoint."""
    _check("ZeltoNavPort_New_Waypoint", _wide(first), _wide(second), _double(x), _double(y),
           _double(z), _wide(third))


def new_waypoint_a(first, second, x, y, z, third=None):
    """new_waypoint by 8-bit texts."""
    _check("ZeltoNavPort_New_WaypointA", _narrow(first), _narrow(second), _double(x), _double(y),
           _double(z), _narrow(third))


def delete_waypoint(name):
    """Deletes a waypoint."""
    _check("ZeltoNavPort_Delete_Waypoint", _wide(name))


def delete_waypoint_a(name):
    """delete_waypoint by an 8-bit text."""
    _check("ZeltoNavPort_Delete_WaypointA", _narrow(name))


def center_coordinate(x, y, z):
    """Centres the map."""
    _check("ZeltoNavPort_CenterCoordinate", _double(x), _double(y), _double(z))


def exec_command(number):
    """Runs one of the navigator's numbered commands."""
    _check("ZeltoNavPort_ExecCommand", _number(number))


def goto(x, y, text=None):
    """Starts navigation to a point; of the text only its being there is sent."""
    _check("ZeltoNavPort_Goto", _double(x), _double(y), _wide(text))


def goto_a(x, y, text=None):
    """Starts navigation to a point, with the text."""
    _check("ZeltoNavPort_GotoA", _double(x), _double(y), _narrow(text))


def new_point_nmea(sentence, unused=None):
    """Feeds a position sentence; the second text is not sent."""
    _check("ZeltoNavPort_NewPoint_nmea", _wide(sentence), _wide(unused))


def new_point_nmea_a(sentence):
    """new_point_nmea by an 8-bit text."""
    _check("ZeltoNavPort_NewPoint_nmeaA", _narrow(sentence))


def goto_ruta(route):
    """Starts navigation along a route."""
    _check("ZeltoNavPort_GotoRuta", _wide(route))


def goto_ruta_a(route):
    """goto_ruta by an 8-bit text."""
    _check("ZeltoNavPort_GotoRutaA", _narrow(route))
