"""A route read from a document and the same route built from Python data lay out identically."""

import json
import types

import numpy as np
import pytest

from support import EXAMPLES, TYPES, example_path, route_data

import krlayout


def same_results(a, b):
    assert a.to_json() == b.to_json()
    assert a.points.tobytes() == b.points.tobytes()
    assert a.axes.tolist() == b.axes.tolist()
    assert a.segments == b.segments
    assert (a.status, a.failed_ids, a.removed_ids, a.quality) == (
        b.status, b.failed_ids, b.removed_ids, b.quality)


@pytest.mark.parametrize("layout_type", TYPES)
@pytest.mark.parametrize("name", EXAMPLES)
def test_load_and_data_agree(name, layout_type):
    path = example_path(name)
    loaded = krlayout.load(path)
    data = route_data(path)
    # The same source, so that even the result documents' "source" agrees.
    built = krlayout.Route(source=path, **data)
    assert built.name == loaded.name and built.units == loaded.units
    assert built.components == loaded.components
    assert built.segment_lengths == loaded.segment_lengths
    same_results(krlayout.layout(loaded, type=layout_type),
                 krlayout.layout(built, type=layout_type))


@pytest.mark.parametrize("name", EXAMPLES)
def test_other_spellings_of_the_data(name):
    path = example_path(name)
    reference = krlayout.layout(krlayout.load(path))
    data = route_data(path)

    # Segments as objects with attributes.
    objects = [types.SimpleNamespace(**s) for s in data["segments"]]
    same_results(reference, krlayout.layout(krlayout.Route(
        objects, data["components"], data["units"], data["name"], source=path)))

    # Points (x, y): the examples are flat.
    flat = [dict(s, lines=[(a[:2], b[:2]) for a, b in s["lines"]]) for s in data["segments"]]
    assert all(a[2] == 0.0 and b[2] == 0.0 for s in data["segments"] for a, b in s["lines"])
    same_results(reference, krlayout.layout(krlayout.Route(
        flat, data["components"], data["units"], data["name"], source=path)))

    # Lines as NumPy arrays, ids and diameters as NumPy scalars.
    arrays = [{"id": np.int32(s["id"]), "diameter": np.float64(s["diameter"]),
               "lines": np.array(s["lines"], dtype=np.float64).reshape(-1, 2, 3)}
              for s in data["segments"]]
    same_results(reference, krlayout.layout(krlayout.Route(
        arrays, data["components"], data["units"], data["name"], source=path)))

    # The lengths given: the same as the sums of the lines.
    loaded = krlayout.load(path)
    lengths = [dict(s, length=length)
               for s, length in zip(data["segments"], loaded.segment_lengths)]
    same_results(reference, krlayout.layout(krlayout.Route(
        lengths, data["components"], data["units"], data["name"], source=path)))


def test_route_document_of_data_is_a_route_document(tmp_path):
    path = example_path("engine-bay")
    built = krlayout.Route(source=path, **route_data(path))
    written = tmp_path / "engine-bay.json"
    written.write_text(built.to_json(), encoding="utf-8")
    again = krlayout.load(written)
    result = krlayout.layout(again)
    reference = krlayout.layout(krlayout.load(path))
    assert result.points.tobytes() == reference.points.tobytes()
    assert krlayout.load(path).to_json() == open(path, encoding="utf-8").read()


def test_given_lengths_are_kept():
    lines = [((0.0, 0.0), (0.1, 0.0)), ((0.1, 0.0), (0.1, 0.2))]
    route = krlayout.Route([
        {"id": 1, "diameter": 0.01, "lines": lines[:1], "length": 0.35},
        {"id": 2, "diameter": 0.008, "lines": lines[1:], "length": None},
        {"id": 3, "diameter": 0.005, "lines": [((0.1, 0.2), (0.3, 0.2)), ((0.3, 0.2), (0.3, 0.3))],
         "length": 1.0 / 3.0},
    ])
    assert route.segment_lengths == [0.35, 0.2, 1.0 / 3.0]
    result = krlayout.layout(route, type="formboard")
    assert result.ok
    lengths = {s.id: s.length for s in result.segments}
    assert lengths == {1: 0.35, 2: 0.2, 3: 1.0 / 3.0}
    rows = {row["id"]: row["true_length"] for row in result.quality["segment_lengths"]}
    assert rows == lengths


def test_route_properties():
    route = krlayout.Route(
        [{"id": 7, "diameter": 0.01, "lines": [((0, 0, 0), (0.5, 0, 0))]},
         {"id": 8, "diameter": 0.01, "lines": [((0.5, 0), (0.5, 0.25))]}],
        components={7: "1-2@X1@Lamp"}, units="mm", name="Two")
    assert route.name == "Two" and route.source == "<route>"
    assert route.units == "mm" and route.units_given
    assert route.components == {7: "1-2@X1@Lamp"}
    doc = json.loads(route.to_json())
    assert doc["units"] == "mm" and doc["name"] == "Two"
    bare = krlayout.Route([{"id": 1, "diameter": 0.01, "lines": [((0, 0), (1, 0))]}])
    assert bare.units == "m" and not bare.units_given and bare.name == ""


@pytest.mark.parametrize("segments, error, text", [
    ([{"diameter": 0.01, "lines": []}], ValueError, "segments[0]: has no id"),
    ([{"id": 1, "lines": []}], ValueError, "segments[0] (id 1): has no diameter"),
    ([{"id": 1, "diameter": 0.01}], ValueError, "segments[0] (id 1): has no lines"),
    ([{"id": True, "diameter": 0.01, "lines": []}], TypeError, "segments[0].id"),
    ([{"id": 1.5, "diameter": 0.01, "lines": []}], TypeError, "segments[0].id"),
    ([{"id": 2**31, "diameter": 0.01, "lines": []}], ValueError, "does not fit a 32-bit id"),
    ([{"id": 1, "diameter": "thick", "lines": []}], TypeError, "diameter: expected a number"),
    ([{"id": 1, "diameter": float("nan"), "lines": []}], ValueError, "is not a finite number"),
    ([{"id": 1, "diameter": 0.01, "lines": [((0, 0), (1, float("inf")))]}], ValueError,
     "segments[0] (id 1).lines[0][1][1]: inf is not a finite number"),
    ([{"id": 1, "diameter": 0.01, "lines": [((0, 0, 0, 0), (1, 0))]}], ValueError,
     "expected 2 or 3 coordinates, got 4"),
    ([{"id": 1, "diameter": 0.01, "lines": [((0, 0), (1, 0), (2, 0))]}], ValueError,
     "expected a (start, end) pair, got 3 items"),
    ([{"id": 1, "diameter": 0.01, "lines": "0,0 1,0"}], TypeError, "lines"),
    ([{"id": 1, "diameter": 0.01, "lines": [], "length": -1.0}], ValueError, "is negative"),
])
def test_bad_data(segments, error, text):
    with pytest.raises(error) as caught:
        krlayout.Route(segments)
    assert text in str(caught.value)


def test_bad_route_arguments():
    with pytest.raises(TypeError):
        krlayout.Route("segments")
    with pytest.raises(TypeError):
        krlayout.Route([], components={1: 5})
    with pytest.raises(TypeError):
        krlayout.Route([], units=1)
    # What the document loader refuses, in its words.
    with pytest.raises(ValueError) as caught:
        krlayout.Route([], units="metres")
    assert str(caught.value) == ('<route>: /units: unknown unit "metres" '
                                 "(expected one of m, cm, mm, in, ft)")
