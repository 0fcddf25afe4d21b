"""Writes a layout result into a new FreeCAD sketch.

Every laid-out line becomes a line segment of the sketch: Horizontal where its axis code is 1,
Vertical where it is 2. Where two lines of one segment meet and no other line ends, the corner is
rounded by a fillet arc (radius half the grid's X spacing) tangent to both lines; at every other
shared point the line ends are Coincident. On request every line gets its length (and, off the
axes, its angle), every fillet its radius and one point of each connected piece its place, so
that the sketch is fully constrained at the laid-out geometry.

A fillet needs room: the two lines are shortened by r * tan(turn / 2) each, and a corner whose
lines are too short for that, or that does not turn, is left sharp with a Coincident.
"""

from __future__ import annotations

import math
from dataclasses import dataclass, field
from typing import Dict, List, Optional, Tuple

# Sketcher's point positions on an edge.
START, END, MID = 1, 2, 3


class SolveError(RuntimeError):
    """The written sketch does not solve cleanly."""


@dataclass
class Written:
    """What write_sketch made."""

    sketch: object
    line_geo: List[int]                    # geometry index of every result line, in array order
    fillets: List[Tuple[int, int, int]]    # (arc geometry index, line before, line after)
    sharp: int = 0                         # corners within a segment left without a fillet
    solve: int = 0                         # what sketch.solve() returned
    segment_of_line: List[int] = field(default_factory=list)   # segment id per result line


def _key(p, scale):
    # Shared points of a result are bit-identical; rounding only guards against -0.0 and the
    # like.
    return (round(p[0] / scale, 6), round(p[1] / scale, 6))


def write_sketch(doc, result, name: str = "RouteLayout", placement=None, grid_x: Optional[float]
                 = None, lengths: bool = False, fillets: bool = True, check: bool = True):
    """Adds a new sketch to the document with the result's lines and constraints, solves it and
    returns a Written. Raises SolveError when check is on and solve() does not return 0."""
    import FreeCAD
    import Part
    import Sketcher

    V = FreeCAD.Vector
    sketch = doc.addObject("Sketcher::SketchObject", name)
    if placement is not None:
        sketch.Placement = placement
    radius = (grid_x if grid_x is not None else result.grid[0]) / 2.0

    # The lines of the result in array order, with their segment.
    lines = []          # [start(x, y), end(x, y), axis, segment position]
    for s_pos, seg in enumerate(result.segments):
        for (a, b), axis in zip(seg.lines, seg.axes):
            lines.append([(a[0], a[1]), (b[0], b[1]), int(axis), s_pos])
    extent = max([abs(c) for ln in lines for p in ln[:2] for c in p] + [1.0])
    scale = extent * 1e-12

    ends_at: Dict[tuple, List[Tuple[int, int]]] = {}
    for i, (a, b, _, _) in enumerate(lines):
        ends_at.setdefault(_key(a, scale), []).append((i, START))
        ends_at.setdefault(_key(b, scale), []).append((i, END))

    # Fillets: corners between consecutive lines of one segment where nothing else ends.
    trim = [[0.0, 0.0] for _ in lines]     # how much each line loses at its start and end
    corners = []                           # (line i, pos on i, line j, pos on j, point, turn)
    first = 0
    for seg in result.segments:
        count = len(seg.lines)
        for i in range(first, first + count - 1):
            j = i + 1
            shared = None
            for pi in (START, END):
                for pj in (START, END):
                    if _key(lines[i][pi - 1], scale) == _key(lines[j][pj - 1], scale):
                        shared = (pi, pj)
            if shared is None:
                continue
            pi, pj = shared
            point = lines[i][pi - 1]
            if len(ends_at[_key(point, scale)]) != 2:
                continue
            # Directions into and out of the corner.
            p_in = lines[i][2 - pi]           # the other end of line i
            p_out = lines[j][2 - pj]
            ux, uy = point[0] - p_in[0], point[1] - p_in[1]
            vx, vy = p_out[0] - point[0], p_out[1] - point[1]
            lu, lv = math.hypot(ux, uy), math.hypot(vx, vy)
            if lu == 0 or lv == 0:
                continue
            ux, uy, vx, vy = ux / lu, uy / lu, vx / lv, vy / lv
            turn = math.atan2(ux * vy - uy * vx, ux * vx + uy * vy)
            if not fillets or abs(turn) < 1e-9 or abs(turn) > math.pi - 1e-6:
                continue
            t = radius * math.tan(abs(turn) / 2.0)
            room = 1e-9 * extent
            if trim[i][2 - pi] + t > lu - room or trim[j][2 - pj] + t > lv - room:
                continue
            trim[i][pi - 1] = t
            trim[j][pj - 1] = t
            corners.append((i, pi, j, pj, point, (ux, uy), (vx, vy), turn, t))
        first += count

    # The lines, shortened where a fillet takes their end.
    geos = []
    for (a, b, _, _), (ta, tb) in zip(lines, trim):
        dx, dy = b[0] - a[0], b[1] - a[1]
        length = math.hypot(dx, dy)
        ex, ey = (dx / length, dy / length) if length else (0.0, 0.0)
        s = (a[0] + ex * ta, a[1] + ey * ta)
        e = (b[0] - ex * tb, b[1] - ey * tb)
        geos.append(Part.LineSegment(V(s[0], s[1], 0), V(e[0], e[1], 0)))
    arcs = []
    for (i, pi, j, pj, point, u, v, turn, t) in corners:
        t_in = (point[0] - u[0] * t, point[1] - u[1] * t)      # tangent point on line i
        t_out = (point[0] + v[0] * t, point[1] + v[1] * t)     # tangent point on line j
        left = 1.0 if turn > 0 else -1.0
        center = (t_in[0] - u[1] * radius * left, t_in[1] + u[0] * radius * left)
        a_in = math.atan2(t_in[1] - center[1], t_in[0] - center[0])
        a_out = math.atan2(t_out[1] - center[1], t_out[0] - center[0])
        # Sketcher arcs run counter-clockwise: from the incoming tangent point on a left turn,
        # from the outgoing one on a right turn.
        if turn > 0:
            a0, a1, arc_in, arc_out = a_in, a_out, START, END
        else:
            a0, a1, arc_in, arc_out = a_out, a_in, END, START
        while a1 <= a0:
            a1 += 2 * math.pi
        circle = Part.Circle(V(center[0], center[1], 0), V(0, 0, 1), radius)
        arcs.append((Part.ArcOfCircle(circle, a0, a1), i, pi, j, pj, arc_in, arc_out))

    line_geo = list(sketch.addGeometry(geos, False)) if geos else []
    arc_geo = list(sketch.addGeometry([a[0] for a in arcs], False)) if arcs else []

    # Lines that close a cycle of the drawing (two segments drawn along the same stretch) have
    # both ends placed by the lines before them: a constraint of their own that says again what
    # the cycle already says is redundant, and Sketcher refuses to solve with it.
    closes = _cycle_closers(lines, scale)

    constraints = []
    C = Sketcher.Constraint
    for i, (g, (a, b, axis, _)) in enumerate(zip(line_geo, lines)):
        if i in closes and (lengths or closes[i]):
            continue
        if axis == 1:
            constraints.append(C("Horizontal", g))
        elif axis == 2:
            constraints.append(C("Vertical", g))
    filleted = set()
    fillet_list = []
    for g_arc, (_, i, pi, j, pj, arc_in, arc_out) in zip(arc_geo, arcs):
        constraints.append(C("Tangent", line_geo[i], pi, g_arc, arc_in))
        constraints.append(C("Tangent", g_arc, arc_out, line_geo[j], pj))
        filleted.add((i, pi))
        filleted.add((j, pj))
        fillet_list.append((g_arc, i, j))
    # Coincident at every shared point that no fillet took.
    for key in sorted(ends_at):
        ends = [e for e in ends_at[key] if e not in filleted]
        for (i, pi) in ends[1:]:
            constraints.append(C("Coincident", line_geo[ends[0][0]], ends[0][1], line_geo[i], pi))

    if lengths:
        for i, (g, geo, (_, _, axis, _)) in enumerate(zip(line_geo, geos, lines)):
            if i in closes:
                continue
            a, b = geo.StartPoint, geo.EndPoint
            constraints.append(C("Distance", g, a.distanceToPoint(b)))
            if axis not in (1, 2):
                constraints.append(C("Angle", g, math.atan2(b.y - a.y, b.x - a.x)))
        for g_arc in arc_geo:
            constraints.append(C("Radius", g_arc, radius))
        # One fixed point for every connected piece of the drawing.
        parent = list(range(len(lines)))

        def root(n):
            while parent[n] != n:
                parent[n] = parent[parent[n]]
                n = parent[n]
            return n
        for ends in ends_at.values():
            for (i, _) in ends[1:]:
                parent[root(i)] = root(ends[0][0])
        for (_, i, _, j, _, _, _) in arcs:
            parent[root(j)] = root(i)
        fixed = set()
        for i, geo in enumerate(geos):
            r = root(i)
            if r in fixed:
                continue
            fixed.add(r)
            p = geo.StartPoint
            # Measured from the sketch's origin (geometry -1, its root point).
            constraints.append(C("DistanceX", -1, START, line_geo[i], START, p.x))
            constraints.append(C("DistanceY", -1, START, line_geo[i], START, p.y))
    if constraints:
        sketch.addConstraint(constraints)

    status = sketch.solve()
    doc.recompute()
    written = Written(sketch, line_geo, fillet_list, sharp=0, solve=status,
                      segment_of_line=[result.segments[ln[3]].id for ln in lines])
    written.sharp = sum(max(0, len(seg.lines) - 1) for seg in result.segments) - len(arcs)
    if check and status != 0:
        raise SolveError("the written sketch %s does not solve cleanly: solve() returned %d (%s)"
                         % (sketch.Label, status, SOLVE_CODES.get(status, "unknown")))
    return written


def _cycle_closers(lines, scale):
    """The lines that close a cycle, taken in array order: {line: whether the cycle's other lines
    all run along the line's own axis}, which makes the line's axis constraint redundant."""
    parent = {}

    def root(k):
        parent.setdefault(k, k)
        while parent[k] != k:
            parent[k] = parent[parent[k]]
            k = parent[k]
        return k
    tree: Dict[tuple, List[Tuple[tuple, int]]] = {}
    closes = {}
    for i, (a, b, axis, _) in enumerate(lines):
        ka, kb = _key(a, scale), _key(b, scale)
        if root(ka) != root(kb):
            parent[root(ka)] = root(kb)
            tree.setdefault(ka, []).append((kb, i))
            tree.setdefault(kb, []).append((ka, i))
            continue
        # The path between the two ends through the lines before (a tree: one path).
        previous = {ka: None}
        todo = [ka]
        while todo and kb not in previous:
            k = todo.pop()
            for other, line in tree.get(k, ()):
                if other not in previous:
                    previous[other] = (k, line)
                    todo.append(other)
        same_axis = axis in (1, 2)
        k = kb
        while previous.get(k) is not None:
            k, line = previous[k]
            same_axis = same_axis and lines[line][2] == axis
        closes[i] = same_axis
    return closes


#: What SketchObject.solve() returns.
SOLVE_CODES = {
    0: "solved",
    -1: "the solver failed",
    -2: "redundant constraints",
    -3: "conflicting constraints",
    -4: "over-constrained",
    -5: "malformed constraints",
}
