"""Every bundled example in every layout type: the result's shape and what it says."""

import math

import numpy as np
import pytest

from support import EXAMPLES, FAILING, TYPES, example_path

import krlayout


@pytest.fixture(scope="module")
def routes():
    return {name: krlayout.load(example_path(name)) for name in EXAMPLES}


def test_every_example_is_bundled():
    assert {"engine-bay", "dashboard", "machine-cabinet", "door-loop", "rear-disjoint"} <= set(
        EXAMPLES)


@pytest.mark.parametrize("layout_type", TYPES)
@pytest.mark.parametrize("name", EXAMPLES)
def test_example(routes, name, layout_type):
    route = routes[name]
    result = krlayout.layout(route, type=layout_type)

    assert isinstance(result, krlayout.Result)
    assert result.source == example_path(name)
    assert result.layout_type_name == layout_type
    assert result.layout_type == TYPES.index(layout_type)
    assert result.options["mode"] == "arrays"
    assert result.units == "m" and result.units_source == "default"
    assert result.grid == (0.02, 0.02)
    assert isinstance(result.points, np.ndarray) and isinstance(result.axes, np.ndarray)
    assert result.points.dtype == np.float64 and result.points.ndim == 2
    assert result.points.shape[1] == 6
    assert np.issubdtype(result.axes.dtype, np.integer)
    assert result.axes.shape == (result.points.shape[0],)
    assert set(result.quality) >= {"measured", "crossing_pairs", "overlapping_pieces",
                                   "clearance_violations", "largest_length_deviation",
                                   "segment_lengths", "extent"}
    assert result.quality["segments"] == len(result.segments)

    if name in FAILING:
        status, message, ids = FAILING[name]
        assert result.status == status and not result.ok and not result.laid_out
        assert result.message == message
        assert set(result.failed_ids) == ids
        assert result.points.shape == (0, 6)
        assert result.quality["measured"] == "input sketch"
        return

    assert result.status == 0 and result.ok and result.laid_out
    assert result.status_text == "laid out"
    assert result.failed_ids == [] and result.message == ""
    assert result.quality["measured"] == "layout"
    assert len(route.segment_lengths) == len(result.segments) + len(result.removed_ids)
    assert [d.id for d in result.dropped] == result.removed_ids
    assert result.complete == (not any(d.lost for d in result.dropped))

    # The segments' lines are the rows of the output arrays, in order.
    rows = []
    axes = []
    for segment in result.segments:
        assert isinstance(segment, krlayout.Segment)
        assert len(segment.lines) == len(segment.axes) > 0
        assert segment.length > 0 and segment.diameter > 0 and not segment.failed
        for (start, end), axis in zip(segment.lines, segment.axes):
            rows.append(start + end)
            axes.append(axis)
            if axis == 2:
                assert start[0] == end[0]
            elif axis == 1:
                assert start[1] == end[1]
        for connector in segment.connectors:
            assert isinstance(connector, krlayout.Connector) and "@" in connector.name
    assert np.array_equal(result.points, np.array(rows, dtype=np.float64).reshape(-1, 6))
    assert result.axes.tolist() == axes

    if layout_type == "formboard":
        # Every segment one straight line at its true length.
        assert result.crowded_points is not None and result.crowded_points >= 0
        assert result.crowded_points == result.quality["crowded_points"]
        for segment in result.segments:
            assert len(segment.lines) == 1
            (x0, y0, _), (x1, y1, _) = segment.lines[0]
            assert math.isclose(math.hypot(x1 - x0, y1 - y0), segment.length, rel_tol=1e-12)
    else:
        assert result.crowded_points is None


def test_types_by_number_and_name(routes):
    route = routes["engine-bay"]
    for number, name in enumerate(TYPES):
        by_name = krlayout.layout(route, type=name)
        assert krlayout.layout(route, type=number).to_json() == by_name.to_json()
        assert krlayout.layout(route, type=str(number)).to_json() == by_name.to_json()
        assert krlayout.layout(route, type=name.upper()).to_json() == by_name.to_json()


def test_length_layout_loses_a_segment_of_engine_bay(routes):
    result = krlayout.layout(routes["engine-bay"], type="length")
    assert result.status == 0 and not result.complete
    assert result.removed_ids == [19]
    (dropped,) = result.dropped
    assert dropped.id == 19 and dropped.reason == "final_check" and dropped.lost


def test_grid_and_clearance_options(routes):
    route = routes["dashboard"]
    result = krlayout.layout(route, grid=(0.03, 0.02))
    assert result.grid == (0.03, 0.02) and result.options["grid"] == [0.03, 0.02]
    assert krlayout.layout(route, grid_x=0.03, grid_y=0.02).to_json() == result.to_json()
    assert krlayout.layout(route, grid="0.03,0.02").to_json() == result.to_json()
    assert krlayout.layout(route, grid_x=0.03).grid == (0.03, 0.03)
    assert krlayout.layout(route, grid_y=0.03).grid == (0.03, 0.03)

    board = krlayout.layout(route, type="formboard", clearance=0.04)
    assert board.clearance == 0.04 and board.options["clearance"] == 0.04
    assert board.quality["clearance"] == 0.04
    default = krlayout.layout(route, type="formboard")
    assert default.options["clearance"] is None and default.clearance == 0.02


def test_units_option(routes):
    # Read as inches the default grid is 0.02 m in inches.
    result = krlayout.layout(routes["engine-bay"], units="in")
    assert result.units == "in" and result.units_source == "option"
    assert result.grid == (0.02 / 0.0254, 0.02 / 0.0254)
    assert result.warnings == []


def test_result_documents(routes):
    result = krlayout.layout(routes["engine-bay"])
    doc = result.to_dict()
    assert doc["format"] == "krlayout-result"
    assert doc["status"] == result.status
    assert doc["quality"] == result.quality
    assert [s["id"] for s in doc["segments"]] == [s.id for s in result.segments]
    assert result.to_json().endswith("\n")
    assert "engine-bay" in repr(result) and "engine-bay" in repr(routes["engine-bay"])
