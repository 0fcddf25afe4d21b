"""What the FreeCAD host's tests share: the bundled examples drawn as FreeCAD sketches and the
tool's results for them.

CTest passes by environment: KRLAYOUT_PYTHON_DIR (the build folder holding the krlayout package),
KRLAYOUT_TOOL (the built krlayout command), KRLAYOUT_EXAMPLES (the bundled examples) and
KRLAYOUT_FREECAD_COMMAND (the krlayout-freecad script).
"""

import json
import os
import subprocess
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
if os.environ.get("KRLAYOUT_PYTHON_DIR") and os.environ["KRLAYOUT_PYTHON_DIR"] not in sys.path:
    sys.path.insert(0, os.environ["KRLAYOUT_PYTHON_DIR"])

import krlayout.freecad as kf  # noqa: E402  (imports FreeCAD, Part and Sketcher)
import FreeCAD  # noqa: E402
import Part  # noqa: E402

EXAMPLES_DIR = os.environ.get("KRLAYOUT_EXAMPLES") or os.path.join(ROOT, "tool", "examples")
EXAMPLES = sorted(name[:-5] for name in os.listdir(EXAMPLES_DIR) if name.endswith(".json"))
TYPES = ("diameter", "length", "formboard")
FAILING = {
    "door-loop": ("Loop Segment", {202, 205, 208}),
    "rear-disjoint": ("Disjoint Segment", {308, 309}),
}
V = FreeCAD.Vector


def example_path(name):
    return os.path.join(EXAMPLES_DIR, name + ".json")


def load_example(name):
    with open(example_path(name), encoding="utf-8") as f:
        return json.load(f)


def draw_document(doc, document, sketch_name="Route"):
    """Draws a route document's segments into a new sketch of doc, every line as a line segment
    in the document's order, and returns (sketch, table): the table names each segment's id,
    diameter, component text and edges, as a user's table would."""
    sketch = doc.addObject("Sketcher::SketchObject", sketch_name)
    geos, table = [], kf.Table()
    texts = {c["id"]: c["text"] for c in document.get("components", [])}
    for seg in document["segments"]:
        numbers = []
        for entity in seg["entities"]:
            assert entity["kind"] == "line"
            a, b = entity["start"], entity["end"]
            geos.append(Part.LineSegment(V(*a), V(*b)))
            numbers.append(len(geos))
        table.order.append(seg["id"])
        table.diameters[seg["id"]] = seg["value"]
        table.edges[seg["id"]] = numbers
        if seg["id"] in texts:
            table.texts[seg["id"]] = texts[seg["id"]]
    sketch.addGeometry(geos, False)
    doc.recompute()
    return sketch, table


def tool_path():
    tool = os.environ.get("KRLAYOUT_TOOL")
    if not tool:
        pytest.fail("KRLAYOUT_TOOL is not set: run the tests through ctest")
    return tool


def tool_result(name, layout_type, tmp_path):
    """The tool's result document for an example in arrays mode."""
    out = os.path.join(str(tmp_path), "%s-%s.json" % (name, layout_type))
    proc = subprocess.run([tool_path(), example_path(name), "-m", "arrays", "-t", layout_type,
                           "-o", out], stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=600)
    with open(out, encoding="utf-8") as f:
        return proc.returncode, json.load(f)


@pytest.fixture
def doc():
    document = FreeCAD.newDocument("KrLayoutTest")
    document.UndoMode = 1
    yield document
    FreeCAD.closeDocument(document.Name)
