"""Lays out routing sketches: wire and cable harness routes made of segments (each with an id, a
length and a diameter, drawn as a chain of lines).

A route comes from a route document (``load``) or from Python data (``Route``); ``layout`` lays
it out and returns a ``Result`` with the laid-out lines per segment, the output arrays as NumPy
arrays, the quality figures and the result document (``Result.to_json``) that the command-line
tool ``krlayout`` writes for the same route in arrays mode (``--mode arrays``)::

    import krlayout

    route = krlayout.load("harness.json")
    result = krlayout.layout(route, type="length", grid=0.02)
    result.points        # n x 6: start x, y, z and end x, y, z of every line
    result.axes          # n: 2 along y, 1 along x, 0 neither

The layout runs on plain data, without a host, and releases the GIL while it runs. Values the
tool refuses raise ``ValueError`` with the tool's message; a route that fails a check (a closed
loop, disjoint pieces) does not raise: its ``Result`` gives the status and the segments named.
"""

from __future__ import annotations

import json
import math
import numbers
import operator
import os
import warnings
from collections.abc import Iterable, Mapping
from dataclasses import dataclass
from typing import Any, Optional, Sequence, Tuple, Union

import numpy as np

from . import _core

__version__: str = _core.__version__

__all__ = [
    "Connector",
    "DroppedSegment",
    "LAYOUT_TYPES",
    "LayoutWarning",
    "Result",
    "Route",
    "Segment",
    "layout",
    "load",
]

#: The layout types by number: 0 by diameter, 1 by length, 2 the board layout (every segment one
#: straight line at its true length).
LAYOUT_TYPES: Tuple[str, ...] = ("diameter", "length", "formboard")

Point2 = Tuple[float, float]
Point3 = Tuple[float, float, float]

_MISSING = object()
_ID_RANGE = range(-(2**31), 2**31)


class LayoutWarning(UserWarning):
    """Something about the input that the layout went on with: a component text that names no
    connector, or segment lengths that are implausible for the route's units (a harness drawn in
    millimetres but read as metres). The same warnings are in ``Result.warnings``."""


@dataclass(frozen=True)
class Connector:
    """A connector at a free end of a segment, as the segment's component text names it."""

    #: The connector's name, with the pins when the text gives them.
    name: str
    #: Where it sits: the end of the laid-out segment (x, y).
    at: Point2


@dataclass(frozen=True)
class Segment:
    """One segment of a layout result."""

    #: The segment id.
    id: int
    #: The true length: the given length, or the sum of the segment's input lines.
    length: float
    #: The diameter (the route value).
    diameter: float
    #: The laid-out lines, each ((x, y, z), (x, y, z)), in the order of the output arrays;
    #: empty when the route was not laid out.
    lines: Tuple[Tuple[Point3, Point3], ...]
    #: The axis code of every line: 2 along y, 1 along x, 0 neither.
    axes: Tuple[int, ...]
    #: The connectors at the segment's ends.
    connectors: Tuple[Connector, ...]
    #: The input lines, each ((x, y), (x, y)).
    input_lines: Tuple[Tuple[Point2, Point2], ...]
    #: Whether a failed check names this segment.
    failed: bool


@dataclass(frozen=True)
class DroppedSegment:
    """A segment of the route that the result does not hold, and why."""

    #: The segment id.
    id: int
    #: ``"final_check"``: the layout's final check deleted it (a loss); ``"multi_pin_clean_up"``:
    #: of several segments between the same two points to one connector, only the longest is kept.
    reason: str
    #: True unless the removal was deliberate (the multi-pin clean-up).
    lost: bool
    #: The reason in words.
    text: str
    #: Multi-pin clean-up: the segment kept in its place.
    kept_segment: Optional[int] = None
    #: Multi-pin clean-up: the connector both run to.
    connector: Optional[str] = None


def _type_name(value: Any) -> str:
    """The name of a value's type, for messages (layout() has a parameter named type, which
    hides the builtin there)."""
    return value.__class__.__name__


def _is_number(value: Any) -> bool:
    """Whether the value is a real number (NumPy's included), and not a bool."""
    return isinstance(value, numbers.Real) and not isinstance(value, bool)


def _finite(value: Any, what: str) -> float:
    """The value as a finite float; TypeError or ValueError naming `what` otherwise."""
    if not _is_number(value):
        raise TypeError("%s: expected a number, got %s" % (what, type(value).__name__))
    number = float(value)
    if not math.isfinite(number):
        raise ValueError("%s: %r is not a finite number" % (what, value))
    return number


def _identifier(value: Any, what: str) -> int:
    """The value as a 32-bit integer id; TypeError or ValueError naming `what` otherwise."""
    if isinstance(value, bool):
        raise TypeError("%s: expected an integer id, got bool" % what)
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError("%s: expected an integer id, got %s" % (what, type(value).__name__)) from None
    if number not in _ID_RANGE:
        raise ValueError("%s: %d does not fit a 32-bit id" % (what, number))
    return number


def _point(value: Any, what: str) -> list:
    """A point (x, y) or (x, y, z) as [x, y, z], z 0 when not given."""
    try:
        coordinates = list(value)
    except TypeError:
        raise TypeError("%s: expected a point (x, y) or (x, y, z), got %s"
                        % (what, type(value).__name__)) from None
    if len(coordinates) not in (2, 3):
        raise ValueError("%s: expected 2 or 3 coordinates, got %d" % (what, len(coordinates)))
    point = [_finite(c, "%s[%d]" % (what, i)) for i, c in enumerate(coordinates)]
    if len(point) == 2:
        point.append(0.0)
    return point


def _field(segment: Any, name: str) -> Any:
    """A segment's field: a mapping's item or an object's attribute; _MISSING without one."""
    if isinstance(segment, Mapping):
        return segment.get(name, _MISSING)
    return getattr(segment, name, _MISSING)


def _segment_entry(segment: Any, index: int) -> dict:
    """A segment given in Python as the route document's segment: id, value (the diameter) and
    a line entity per line."""
    what = "segments[%d]" % index
    ident = _field(segment, "id")
    if ident is _MISSING:
        raise ValueError("%s: has no id" % what)
    ident = _identifier(ident, what + ".id")
    what = "segments[%d] (id %d)" % (index, ident)
    diameter = _field(segment, "diameter")
    if diameter is _MISSING:
        raise ValueError("%s: has no diameter" % what)
    diameter = _finite(diameter, what + ".diameter")
    lines = _field(segment, "lines")
    if lines is _MISSING:
        raise ValueError("%s: has no lines" % what)
    if isinstance(lines, (str, bytes)) or not isinstance(lines, Iterable):
        raise TypeError("%s.lines: expected a sequence of (start, end) pairs" % what)
    entities = []
    for k, line in enumerate(lines):
        where = "%s.lines[%d]" % (what, k)
        try:
            ends = list(line)
        except TypeError:
            raise TypeError("%s: expected a (start, end) pair, got %s"
                            % (where, type(line).__name__)) from None
        if len(ends) != 2:
            raise ValueError("%s: expected a (start, end) pair, got %d items" % (where, len(ends)))
        entities.append({"kind": "line",
                         "start": _point(ends[0], where + "[0]"),
                         "end": _point(ends[1], where + "[1]")})
    length = _field(segment, "length")
    if length is not _MISSING and length is not None:
        length = _finite(length, what + ".length")
        if length < 0.0:
            raise ValueError("%s.length: %r is negative" % (what, length))
        # A segment's length is the sum of its entities' lengths: the first line carries the
        # whole length and the others none, which adds up to exactly the length given. Without
        # lines an entity with a length and no curve carries it.
        if entities:
            entities[0]["length"] = length
            for entity in entities[1:]:
                entity["length"] = 0.0
        else:
            entities.append({"kind": "length", "length": length})
    return {"id": ident, "value": diameter, "entities": entities}


class Route:
    """A route: its segments with their lines, the component map and the units.

    ``Route(segments, components=None, units=None, name="", source="<route>")`` builds one from
    Python data; ``load(path)`` reads one from a route document. Both become the same route
    document (JSON, ``to_json()``), so a route built from the data of a document lays out
    exactly as the document does.

    Each segment is a mapping or an object with the attributes:

    - ``id``: a 32-bit integer;
    - ``diameter``: a finite number (the route value);
    - ``lines``: the segment's lines, each a pair (start, end) of points (x, y, z) or (x, y);
      segments meet where line ends coincide;
    - ``length`` (optional): the true length, a finite number of 0 or more; without it (or
      with None) the sum of the lines' lengths.

    ``components`` maps segment ids to component texts (``"PINS@CONNECTOR@NAME"``, or two such
    joined by ``":"``). ``units`` is the unit of every number (``"m"``, ``"cm"``, ``"mm"``,
    ``"in"`` or ``"ft"``); None gives none, which reads as metres. ``name`` is the route's
    title and ``source`` what messages and results call it.

    Raises TypeError or ValueError for data that is not a route (the document loader's message
    for what it refuses).
    """

    __slots__ = ("_document", "_name")

    def __init__(self, segments: Iterable[Any], components: Optional[Mapping[int, str]] = None,
                 units: Optional[str] = None, name: str = "", source: str = "<route>") -> None:
        if isinstance(segments, (str, bytes, Mapping)) or not isinstance(segments, Iterable):
            raise TypeError("segments: expected a sequence of segments")
        if not isinstance(name, str):
            raise TypeError("name: expected a str, got %s" % type(name).__name__)
        if not isinstance(source, str):
            raise TypeError("source: expected a str, got %s" % type(source).__name__)
        if units is not None and not isinstance(units, str):
            raise TypeError("units: expected a str or None, got %s" % type(units).__name__)
        document: dict = {}
        if name:
            document["name"] = name
        if units is not None:
            document["units"] = units
        if components:
            entries = []
            for ident, text in components.items():
                ident = _identifier(ident, "components")
                if not isinstance(text, str):
                    raise TypeError("components[%d]: expected a str, got %s"
                                    % (ident, type(text).__name__))
                entries.append({"id": ident, "text": text})
            document["components"] = entries
        document["segments"] = [_segment_entry(s, i) for i, s in enumerate(segments)]
        # Every float is written in its shortest exact form, so the loader reads the same numbers.
        text = json.dumps(document, ensure_ascii=False, allow_nan=False, indent=1)
        self._document = _core.Document.from_text(text, source)
        self._name: Optional[str] = name

    @classmethod
    def _of(cls, document: Any) -> "Route":
        """The route of a document the extension module has loaded."""
        route = cls.__new__(cls)
        route._document = document
        route._name = None
        return route

    @property
    def name(self) -> str:
        """The route's title (the document's ``name``; empty when it has none)."""
        if self._name is None:
            self._name = str(json.loads(self._document.text).get("name", ""))
        return self._name

    @property
    def source(self) -> str:
        """What messages and results call the route: the path it was loaded from, or the
        ``source`` given."""
        return self._document.source

    @property
    def units(self) -> str:
        """The route's units; ``"m"`` when it gives none."""
        return self._document.units

    @property
    def units_given(self) -> bool:
        """Whether the route gives its units."""
        return self._document.units_given

    @property
    def components(self) -> dict:
        """The component map: text by segment id."""
        return dict(self._document.components)

    @property
    def segment_lengths(self) -> list:
        """The true length of every segment, in the route's order."""
        return list(self._document.segment_lengths)

    def to_json(self) -> str:
        """The route document (JSON text): the file's text for a loaded route."""
        return self._document.text

    def __repr__(self) -> str:
        return "<krlayout.Route %r: %d segments, units %s>" % (
            self.source, len(self._document.segment_lengths), self.units)


def load(path: Union[str, "os.PathLike[str]"]) -> Route:
    """Reads the route document at ``path`` (JSON; the format is the command-line tool's).

    Raises ValueError with the tool's message when the file cannot be read or is not a route
    document."""
    return Route._of(_core.Document.load(os.fspath(path)))


def _number_text(value: Any, what: str) -> Optional[str]:
    """The command line's spelling of a number, so that the tool's checks read it and name it
    as the tool would: 2 as "2", 0.5 as "0.5", nan as "nan". Text is taken as it is, None stays
    None (not given)."""
    if value is None or isinstance(value, str):
        return value
    if isinstance(value, bool) or not isinstance(value, numbers.Real):
        raise TypeError("%s: expected a number, got %s" % (what, type(value).__name__))
    if isinstance(value, numbers.Integral):
        return str(int(value))
    return repr(float(value))


def _grid_text(value: Any) -> Optional[str]:
    """The grid as the command line's --grid spells it: "X" or "X,Y"."""
    if value is None or isinstance(value, str) or _is_number(value):
        return _number_text(value, "grid")
    try:
        pair = list(value)
    except TypeError:
        raise TypeError("grid: expected a number or an (x, y) pair, got %s"
                        % type(value).__name__) from None
    if len(pair) != 2:
        raise TypeError("grid: expected a number or an (x, y) pair, got %d items" % len(pair))
    return "%s,%s" % (_number_text(pair[0], "grid"), _number_text(pair[1], "grid"))


def _type_text(value: Any) -> str:
    """The layout type as the command line's --type spells it: a name, or a number."""
    if isinstance(value, str):
        return value
    if isinstance(value, bool) or not isinstance(value, numbers.Integral):
        raise TypeError("type: expected a name or a number, got %s" % type(value).__name__)
    return str(int(value))


class Result:
    """What a layout gave. Attributes:

    - ``status`` (0 laid out; 1 no route segments; 7 a closed loop; 8 disjoint pieces),
      ``status_text``, ``ok`` (status 0), ``laid_out``, ``complete`` (laid out and no segment
      lost; the multi-pin clean-up's removals do not count);
    - ``segments``: the laid-out segments (``Segment``) in the order of the output arrays; when
      the route was not laid out, its segments with their input lines and no lines;
    - ``points``: the output arrays' points, a float64 array of n x 6 (start x, y, z, end x, y,
      z of every line); ``axes``: their axis codes, an int64 array of n;
    - ``failed_ids`` and ``message`` (``"Loop Segment"``, ``"Disjoint Segment"``): what a failed
      check names; ``messages``: (segment id, text) of every segment it names;
    - ``removed_ids`` and ``dropped`` (``DroppedSegment``): segments of the route that the
      result does not hold;
    - ``quality``: the quality figures (crossings, overlaps, pairs closer than the clearance,
      length deviations, extent, crowded points for the board layout), as the result document
      gives them;
    - ``warnings``: warnings about the input, as the result document gives them;
    - ``units``, ``units_source``, ``layout_type``, ``layout_type_name``, ``grid`` (x, y),
      ``clearance`` (the one measured against), ``crowded_points`` (board layout; None for the
      others), ``options``, ``source``, ``document`` (the route's name).
    """

    def __init__(self, outcome: Any) -> None:
        f = outcome.fields()
        self._outcome = outcome
        self.status: int = f["status"]
        self.status_text: str = f["status_text"]
        self.laid_out: bool = f["laid_out"]
        self.complete: bool = f["complete"]
        self.failed_ids: list = list(f["failed_ids"])
        self.message: str = f["message"]
        self.messages: list = list(f["messages"])
        failed = set(self.failed_ids)
        self.segments: Tuple[Segment, ...] = tuple(
            Segment(id=s["id"], length=s["length"], diameter=s["diameter"], lines=s["lines"],
                    axes=s["axes"],
                    connectors=tuple(Connector(name, at) for name, at in s["connectors"]),
                    input_lines=s["input_lines"], failed=s["id"] in failed)
            for s in f["segments"])
        self.points: np.ndarray = f["points"]
        self.axes: np.ndarray = f["axes"]
        self.removed_ids: list = list(f["removed_ids"])
        self.dropped: list = [DroppedSegment(**d) for d in f["dropped"]]
        self.quality: dict = f["quality"]
        self.warnings: list = f["warnings"]
        self.units: str = f["units"]
        self.units_source: str = f["units_source"]
        self.options: dict = f["options"]
        self.layout_type: int = f["layout_type"]
        self.layout_type_name: str = self.options["layout_type_name"]
        self.grid: Tuple[float, float] = f["grid"]
        self.clearance: float = f["clearance"]
        self.crowded_points: Optional[int] = f["crowded_points"]
        self.source: str = f["source"]
        self.document: str = f["document"]

    @property
    def ok(self) -> bool:
        """Whether the route was laid out (status 0)."""
        return self.status == 0

    def to_json(self) -> str:
        """The result document: the same text as the command-line tool's ``.json`` output for
        the same route and options in arrays mode."""
        return self._outcome.to_json()

    def to_dict(self) -> dict:
        """The result document as Python data."""
        return json.loads(self.to_json())

    def __repr__(self) -> str:
        return "<krlayout.Result %r: status %d (%s), %d segments, %d lines>" % (
            self.source, self.status, self.status_text, len(self.segments), len(self.points))


def layout(route: Route, type: Union[str, int] = "diameter",
           grid: Union[None, float, str, Sequence[float]] = None,
           grid_x: Union[None, float, str] = None, grid_y: Union[None, float, str] = None,
           clearance: Union[None, float, str] = None, units: Optional[str] = None) -> Result:
    """Lays the route out on plain data (the tool's arrays mode) and returns a ``Result``.

    - ``type``: ``"diameter"`` (0, the default), ``"length"`` (1) or ``"formboard"`` (2, every
      segment one straight line at its true length), any case;
    - ``grid``: the grid spacing, or an (x, y) pair; ``grid_x``, ``grid_y``: one direction
      each (a single one given alone applies to both). Default 0.02 m in the route's units.
      Spacings are finite numbers greater than zero;
    - ``clearance``: board layout only: the least distance between segments that do not meet,
      a finite number of 0 or more (default: the larger grid spacing);
    - ``units``: the route's units (``"m"``, ``"cm"``, ``"mm"``, ``"in"``, ``"ft"``) instead of
      its own.

    Numbers may also be given as the command line spells them (``grid="0.02,0.05"``).

    Raises ValueError with the command-line tool's message for a value it refuses, and for a
    grid that cannot hold the route (coarser than the whole route, or needing more lattice nodes
    than the memory budget allows). A route that fails a check (a closed loop, disjoint pieces)
    is not an error: the result gives its status and the segments the check names. Warnings
    about the input are issued as ``LayoutWarning`` and kept in ``Result.warnings``.

    The GIL is released while the layout runs, so other Python threads go on meanwhile.
    """
    if not isinstance(route, Route):
        raise TypeError("route: expected a krlayout.Route, got %s" % _type_name(route))
    if units is not None and not isinstance(units, str):
        raise TypeError("units: expected a str or None, got %s" % _type_name(units))
    outcome, problem, messages = _core.layout(
        route._document, _type_text(type), _grid_text(grid), _number_text(grid_x, "grid_x"),
        _number_text(grid_y, "grid_y"), _number_text(clearance, "clearance"), units)
    # As the tool does: the warnings first, then the grid checks' verdict.
    for message in messages:
        warnings.warn("%s: %s" % (route.source, message), LayoutWarning, stacklevel=2)
    if problem:
        raise ValueError(problem)
    return Result(outcome)
