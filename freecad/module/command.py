"""The command krlayout-freecad: lays out a sketch of a FreeCAD document into a new sketch."""

from __future__ import annotations

import argparse
import sys

import FreeCAD

from .reader import DEFAULT_DIAMETER, DEFAULT_TOLERANCE, SketchError
from .run import lay_out_sketch
from .writer import SolveError


def _parser():
    p = argparse.ArgumentParser(
        prog="krlayout-freecad",
        description="Lays out a route drawn as a FreeCAD sketch into a new sketch of the same "
                    "document; the input sketch is not changed.")
    p.add_argument("document", metavar="IN.FCStd", help="the FreeCAD document")
    p.add_argument("--sketch", required=True, metavar="NAME",
                   help="the route sketch, by name or label")
    p.add_argument("-o", "--output", metavar="OUT.FCStd",
                   help="where to save the document with the new sketch (default: IN.FCStd)")
    p.add_argument("-t", "--type", default="diameter",
                   help="layout type: diameter, length or formboard (or 0, 1, 2)")
    p.add_argument("--grid", metavar="X[,Y]", help="grid spacing (default 0.02 m in the units)")
    p.add_argument("--clearance", help="board layout: room between bundles")
    p.add_argument("--diameters", metavar="FILE",
                   help="segment table: a CSV file or a spreadsheet of the document (columns id, "
                        "diameter, optionally edges and text)")
    p.add_argument("--default-diameter", type=float, default=DEFAULT_DIAMETER,
                   help="diameter of segments the table does not give (default %(default)s)")
    p.add_argument("--tolerance", type=float, default=DEFAULT_TOLERANCE,
                   help="edge ends closer than this are one point (default %(default)s)")
    p.add_argument("--units", default="mm", help="the sketch's units (default mm, FreeCAD's)")
    p.add_argument("--lengths", action="store_true",
                   help="add length, angle and radius constraints: fully constrained")
    p.add_argument("--no-fillets", action="store_true", help="leave corners sharp")
    p.add_argument("--name", help="name of the new sketch (default: the input's name + Layout)")
    return p


def main(argv=None) -> int:
    """Runs the command; returns the exit code: 0 laid out and saved, 1 the route failed a check
    or was not laid out (nothing saved), 2 bad arguments or input."""
    args = _parser().parse_args(argv)
    try:
        doc = FreeCAD.openDocument(args.document)
    except Exception as e:
        print("krlayout-freecad: cannot open %s: %s" % (args.document, e), file=sys.stderr)
        return 2
    try:
        doc.UndoMode = 0
        outcome = lay_out_sketch(doc, args.sketch, type=args.type, grid=args.grid,
                                 clearance=args.clearance, table=args.diameters,
                                 default_diameter=args.default_diameter,
                                 tolerance=args.tolerance, units=args.units,
                                 lengths=args.lengths, name=args.name,
                                 fillets=not args.no_fillets)
    except (SketchError, SolveError, ValueError) as e:
        print("krlayout-freecad: %s" % e, file=sys.stderr)
        FreeCAD.closeDocument(doc.Name)
        return 2
    print(outcome.message)
    if not outcome.ok:
        FreeCAD.closeDocument(doc.Name)
        return 1
    if args.output:
        doc.saveAs(args.output)
    else:
        doc.save()
    FreeCAD.closeDocument(doc.Name)
    return 0
