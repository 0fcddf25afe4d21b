"""Type stubs of the krlayout package: lays out routing sketches (wire and cable harness routes)."""

import os
from collections.abc import Iterable, Mapping
from dataclasses import dataclass
from typing import Any, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

__version__: str
__all__: list[str]

#: The layout types by number: 0 by diameter, 1 by length, 2 the board layout.
LAYOUT_TYPES: Tuple[str, ...]

Point2 = Tuple[float, float]
Point3 = Tuple[float, float, float]
Number = Union[int, float]

class LayoutWarning(UserWarning):
    """A warning about the input that the layout went on with (component texts that name no
    connector, segment lengths implausible for the units)."""

@dataclass(frozen=True)
class Connector:
    """A connector at a free end of a segment."""

    name: str
    at: Point2

@dataclass(frozen=True)
class Segment:
    """One segment of a layout result."""

    id: int
    length: float
    diameter: float
    lines: Tuple[Tuple[Point3, Point3], ...]
    axes: Tuple[int, ...]
    connectors: Tuple[Connector, ...]
    input_lines: Tuple[Tuple[Point2, Point2], ...]
    failed: bool

@dataclass(frozen=True)
class DroppedSegment:
    """A segment of the route that the result does not hold, and why."""

    id: int
    reason: str
    lost: bool
    text: str
    kept_segment: Optional[int] = ...
    connector: Optional[str] = ...

class Route:
    """A route: segments with their lines, the component map and the units."""

    def __init__(
        self,
        segments: Iterable[Any],
        components: Optional[Mapping[int, str]] = ...,
        units: Optional[str] = ...,
        name: str = ...,
        source: str = ...,
    ) -> None:
        """Builds a route from Python data: each segment a mapping or an object with ``id``,
        ``diameter``, ``lines`` (pairs of (x, y, z) or (x, y) points) and optionally ``length``."""
    @property
    def name(self) -> str:
        """The route's title."""
    @property
    def source(self) -> str:
        """What messages and results call the route."""
    @property
    def units(self) -> str:
        """The route's units; "m" when it gives none."""
    @property
    def units_given(self) -> bool:
        """Whether the route gives its units."""
    @property
    def components(self) -> dict[int, str]:
        """The component map: text by segment id."""
    @property
    def segment_lengths(self) -> list[float]:
        """The true length of every segment, in the route's order."""
    def to_json(self) -> str:
        """The route document (JSON text)."""

def load(path: Union[str, os.PathLike[str]]) -> Route:
    """Reads a route document; raises ValueError with the tool's message when it cannot."""

class Result:
    """What a layout gave."""

    status: int
    status_text: str
    laid_out: bool
    complete: bool
    segments: Tuple[Segment, ...]
    points: npt.NDArray[np.float64]
    axes: npt.NDArray[np.int64]
    failed_ids: list[int]
    message: str
    messages: list[Tuple[int, str]]
    removed_ids: list[int]
    dropped: list[DroppedSegment]
    quality: dict[str, Any]
    warnings: list[dict[str, Any]]
    units: str
    units_source: str
    options: dict[str, Any]
    layout_type: int
    layout_type_name: str
    grid: Tuple[float, float]
    clearance: float
    crowded_points: Optional[int]
    source: str
    document: str
    @property
    def ok(self) -> bool:
        """Whether the route was laid out (status 0)."""
    def to_json(self) -> str:
        """The result document, as the command-line tool's .json output in arrays mode."""
    def to_dict(self) -> dict[str, Any]:
        """The result document as Python data."""

def layout(
    route: Route,
    type: Union[str, int] = ...,
    grid: Union[None, Number, str, Sequence[Number]] = ...,
    grid_x: Union[None, Number, str] = ...,
    grid_y: Union[None, Number, str] = ...,
    clearance: Union[None, Number, str] = ...,
    units: Optional[str] = ...,
) -> Result:
    """Lays the route out on plain data; raises ValueError with the tool's message for a value
    it refuses. The GIL is released while the layout runs."""
