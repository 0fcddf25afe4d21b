"""One layout of a FreeCAD sketch: read, check, lay out, write, as one undo step."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Optional

import FreeCAD

import krlayout

from .reader import (DEFAULT_DIAMETER, DEFAULT_TOLERANCE, SketchError, SketchRoute, Table,
                     find_table, read_sketch)
from .writer import Written, write_sketch

#: The name of the undo step a layout makes.
TRANSACTION = "Lay out route"


@dataclass
class Outcome:
    """What lay_out_sketch did: the route read, the layout result and the sketch written (None
    when the route failed a check or was not laid out)."""

    route: SketchRoute
    result: "krlayout.Result"
    written: Optional[Written]
    message: str

    @property
    def ok(self) -> bool:
        return self.written is not None


def report(text: str, error: bool = False) -> None:
    """A line in FreeCAD's report view (the console without the GUI)."""
    if error:
        FreeCAD.Console.PrintError(text + "\n")
    else:
        FreeCAD.Console.PrintMessage(text + "\n")


def find_sketch(doc, name: str):
    """The sketch of the document with this name or label."""
    obj = doc.getObject(name)
    if obj is None:
        found = doc.getObjectsByLabel(name)
        obj = found[0] if found else None
    if obj is None or not obj.isDerivedFrom("Sketcher::SketchObject"):
        raise SketchError("document %s has no sketch called %r" % (doc.Label, name))
    return obj


def _select(doc, sketch, names) -> None:
    if not FreeCAD.GuiUp:
        return
    import FreeCADGui
    FreeCADGui.Selection.clearSelection()
    for name in names:
        FreeCADGui.Selection.addSelection(doc.Name, sketch.Name, name)


def lay_out_sketch(doc, sketch, type="diameter", grid=None, clearance=None, table=None,
                   default_diameter: float = DEFAULT_DIAMETER,
                   tolerance: float = DEFAULT_TOLERANCE, units: str = "mm",
                   lengths: bool = False, name: Optional[str] = None, fillets: bool = True,
                   check_solve: bool = True) -> Outcome:
    """Lays out the route drawn in ``sketch`` (an object or its name or label) into a new sketch
    of ``doc``, as one undo step. ``table`` is a Table, or the path of a CSV file or the name of
    a spreadsheet in the document; ``type``, ``grid`` and ``clearance`` are krlayout.layout's.
    A route that fails a check selects its offending edges, reports them and writes nothing."""
    if isinstance(sketch, str):
        sketch = find_sketch(doc, sketch)
    if isinstance(table, str):
        table = find_table(doc, table)
    route = read_sketch(sketch, table=table, default_diameter=default_diameter,
                        tolerance=tolerance, units=units)
    result = krlayout.layout(route.route, type=type, grid=grid, clearance=clearance)
    if result.status != 0:
        if result.failed_ids:
            ids = sorted(result.failed_ids)
            message = "%s %s" % (result.message, " ".join(str(i) for i in ids))
            _select(doc, sketch, route.edge_names(ids))
        else:
            message = result.message or result.status_text
        report("%s: %s" % (sketch.Label, message), error=True)
        return Outcome(route, result, None, message)

    doc.openTransaction(TRANSACTION)
    try:
        written = write_sketch(doc, result, name=name or (sketch.Name + "Layout"),
                               placement=sketch.Placement, lengths=lengths, fillets=fillets,
                               check=check_solve)
        written.sketch.Label = name or (sketch.Label + " layout")
    except Exception:
        doc.abortTransaction()
        raise
    doc.commitTransaction()
    message = "%s: %d segments laid out (%s) into %s" % (
        sketch.Label, len(result.segments), result.layout_type_name, written.sketch.Label)
    if result.removed_ids:
        message += "; not drawn: %s" % " ".join(str(i) for i in result.removed_ids)
    report(message)
    return Outcome(route, result, written, message)
