"""Makes the module of this source tree importable where it is not installed."""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))

pytest_plugins = ["zeltoport.testing"]
