"""Sketches drawn by hand: chains and their numbering, points within the tolerance, arcs,
diameter tables (CSV and spreadsheet), a loop and disjoint pieces, the undo step, and the command
krlayout-freecad."""

import math
import os
import subprocess

import pytest

from support import V, FreeCAD, Part, doc, kf  # noqa: F401


def line(a, b):
    return Part.LineSegment(V(a[0], a[1], 0), V(b[0], b[1], 0))


def arc(center, radius, a0, a1):
    return Part.ArcOfCircle(Part.Circle(V(center[0], center[1], 0), V(0, 0, 1), radius), a0, a1)


def tree_sketch(doc, name="Route"):  # noqa: F811
    """A trunk of two lines with a kink, two branches at its end (one of two lines drawn
    backwards), in millimetres."""
    sketch = doc.addObject("Sketcher::SketchObject", name)
    sketch.addGeometry([
        line((0, 0), (100, 0)),        # Edge1: trunk
        line((100, 0), (200, 20)),     # Edge2: trunk, after the kink
        line((200, 20), (260, 80)),    # Edge3: branch up
        line((320, -40), (260, -40)),  # Edge4: branch down, second line, drawn backwards
        line((200, 20), (260, -40)),   # Edge5: branch down, first line
    ], False)
    doc.recompute()
    return sketch


def test_chains_are_numbered_by_their_lowest_edge(doc):  # noqa: F811
    sketch = tree_sketch(doc)
    read = kf.read_sketch(sketch)
    assert [(s.id, [e.index + 1 for e in s.edges]) for s in read.segments] == [
        (1, [1, 2]), (2, [3]), (3, [4, 5])]
    # The chain runs the way its lowest edge, Edge4, is drawn: Edge5 backwards.
    assert read.segments[2].reversed == [False, True]
    assert read.route.segment_lengths == pytest.approx(
        [100 + math.hypot(100, 20), math.hypot(60, 60), math.hypot(60, 60) + 60])
    assert all(s.diameter == kf.DEFAULT_DIAMETER for s in read.segments)
    assert read.route.units == "mm"


def test_points_within_the_tolerance_are_one(doc):  # noqa: F811
    sketch = doc.addObject("Sketcher::SketchObject", "Route")
    sketch.addGeometry([line((0, 0), (100, 0)), line((100 + 1e-3, 0), (150, 50)),
                        line((100, -1e-3), (150, -50))], False)
    assert len(kf.read_sketch(sketch, tolerance=0.01).segments) == 3
    result = kf.lay_out_sketch(doc, sketch, tolerance=0.01).result
    assert result.status == 0
    # With the default tolerance the ends are apart: three pieces.
    apart = kf.lay_out_sketch(doc, sketch)
    assert apart.result.status == 8 and apart.message.startswith("Disjoint Segment")


def test_diameters_from_csv_and_spreadsheet(doc, tmp_path):  # noqa: F811
    sketch = tree_sketch(doc)
    path = tmp_path / "diameters.csv"
    path.write_text("id,diameter,text\n1,12.5,\n3,4,1-2@X3@Sensor\n")
    read = kf.read_sketch(sketch, table=kf.find_table(doc, str(path)))
    assert [s.diameter for s in read.segments] == [12.5, kf.DEFAULT_DIAMETER, 4.0]
    assert read.route.components == {3: "1-2@X3@Sensor"}

    sheet = doc.addObject("Spreadsheet::Sheet", "Diameters")
    for cell, value in (("A1", "id"), ("B1", "diameter"), ("C1", "edges"),
                        ("A2", "7"), ("B2", "9"), ("C2", "1 2"),
                        ("A3", "8"), ("B3", "3"), ("C3", "3"),
                        ("A4", "9"), ("B4", "2"), ("C4", "5 4")):
        sheet.set(cell, value)
    doc.recompute()
    read = kf.read_sketch(sketch, table=kf.find_table(doc, "Diameters"))
    assert [(s.id, s.diameter, [e.index + 1 for e in s.edges]) for s in read.segments] == [
        (7, 9.0, [1, 2]), (8, 3.0, [3]), (9, 2.0, [5, 4])]


@pytest.mark.parametrize("layout_type", ["diameter", "length", "formboard"])
def test_arcs(doc, layout_type):  # noqa: F811
    sketch = doc.addObject("Sketcher::SketchObject", "Route")
    sketch.addGeometry([
        line((0, 0), (100, 0)),                                  # trunk
        arc((100, 50), 50, -math.pi / 2, 0),                     # quarter circle up to (150, 50)
        line((150, 50), (150, 120)),                             # goes on from the arc
        line((100, 0), (180, -60)),                              # branch
        line((100, 0), (40, -80)),                               # branch
    ], False)
    read = kf.read_sketch(sketch)
    curved = [s for s in read.segments if s.has_arcs]
    assert len(curved) == 1 and [e.kind for e in curved[0].edges] == ["arc", "line"]
    assert curved[0].length == pytest.approx(math.pi * 50 / 2 + 70)
    outcome = kf.lay_out_sketch(doc, sketch, type=layout_type, grid=20, lengths=True)
    assert outcome.ok and outcome.written.solve == 0
    assert outcome.written.sketch.solve() == 0 and outcome.written.sketch.FullyConstrained
    seg = [s for s in outcome.result.segments if s.id == curved[0].id][0]
    assert seg.length == pytest.approx(curved[0].length)
    if layout_type == "formboard":
        drawn = sum(math.dist(a, b) for a, b in seg.lines)
        assert drawn == pytest.approx(curved[0].length)


def loop_sketch(doc, name="Route"):  # noqa: F811
    """A square with a tail at three corners: segments 1 (A-B), 2 (B-C) and 4 (C-D-A) close a
    loop."""
    sketch = doc.addObject("Sketcher::SketchObject", name)
    sketch.addGeometry([line((0, 0), (100, 0)), line((100, 0), (100, 100)),
                        line((100, 100), (0, 100)), line((0, 100), (0, 0)),
                        line((0, 0), (-50, -50)), line((100, 0), (150, -50)),
                        line((100, 100), (150, 150))], False)
    return sketch


def test_loop_is_reported_and_nothing_written(doc, capfd):  # noqa: F811
    sketch = loop_sketch(doc)
    count = len(doc.Objects)
    outcome = kf.lay_out_sketch(doc, sketch)
    assert not outcome.ok and outcome.written is None and len(doc.Objects) == count
    assert outcome.message.startswith("Loop Segment ")
    ids = [int(i) for i in outcome.message.split()[2:]]
    assert ids == [1, 2, 3]
    assert outcome.route.edge_names(ids) == ["Edge1", "Edge2", "Edge3", "Edge4"]
    out, err = capfd.readouterr()
    assert "Loop Segment" in out + err


def test_disjoint_is_reported_and_nothing_written(doc, capfd):  # noqa: F811
    sketch = doc.addObject("Sketcher::SketchObject", "Route")
    sketch.addGeometry([line((0, 0), (100, 0)), line((100, 0), (150, 50)),
                        line((100, 0), (150, -50)), line((300, 0), (400, 0))], False)
    count = len(doc.Objects)
    outcome = kf.lay_out_sketch(doc, sketch)
    assert not outcome.ok and len(doc.Objects) == count
    assert outcome.message.startswith("Disjoint Segment ")
    out, err = capfd.readouterr()
    assert "Disjoint Segment" in out + err


def test_one_undo_step(doc):  # noqa: F811
    sketch = tree_sketch(doc)
    doc.recompute()
    steps = doc.UndoCount
    names = [o.Name for o in doc.Objects]
    geometry = [(g.StartPoint, g.EndPoint) for g in sketch.Geometry]
    outcome = kf.lay_out_sketch(doc, sketch, type="length", lengths=True)
    assert outcome.ok
    assert doc.UndoCount == steps + 1 and doc.UndoNames[0] == "Lay out route"
    assert len(doc.Objects) == len(names) + 1
    doc.undo()
    assert [o.Name for o in doc.Objects] == names
    assert [(g.StartPoint, g.EndPoint) for g in sketch.Geometry] == geometry
    doc.redo()
    assert len(doc.Objects) == len(names) + 1


def run_command(args):
    command = os.environ.get("KRLAYOUT_FREECAD_COMMAND")
    if not command:
        pytest.fail("KRLAYOUT_FREECAD_COMMAND is not set: run the tests through ctest")
    proc = subprocess.run(["/usr/bin/python3", command] + args, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=600)
    return proc.returncode, proc.stdout.decode(), proc.stderr.decode()


def test_command(doc, tmp_path):  # noqa: F811
    tree_sketch(doc, "Route")
    loop_sketch(doc, "Loop")
    path = str(tmp_path / "route.FCStd")
    doc.saveAs(path)
    out_path = str(tmp_path / "laid-out.FCStd")
    (tmp_path / "d.csv").write_text("id,diameter\n1,10\n2,4\n3,6\n")
    code, out, err = run_command([path, "--sketch", "Route", "-o", out_path, "--type",
                                  "formboard", "--grid", "20", "--diameters",
                                  str(tmp_path / "d.csv"), "--lengths"])
    assert code == 0, err
    assert "3 segments laid out (formboard)" in out
    saved = FreeCAD.openDocument(out_path)
    try:
        new = saved.getObject("RouteLayout")
        assert new is not None and new.solve() == 0 and new.FullyConstrained
        assert len(saved.getObject("Route").Geometry) == 5
    finally:
        FreeCAD.closeDocument(saved.Name)

    code, out, err = run_command([path, "--sketch", "Loop", "-o", str(tmp_path / "no.FCStd")])
    assert code == 1 and "Loop Segment" in out + err
    assert not os.path.exists(str(tmp_path / "no.FCStd"))
    code, out, err = run_command([path, "--sketch", "Nothing"])
    assert code == 2 and "no sketch called 'Nothing'" in err
