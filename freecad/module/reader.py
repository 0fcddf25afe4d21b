"""Reads a route drawn as a FreeCAD sketch into a krlayout.Route.

Every line and arc edge of the sketch that is not construction geometry belongs to the route.
Edge ends closer than the tolerance are one point. A point where one edge ends is a free end, a
point where three or more end is a branch point; every chain of edges between two such points is
one route segment (a chain that closes on itself without either is one segment too, which the
loop check then reports).

Segments are numbered 1, 2, ... in the order of their lowest edge number (FreeCAD's edge numbers:
geometry index + 1, as in "Edge3"), and every chain runs in the direction of its lowest-numbered
edge. A table can instead name the segments: a row with an ``edges`` column ("3 4 7") makes those
edges, in that order and each as drawn, the segment with that row's id.

A segment's length is the sum of its edges' lengths; the layout gets each arc as the straight
line between its ends, together with the segment's true length.
"""

from __future__ import annotations

import csv
import math
import os
from dataclasses import dataclass, field
from typing import Dict, List, Optional, Sequence, Tuple

import krlayout

#: The diameter of a segment that no table row gives one for, in the sketch's units.
DEFAULT_DIAMETER = 1.0
#: Edge ends closer than this are one point (FreeCAD's own confusion distance, in mm).
DEFAULT_TOLERANCE = 1e-7


class SketchError(ValueError):
    """The sketch or its table cannot be read as a route."""


@dataclass
class Edge:
    """One line or arc of the sketch."""

    index: int                      # geometry index in the sketch (FreeCAD's edge number - 1)
    kind: str                       # "line" or "arc"
    start: Tuple[float, float]
    end: Tuple[float, float]
    length: float

    @property
    def name(self) -> str:
        """The edge's sub-element name, as FreeCAD selects it."""
        return "Edge%d" % (self.index + 1)


@dataclass
class SegmentEdges:
    """The edges of one route segment, in chain order, and which of them run backwards."""

    id: int
    edges: List[Edge]
    reversed: List[bool]
    diameter: float
    text: Optional[str] = None

    @property
    def length(self) -> float:
        return math.fsum(edge.length for edge in self.edges)

    @property
    def has_arcs(self) -> bool:
        return any(edge.kind == "arc" for edge in self.edges)


@dataclass
class SketchRoute:
    """A sketch read as a route: the krlayout.Route and which edges make each segment."""

    route: "krlayout.Route"
    segments: List[SegmentEdges]
    skipped: List[int] = field(default_factory=list)   # geometry indices that are not route edges

    def edges_of(self, ids) -> List[Edge]:
        """The edges of the segments with these ids."""
        wanted = set(ids)
        return [edge for seg in self.segments if seg.id in wanted for edge in seg.edges]

    def edge_names(self, ids) -> List[str]:
        return [edge.name for edge in self.edges_of(ids)]


@dataclass
class Table:
    """Rows of a segment table: diameter, component text and edge numbers by segment id."""

    diameters: Dict[int, float] = field(default_factory=dict)
    texts: Dict[int, str] = field(default_factory=dict)
    edges: Dict[int, List[int]] = field(default_factory=dict)   # FreeCAD edge numbers (1-based)
    order: List[int] = field(default_factory=list)


def _table_from_rows(rows: Sequence[Sequence[str]], where: str) -> Table:
    """Reads a table from rows of text cells; the first row names the columns (id, diameter,
    and optionally edges and text), in any order and case."""
    rows = [list(row) for row in rows if any(str(cell).strip() for cell in row)]
    if not rows:
        return Table()
    header = [str(cell).strip().lower() for cell in rows[0]]
    if "id" not in header:
        raise SketchError("%s: the first row must name the columns, one of them 'id'" % where)
    col = {name: header.index(name) for name in ("id", "diameter", "edges", "text") if name in header}
    table = Table()
    for number, row in enumerate(rows[1:], start=2):
        def cell(name):
            i = col.get(name)
            return str(row[i]).strip() if i is not None and i < len(row) else ""
        try:
            seg_id = int(float(cell("id")))
        except ValueError:
            raise SketchError("%s, row %d: the id %r is not a number" % (where, number, cell("id")))
        if seg_id in table.order:
            raise SketchError("%s, row %d: segment %d is given twice" % (where, number, seg_id))
        table.order.append(seg_id)
        if cell("diameter"):
            try:
                table.diameters[seg_id] = float(cell("diameter"))
            except ValueError:
                raise SketchError("%s, row %d: the diameter %r is not a number"
                                  % (where, number, cell("diameter")))
        if cell("text"):
            table.texts[seg_id] = cell("text")
        if cell("edges"):
            try:
                table.edges[seg_id] = [int(part) for part in
                                       cell("edges").replace(",", " ").replace(";", " ").split()]
            except ValueError:
                raise SketchError("%s, row %d: the edges %r are not edge numbers"
                                  % (where, number, cell("edges")))
    return table


def read_table_csv(path: str) -> Table:
    """Reads a segment table from a CSV file."""
    with open(path, newline="", encoding="utf-8") as f:
        return _table_from_rows(list(csv.reader(f)), path)


def read_table_sheet(sheet) -> Table:
    """Reads a segment table from a FreeCAD spreadsheet: the column names in row 1 from column A
    on, one segment per row below, up to the first row without an id."""
    def text(address):
        try:
            value = sheet.get(address)
        except Exception:        # an empty cell raises
            return ""
        if isinstance(value, float) and value.is_integer():
            value = int(value)
        return str(getattr(value, "Value", value))
    columns = []
    for letter in "ABCDEFGHIJKLMNOPQRSTUVWXYZ":
        name = text(letter + "1")
        if not name:
            break
        columns.append(letter)
    rows = [[text(c + "1") for c in columns]]
    row = 2
    while True:
        cells = [text("%s%d" % (c, row)) for c in columns]
        if not any(cells):
            break
        rows.append(cells)
        row += 1
    return _table_from_rows(rows, "spreadsheet " + sheet.Label)


def find_table(doc, name: str) -> Table:
    """A table by name: a CSV file when the name is a file's path, else a spreadsheet of the
    document with that name or label."""
    if os.path.isfile(name):
        return read_table_csv(name)
    if doc is not None:
        sheets = [obj for obj in doc.Objects if obj.TypeId == "Spreadsheet::Sheet"
                  and name in (obj.Name, obj.Label)]
        if sheets:
            return read_table_sheet(sheets[0])
    raise SketchError("no CSV file and no spreadsheet in the document is called %r" % name)


def sketch_edges(sketch) -> Tuple[List[Edge], List[int]]:
    """The route edges of a sketch (lines and arcs that are not construction geometry) and the
    geometry indices it leaves out."""
    import Part

    edges, skipped = [], []
    for index, geo in enumerate(sketch.Geometry):
        try:
            construction = sketch.getConstruction(index)
        except Exception:
            construction = getattr(geo, "Construction", False)
        if construction:
            skipped.append(index)
            continue
        if isinstance(geo, Part.LineSegment):
            kind = "line"
        elif isinstance(geo, Part.ArcOfCircle):
            kind = "arc"
        else:
            skipped.append(index)
            continue
        a, b = geo.StartPoint, geo.EndPoint
        length = a.distanceToPoint(b) if kind == "line" else geo.length()
        edges.append(Edge(index, kind, (a.x, a.y), (b.x, b.y), length))
    return edges, skipped


class _PointIndex:
    """Numbers points, one number for all points within the tolerance of the first one seen."""

    def __init__(self, tolerance: float):
        self.tolerance = tolerance
        self.cell = max(tolerance, 1e-300)
        self.cells: Dict[Tuple[int, int], List[int]] = {}
        self.points: List[Tuple[float, float]] = []

    def number(self, p: Tuple[float, float]) -> int:
        cx, cy = math.floor(p[0] / self.cell), math.floor(p[1] / self.cell)
        for dx in (-1, 0, 1):
            for dy in (-1, 0, 1):
                for n in self.cells.get((cx + dx, cy + dy), ()):
                    q = self.points[n]
                    if math.hypot(p[0] - q[0], p[1] - q[1]) <= self.tolerance:
                        return n
        self.points.append(p)
        self.cells.setdefault((cx, cy), []).append(len(self.points) - 1)
        return len(self.points) - 1


def _chains(edges: List[Edge], index: _PointIndex) -> List[Tuple[List[Edge], List[bool]]]:
    """The chains of edges between free ends and branch points, each as (edges, reversed)."""
    ends = {}
    at: Dict[int, List[Edge]] = {}
    for edge in edges:
        a, b = index.number(edge.start), index.number(edge.end)
        ends[edge.index] = (a, b)
        at.setdefault(a, []).append(edge)
        at.setdefault(b, []).append(edge)
    used = set()
    chains = []
    for first in sorted(edges, key=lambda e: e.index):
        if first.index in used:
            continue
        used.add(first.index)
        # Walk forwards from the first edge's end, then backwards from its start.
        forward, backward = [], []
        for walk, point in ((forward, ends[first.index][1]), (backward, ends[first.index][0])):
            while len(at[point]) == 2:
                nxt = [e for e in at[point] if e.index not in used]
                if not nxt:
                    break
                edge = nxt[0]
                used.add(edge.index)
                a, b = ends[edge.index]
                walk.append((edge, a != point))
                point = b if a == point else a
        chain = [(e, not rev) for e, rev in reversed(backward)] + [(first, False)] + forward
        chains.append(([e for e, _ in chain], [r for _, r in chain]))
    return chains


def read_sketch(sketch, table: Optional[Table] = None, default_diameter: float = DEFAULT_DIAMETER,
                tolerance: float = DEFAULT_TOLERANCE, units: str = "mm",
                name: Optional[str] = None) -> SketchRoute:
    """Reads a sketch as a route. The table gives diameters and component texts by segment id,
    and, when it has an edges column, the segments themselves."""
    table = table or Table()
    edges, skipped = sketch_edges(sketch)
    if not edges:
        raise SketchError("sketch %s holds no lines or arcs" % sketch.Label)
    index = _PointIndex(tolerance)
    for edge in edges:
        index.number(edge.start)
        index.number(edge.end)

    segments: List[SegmentEdges] = []
    if table.edges:
        by_number = {edge.index + 1: edge for edge in edges}
        seen = {}
        for seg_id in table.order:
            numbers = table.edges.get(seg_id)
            if not numbers:
                continue
            group = []
            for number in numbers:
                if number not in by_number:
                    raise SketchError("segment %d names Edge%d, which is no line or arc of the "
                                      "sketch" % (seg_id, number))
                if number in seen:
                    raise SketchError("Edge%d is in segments %d and %d"
                                      % (number, seen[number], seg_id))
                seen[number] = seg_id
                group.append(by_number[number])
            segments.append(SegmentEdges(seg_id, group, [False] * len(group), 0.0))
        missing = sorted(set(by_number) - set(seen))
        if missing:
            raise SketchError("the table's edges leave out %s"
                              % ", ".join("Edge%d" % n for n in missing))
    else:
        for number, (group, rev) in enumerate(_chains(edges, index), start=1):
            segments.append(SegmentEdges(number, group, rev, 0.0))

    plain = []
    for seg in segments:
        seg.diameter = table.diameters.get(seg.id, default_diameter)
        seg.text = table.texts.get(seg.id)
        lines = []
        for edge, rev in zip(seg.edges, seg.reversed):
            # The layout sees every edge end at its point's one position.
            a = index.points[index.number(edge.start)]
            b = index.points[index.number(edge.end)]
            if rev:
                a, b = b, a
            lines.append(((a[0], a[1], 0.0), (b[0], b[1], 0.0)))
        entry = {"id": seg.id, "diameter": seg.diameter, "lines": lines}
        if seg.has_arcs:
            # Arcs reach the layout as chords: the true length comes with them.
            entry["length"] = seg.length
        plain.append(entry)
    components = {seg.id: seg.text for seg in segments if seg.text}
    route = krlayout.Route(segments=plain, components=components, units=units,
                           name=name or sketch.Label, source=sketch.Label)
    return SketchRoute(route, segments, skipped)
