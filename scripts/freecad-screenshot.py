"""Takes the README's FreeCAD screenshots: the bundled engine-bay harness drawn as a route sketch,
then laid out as a board drawing into a new sketch, each shown alone in FreeCAD's window.

Run inside the FreeCAD GUI (Debian's `freecad`, not only `freecad-python3`) under a virtual
display (`xvfb`), from the project root, after building the Python package into build/ci-plain
(scripts/run-tests does):

    QTWEBENGINE_DISABLE_SANDBOX=1 xvfb-run -a -s "-screen 0 1600x1000x24" \
        freecad scripts/freecad-screenshot.py

It writes docs/freecad-before.png and docs/freecad-after.png and leaves FreeCAD.
"""
import os
import sys
import time

ROOT = os.getcwd()
sys.path.insert(0, os.environ.get("KRLAYOUT_PYTHON_DIR", os.path.join(ROOT, "build", "ci-plain", "python")))
sys.path.insert(0, os.path.join(ROOT, "freecad", "tests"))
os.environ.setdefault("KRLAYOUT_EXAMPLES", os.path.join(ROOT, "tool", "examples"))

import FreeCAD  # noqa: E402
import FreeCADGui  # noqa: E402
from PySide2 import QtWidgets  # noqa: E402

import krlayout.freecad as kf  # noqa: E402
import support  # noqa: E402  (draws a route document as a sketch, as the tests do)

doc = FreeCAD.newDocument("EngineBay")
sketch, table = support.draw_document(doc, support.load_example("engine-bay"))
outcome = kf.lay_out_sketch(doc, sketch, type="formboard", table=table, units="m")
doc.recompute()
laid_out = outcome.written.sketch

FreeCADGui.getMainWindow().showMaximized()
gui_doc = FreeCADGui.getDocument(doc.Name)
for name, shown in (("before", sketch), ("after", laid_out)):
    for o in (sketch, laid_out):
        gui_doc.getObject(o.Name).Visibility = o is shown
    view = gui_doc.activeView()
    view.viewTop()
    view.fitAll()
    # Let the tree and the 3D view catch up before the window is grabbed.
    for _ in range(20):
        FreeCADGui.updateGui()
        QtWidgets.QApplication.processEvents()
        time.sleep(0.05)
    QtWidgets.QApplication.primaryScreen().grabWindow(0).save(
        os.path.join(ROOT, "docs", "freecad-%s.png" % name))
os._exit(0)
