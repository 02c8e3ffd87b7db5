"""The Python module against the stand-in navigator, and against the table of the programs."""

import inspect
import json
import re
import subprocess

import pytest

import zeltoport
from zeltoport import _library, testing

# What is called, and the request line that must arrive.
LINES = [
    (lambda: zeltoport.goto(1.5, -2.25), "S|1.5000000,-2.2500000,,,0"),
    (lambda: zeltoport.goto(1.5, 2.5, ""), "S|1.5000000,2.5000000,,,1"),
    (lambda: zeltoport.goto_a(1.5, 2.5, "Calle Dató"), "S|1.5000000,2.5000000,,,Calle Dató"),
    (lambda: zeltoport.goto_ruta("Ruta ñ"), "f|Ruta ñ"),
    (lambda: zeltoport.goto_ruta_a("Ruta ñ"), "f|Ruta ñ"),
    (lambda: zeltoport.message_box("a€", "b", -1, 2**31 - 1), "T|1|a€|b|-1|2147483647"),
    (lambda: zeltoport.message_box_a("ñ", "b", 0, 1), "T|1|ñ|b|0|1"),
    (lambda: zeltoport.exec_command(-5), "I|-5"),
    (lambda: zeltoport.center_coordinate(1.5, 2, 0), "O|1.500000,2.000000,0.000000"),
    (lambda: zeltoport.new_waypoint_a("w", "d", 1, 2, 3, None), "M|w,d,1.000000,2.000000,3.000000,"),
    (lambda: zeltoport.delete_waypoint_a("w"), "N|w"),
    (lambda: zeltoport.open_file("/mapa ñ.itv"), "D|/mapa ñ.itv"),
    (lambda: zeltoport.open_file_a("/mapa ñ.itv"), "D|/mapa ñ.itv"),
]


def test_each_call_sends_its_line(navigator):
    for call, line in LINES:
        try:
            call()
        except zeltoport.ZeltoPortError as refused:  # by the model: the line matters here
            assert refused.number > 300
        navigator.wait_for(line)


def test_answers_are_texts(navigator):
    assert zeltoport.get_string("version").startswith("zelto-navigator ")
    with pytest.raises(zeltoport.ZeltoPortError, match="308"):
        zeltoport.position_street()
    zeltoport.new_point_nmea("$GPRMC,093000.000,A,4250.8020,N,00240.3620,W,0.00,35.00,150510,,,A*48")
    assert zeltoport.position_street().startswith("A|")
    assert zeltoport.version() == 4


def test_misuse_is_refused_before_anything_is_sent(navigator):
    before = len(navigator.journal())
    for call in (
        lambda: zeltoport.goto_ruta("a\0b"),
        lambda: zeltoport.exec_command(2**31),
        lambda: zeltoport.message_box_a("\u0416", "", 0, 0),
    ):
        with pytest.raises(ValueError):
            call()
    assert len(navigator.journal()) == before


def table():
    described = subprocess.run(
        [_library.program("zeltoport"), "describe", "--json"],
        check=True, stdin=subprocess.DEVNULL, capture_output=True,
    )
    return json.loads(described.stdout)


def python_name(export):
    """ZeltoNavPort_GotoRutaA as goto_ruta_a."""
    name = re.sub(r"(?<=[a-z])(?=[A-Z])", "_", export.removeprefix("ZeltoNavPort_"))
    return name.lower().replace("__", "_")


def test_every_export_and_result_of_the_table_is_here():
    described = table()
    functions = {name for name, _ in inspect.getmembers(zeltoport, inspect.isfunction)}
    exports = [python_name(call["export"]) for call in described["calls"]]
    assert len(exports) == 26
    assert {name for name in exports if name not in functions} <= {"open_file"}
    assert zeltoport.MEANINGS == {
        result["code"]: result["meaning"] for result in described["results"] if result["code"] != 0
    }


def test_an_unkept_script_is_told(zelto_device):
    script = zelto_device / "s"
    script.write_text('{"steps": [{"call": "goto", "arguments": {"latitude": 1}}]}')
    navigator = testing.Navigator(zelto_device, ["--script", str(script)])
    zeltoport.goto(2, 3)
    assert "latitude" in "".join(navigator.close())
