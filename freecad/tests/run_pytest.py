"""Runs one test file of the FreeCAD host with pytest inside freecadcmd (FreeCAD's headless
Python). CTest names the file in KRLAYOUT_FREECAD_TEST; the exit code is pytest's."""
import os
import sys

here = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, here)
if os.environ.get("KRLAYOUT_PYTHON_DIR"):
    sys.path.insert(0, os.environ["KRLAYOUT_PYTHON_DIR"])
os.makedirs(os.environ.get("HOME", here), exist_ok=True)

import pytest  # noqa: E402

code = pytest.main(["-q", "-p", "no:cacheprovider", "--durations=5", os.environ["KRLAYOUT_FREECAD_TEST"]])
sys.stdout.flush()
sys.stderr.flush()
# freecadcmd would go on to its own prompt and exit code; pytest's is the test's result.
os._exit(int(code))
