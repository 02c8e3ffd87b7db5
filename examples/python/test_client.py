"""How a client's own tests look: each gets a fresh navigator, and sees what reached it."""

import pytest

import zeltoport


def test_goes_where_it_is_told(navigator):
    zeltoport.goto(42.8467, -2.6727)
    assert zeltoport.get_string("destination").startswith("42.84")


def test_texts_arrive_whole(navigator):
    zeltoport.new_waypoint("Plaza de España", "salida", 42.8467, -2.6727, 525.0, "flag")
    entry = navigator.wait_for("M|Plaza de España,salida,42.846700,-2.672700,525.000000,flag")
    assert entry["reply"].startswith("A")


def test_a_refusal_is_an_exception(navigator):
    with pytest.raises(zeltoport.ZeltoPortError) as refusal:
        zeltoport.delete_waypoint("Museo")
    assert refusal.value.number == 304


@pytest.mark.zelto_navigator("--silent")
def test_a_silent_navigator_is_a_time_out(navigator):
    with pytest.raises(zeltoport.ZeltoPortError, match="1007"):
        zeltoport.goto_ruta("ruta del vino")


@pytest.mark.zelto_script([
    {"call": "goto", "arguments": {"latitude": 42.8467}, "fault": "late", "delay_ms": 600},
    {"call": "goto"},
])
def test_a_late_reply_is_asked_for_again(navigator):
    try:
        zeltoport.goto(42.8467, -2.6727)
    except zeltoport.ZeltoPortError:
        zeltoport.goto(42.8467, -2.6727)
