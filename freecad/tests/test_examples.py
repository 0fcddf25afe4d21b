"""Every bundled example drawn as a FreeCAD sketch, laid out by every layout type, written back
into a new sketch, solved, and compared with the command-line tool's result line by line."""

import math

import pytest

from support import (EXAMPLES, FAILING, TYPES, doc, draw_document, kf, load_example,  # noqa: F401
                     tool_result)

START, END = 1, 2


def close(p, q, tol):
    return math.hypot(p[0] - q[0], p[1] - q[1]) <= tol


def on_line(p, a, b, tol):
    """Whether p lies on the segment a-b."""
    dx, dy = b[0] - a[0], b[1] - a[1]
    length = math.hypot(dx, dy)
    t = ((p[0] - a[0]) * dx + (p[1] - a[1]) * dy) / (length * length)
    off = abs((p[0] - a[0]) * dy - (p[1] - a[1]) * dx) / length
    return off <= tol and -1e-9 <= t <= 1 + 1e-9


@pytest.mark.parametrize("lengths", [False, True], ids=["plain", "lengths"])
@pytest.mark.parametrize("layout_type", TYPES)
@pytest.mark.parametrize("name", EXAMPLES)
def test_example(doc, tmp_path, name, layout_type, lengths):  # noqa: F811
    document = load_example(name)
    sketch, table = draw_document(doc, document)
    before = (len(sketch.Geometry), sketch.ConstraintCount, len(doc.Objects))
    code, tool = tool_result(name, layout_type, tmp_path)

    outcome = kf.lay_out_sketch(doc, sketch, type=layout_type, table=table, units="m",
                                lengths=lengths)
    # The input sketch is never changed.
    assert (len(sketch.Geometry), sketch.ConstraintCount) == before[:2]

    if name in FAILING:
        message, ids = FAILING[name]
        assert code != 0 and tool["status"] == outcome.result.status
        assert outcome.written is None and len(doc.Objects) == before[2]
        assert outcome.message == message + " " + " ".join(str(i) for i in sorted(ids))
        assert set(outcome.result.failed_ids) == ids
        # The offending edges are the ones the failed segments were drawn with.
        names = outcome.route.edge_names(ids)
        assert names == ["Edge%d" % n for i in sorted(table.edges) if i in ids
                         for n in table.edges[i]]
        return

    assert tool["status"] == 0 and outcome.ok and len(doc.Objects) == before[2] + 1
    result = outcome.result
    # The layout of the sketch is the tool's layout of the document: the same segments, lines
    # and axis codes. FreeCAD keeps a line segment as a line and a parameter range, so the end
    # points it gives back can differ from the drawn ones in the last bit, and so can the
    # layout's coordinates.
    assert [s["id"] for s in tool["segments"]] == [s.id for s in result.segments]
    tool_lines = [(tuple(ln["start"][:2]), tuple(ln["end"][:2]), ln["axis"])
                  for s in tool["segments"] for ln in s["lines"]]
    lines = [((a[0], a[1]), (b[0], b[1]), int(axis))
             for s in result.segments for (a, b), axis in zip(s.lines, s.axes)]
    assert len(lines) == len(tool_lines)
    extent = max(abs(c) for a, b, _ in tool_lines for c in a + b)
    tol = 1e-9 * extent
    for mine, theirs in zip(lines, tool_lines):
        assert mine[2] == theirs[2]
        assert close(mine[0], theirs[0], tol) and close(mine[1], theirs[1], tol), (mine, theirs)

    written = outcome.written
    new = written.sketch
    assert written.solve == 0 and new.solve() == 0
    assert new.FullyConstrained == lengths
    assert len(written.line_geo) == len(tool_lines)
    radius = 0.02 / 2
    filleted = {(i, pos) for g_arc, i, j in written.fillets for (i, pos) in ((i, END), (j, START))}
    # Each written line lies on the tool's line; its ends are the tool's except where a fillet
    # took them, and a fillet is an arc of half the grid spacing tangent there.
    geometry = new.Geometry     # one copy: every read of the property copies all of it
    axis_kinds = {}
    for c in new.Constraints:
        if c.Type in ("Horizontal", "Vertical"):
            axis_kinds.setdefault(c.First, set()).add(c.Type)
    for k, (g, (a, b, axis)) in enumerate(zip(written.line_geo, tool_lines)):
        geo = geometry[g]
        s, e = (geo.StartPoint.x, geo.StartPoint.y), (geo.EndPoint.x, geo.EndPoint.y)
        assert on_line(s, a, b, tol) and on_line(e, a, b, tol), (k, s, e, a, b)
        if (k, START) not in filleted:
            assert close(s, a, tol)
        if (k, END) not in filleted:
            assert close(e, b, tol)
        assert axis_kinds.get(g, set()) <= {{1: "Horizontal", 2: "Vertical"}.get(axis)}
    for g_arc, i, j in written.fillets:
        arc = geometry[g_arc]
        assert abs(arc.Radius - radius) <= tol
        line_i, line_j = geometry[written.line_geo[i]], geometry[written.line_geo[j]]
        ends = {(round(p.x, 9), round(p.y, 9)) for p in (arc.StartPoint, arc.EndPoint)}
        assert ends == {(round(line_i.EndPoint.x, 9), round(line_i.EndPoint.y, 9)),
                        (round(line_j.StartPoint.x, 9), round(line_j.StartPoint.y, 9))}
    # Every joint of a segment is rounded unless the corner has no room or no turn.
    corners = sum(len(s.lines) - 1 for s in result.segments)
    assert len(written.fillets) + written.sharp == corners
    assert len(written.fillets) >= corners * 0.9
    types = {c.Type for c in new.Constraints}
    assert "Coincident" in types or len(result.segments) == 1
    if corners:
        assert "Tangent" in types
