"""The first client in Python."""

import sys

import zeltoport

try:
    zeltoport.init()
    zeltoport.goto(42.8467, -2.6727)
    print("on the way to", zeltoport.get_string("destination"))
except zeltoport.ZeltoPortError as error:
    sys.exit(f"first client: {error}")
