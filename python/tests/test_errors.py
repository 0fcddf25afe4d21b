"""Mistakes: the module raises ValueError with the message the tool prints for the same mistake
(without the tool's "krlayout: " prefix)."""

import os
import warnings

import pytest

from support import example_path, run_tool, tool_error

import krlayout

ENGINE_BAY = example_path("engine-bay")

# Each case: keyword arguments of layout(), the same mistake on the command line, and the tool's
# exit code (2 a bad option, 3 a document the grid cannot hold).
OPTION_CASES = [
    ({"type": "angle"}, ["--type", "angle"], 2),
    ({"type": 3}, ["--type", "3"], 2),
    ({"type": -1}, ["--type", "-1"], 2),
    ({"grid": 0}, ["--grid", "0"], 2),
    ({"grid": -1}, ["--grid", "-1"], 2),
    ({"grid": -0.5}, ["--grid", "-0.5"], 2),
    ({"grid": float("nan")}, ["--grid", "nan"], 2),
    ({"grid": float("inf")}, ["--grid", "inf"], 2),
    ({"grid": 1e400}, ["--grid", "inf"], 2),
    ({"grid": "wide"}, ["--grid", "wide"], 2),
    ({"grid": (0.02, -0.5)}, ["--grid", "0.02,-0.5"], 2),
    ({"grid": (0, 0.02)}, ["--grid", "0,0.02"], 2),
    ({"grid_x": 0}, ["--grid-x", "0"], 2),
    ({"grid_y": "x"}, ["--grid-y", "x"], 2),
    ({"grid": 0.02, "grid_y": -2}, ["--grid", "0.02", "--grid-y", "-2"], 2),
    ({"clearance": 0.01}, ["--clearance", "0.01"], 2),
    ({"type": "length", "clearance": 0.01}, ["--type", "length", "--clearance", "0.01"], 2),
    ({"type": "formboard", "clearance": -0.01}, ["--type", "formboard", "--clearance", "-0.01"], 2),
    ({"type": 2, "clearance": float("nan")}, ["--type", "2", "--clearance", "nan"], 2),
    ({"type": 2, "clearance": float("inf")}, ["--type", "2", "--clearance", "inf"], 2),
    ({"type": 2, "clearance": "0.01m"}, ["--type", "2", "--clearance", "0.01m"], 2),
    ({"units": "furlong"}, ["--units", "furlong"], 2),
    ({"type": "angle", "grid": -1}, ["--type", "angle", "--grid", "-1"], 2),
    # The grid checks on the document.
    ({"grid": 100}, ["--grid", "100"], 3),
    ({"grid_x": 5, "grid_y": 0.02}, ["--grid-x", "5", "--grid-y", "0.02"], 3),
    ({"grid": 1e-9}, ["--grid", "1e-09"], 3),
    ({"units": "mm"}, ["--units", "mm"], 3),
]


@pytest.mark.parametrize("kwargs, args, code", OPTION_CASES)
def test_option_mistakes(kwargs, args, code):
    status, _, stderr = run_tool([ENGINE_BAY, "-q", "-m", "arrays"] + args)
    assert status == code
    route = krlayout.load(ENGINE_BAY)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", krlayout.LayoutWarning)
        with pytest.raises(ValueError) as caught:
            krlayout.layout(route, **kwargs)
    assert str(caught.value) == tool_error(stderr)


def test_warnings_come_before_the_refusal():
    # Read as millimetres the harness is implausibly short, and the default grid (20 mm) larger
    # than the whole route: the tool warns, then refuses; so does the module.
    _, _, stderr = run_tool([ENGINE_BAY, "-q", "-m", "arrays", "--units", "mm"])
    warned = [line[len("krlayout: warning: "):] for line in stderr.splitlines()
              if line.startswith("krlayout: warning: ")]
    assert len(warned) == 1
    with pytest.warns(krlayout.LayoutWarning) as caught:
        with pytest.raises(ValueError):
            krlayout.layout(krlayout.load(ENGINE_BAY), units="mm")
    assert [str(w.message) for w in caught] == warned


def test_warnings_of_a_result():
    route = krlayout.Route(
        [{"id": 1, "diameter": 0.01, "lines": [((0, 0), (0.4, 0))]},
         {"id": 2, "diameter": 0.01, "lines": [((0.4, 0), (0.4, 0.3))]}],
        components={1: "J1", 2: "1@X2@Lamp"})
    with pytest.warns(krlayout.LayoutWarning, match="names no connector"):
        result = krlayout.layout(route)
    assert result.ok
    (warning,) = result.warnings
    assert warning["kind"] == "component_text" and warning["component"] == 1


def test_wrong_argument_types():
    route = krlayout.load(ENGINE_BAY)
    for kwargs in ({"type": True}, {"type": 1.0}, {"type": None}, {"grid": [0.02]},
                   {"grid": (0.02, 0.02, 0.02)}, {"grid": object()}, {"grid_x": True},
                   {"clearance": [1]}, {"units": 5}):
        with pytest.raises(TypeError):
            krlayout.layout(route, **kwargs)
    with pytest.raises(TypeError):
        krlayout.layout(ENGINE_BAY)


def write(tmp_path, name, text):
    path = tmp_path / name
    path.write_bytes(text.encode("utf-8"))
    return str(path)


@pytest.mark.parametrize("name, text", [
    ("empty.json", ""),
    ("blank.json", "  \n"),
    ("broken.json", '{"segments": [\n  {"id": 1,'),
    ("nan.json", '{"segments": [{"id": 1, "value": NaN}]}'),
    ("no-segments.json", "{}"),
    ("unknown.json", '{"segments": [], "colour": "red"}'),
    ("big-id.json", '{"segments": [{"id": 4294967296, "value": 0.01}]}'),
    ("units.json", '{"units": "metres", "segments": []}'),
    ("point.json", '{"segments": [{"id": 1, "value": 0.01, "entities": '
                   '[{"kind": "line", "start": [0, 0], "end": [1, 0, 0]}]}]}'),
])
def test_documents_that_do_not_load(tmp_path, name, text):
    path = write(tmp_path, name, text)
    status, _, stderr = run_tool([path, "-q", "-m", "arrays"])
    assert status == 3
    with pytest.raises(ValueError) as caught:
        krlayout.load(path)
    assert str(caught.value) == tool_error(stderr)
    # The same text built into a route from Python says the same of its source.
    with pytest.raises(ValueError) as again:
        krlayout._core.Document.from_text(text, path)
    assert str(again.value) == str(caught.value)


def test_files_that_cannot_be_read(tmp_path):
    missing = str(tmp_path / "missing.json")
    folder = str(tmp_path)
    for path in (missing, folder):
        status, _, stderr = run_tool([path, "-q", "-m", "arrays"])
        assert status == 3
        with pytest.raises(ValueError) as caught:
            krlayout.load(path)
        assert str(caught.value) == tool_error(stderr)
    if os.geteuid() != 0:
        locked = write(tmp_path, "locked.json", '{"segments": []}')
        os.chmod(locked, 0)
        status, _, stderr = run_tool([locked, "-q"])
        with pytest.raises(ValueError) as caught:
            krlayout.load(locked)
        assert str(caught.value) == tool_error(stderr)
