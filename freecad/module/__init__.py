"""Lays out a route drawn as a FreeCAD sketch, in FreeCAD.

The route is read from the sketch (``read_sketch``: every chain of lines and arcs between branch
points and free ends is one segment), laid out by ``krlayout.layout`` and written into a new
sketch (``write_sketch``) with Horizontal, Vertical and Coincident constraints and fillets; the
input sketch is never changed. ``lay_out_sketch`` does all three as one undo step, from FreeCAD's
Python console or a macro::

    import krlayout.freecad as kf
    outcome = kf.lay_out_sketch(App.ActiveDocument, "Route", type="formboard")
    outcome.written.sketch      # the new sketch

A route that fails a check (a closed loop, disjoint pieces) is not laid out: its edges are
selected (in the GUI) and the report view says "Loop Segment" or "Disjoint Segment" with the ids.
``main`` is the command ``krlayout-freecad``.
"""

from __future__ import annotations

import os
import sys

#: Where Debian's FreeCAD keeps its Python modules (FreeCAD.so, Part.so, Sketcher.so).
FREECAD_LIB_DIRS = ("/usr/lib/freecad-python3/lib", "/usr/lib/freecad/lib")


def import_freecad():
    """Imports FreeCAD, from Debian's FreeCAD folder when this interpreter does not find it by
    itself (plain python3 rather than FreeCAD's own console); returns the FreeCAD module."""
    try:
        import FreeCAD
    except ImportError:
        extra = os.environ.get("KRLAYOUT_FREECAD_LIB")
        for folder in ([extra] if extra else []) + list(FREECAD_LIB_DIRS):
            if os.path.isfile(os.path.join(folder, "FreeCAD.so")) and folder not in sys.path:
                sys.path.append(folder)
        import FreeCAD
    import Part      # noqa: F401  (Part and Sketcher register their types with FreeCAD)
    import Sketcher  # noqa: F401
    return FreeCAD


import_freecad()

from .reader import (DEFAULT_DIAMETER, DEFAULT_TOLERANCE, Edge, SegmentEdges, SketchError,  # noqa: E402
                     SketchRoute, Table, find_table, read_sketch, read_table_csv,
                     read_table_sheet)
from .writer import SOLVE_CODES, SolveError, Written, write_sketch  # noqa: E402
from .run import Outcome, lay_out_sketch, find_sketch, report  # noqa: E402
from .command import main  # noqa: E402

__all__ = [
    "DEFAULT_DIAMETER", "DEFAULT_TOLERANCE", "Edge", "Outcome", "SOLVE_CODES", "SegmentEdges",
    "SketchError", "SketchRoute", "SolveError", "Table", "Written", "find_sketch", "find_table",
    "import_freecad", "lay_out_sketch", "main", "read_sketch", "read_table_csv",
    "read_table_sheet", "report", "write_sketch",
]
