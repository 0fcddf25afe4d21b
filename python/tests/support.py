"""What the Python module's tests share.

CTest passes where things are by environment:

- KRLAYOUT_PYTHON_DIR: the build folder that holds the krlayout package (put on sys.path);
- KRLAYOUT_TOOL: the built krlayout command, which the tests compare the module with;
- KRLAYOUT_EXAMPLES: the bundled examples (default: tool/examples of this source tree).
"""

import json
import math
import os
import random
import subprocess
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))

if os.environ.get("KRLAYOUT_PYTHON_DIR"):
    sys.path.insert(0, os.environ["KRLAYOUT_PYTHON_DIR"])

EXAMPLES_DIR = os.environ.get("KRLAYOUT_EXAMPLES") or os.path.join(ROOT, "tool", "examples")
EXAMPLES = sorted(name[:-5] for name in os.listdir(EXAMPLES_DIR) if name.endswith(".json"))
TYPES = ("diameter", "length", "formboard")
# The examples that fail a check: (status, check message, the segments it names).
FAILING = {
    "door-loop": (7, "Loop Segment", {202, 205, 208}),
    "rear-disjoint": (8, "Disjoint Segment", {308, 309}),
}


def example_path(name):
    return os.path.join(EXAMPLES_DIR, name + ".json")


def tool_path():
    tool = os.environ.get("KRLAYOUT_TOOL")
    if not tool:
        pytest.fail("KRLAYOUT_TOOL is not set: run the tests through ctest, or set it to the "
                    "built krlayout command")
    return tool


def run_tool(args, cwd=None):
    """Runs the tool; (exit code, standard output, standard error)."""
    proc = subprocess.run([tool_path()] + list(args), cwd=cwd, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=600)
    return (proc.returncode, proc.stdout.decode("utf-8", "replace"),
            proc.stderr.decode("utf-8", "replace"))


def tool_error(stderr):
    """The tool's error message: its last line that is not a warning, without "krlayout: "."""
    lines = [line for line in stderr.splitlines()
             if line.startswith("krlayout: ") and not line.startswith("krlayout: warning: ")]
    assert lines, "the tool printed no error: %r" % stderr
    return lines[-1][len("krlayout: "):]


def route_data(path):
    """The keyword arguments of krlayout.Route for the route document at path, read with json:
    every segment a dict with id, diameter and lines (start, end) of its line entities."""
    with open(path, encoding="utf-8") as f:
        doc = json.load(f)
    segments = []
    for s in doc["segments"]:
        lines = []
        for e in s.get("entities", []):
            assert e["kind"] == "line", "the examples hold lines only"
            lines.append((tuple(e["start"]), tuple(e["end"])))
        segments.append({"id": s["id"], "diameter": s["value"], "lines": lines})
    components = {c["id"]: c["text"] for c in doc.get("components", [])}
    return {"segments": segments, "components": components, "units": doc.get("units"),
            "name": doc.get("name", "")}


def random_tree(count, seed=7):
    """A harness tree of `count` segments: each starts at the end of an earlier one (or at the
    origin) and runs as one to three lines in random directions."""
    rnd = random.Random(seed)
    ends = [(0.0, 0.0)]
    segments = []
    for i in range(count):
        points = [ends[rnd.randrange(len(ends))]]
        for _ in range(rnd.randint(1, 3)):
            angle = rnd.uniform(0.0, 2.0 * math.pi)
            length = rnd.uniform(0.03, 0.4)
            x, y = points[-1]
            points.append((x + length * math.cos(angle), y + length * math.sin(angle)))
        segments.append({"id": i + 1, "diameter": rnd.uniform(0.002, 0.02),
                         "lines": list(zip(points, points[1:]))})
        ends.append(points[-1])
    return segments
