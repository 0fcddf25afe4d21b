"""A route that fails a check is not an error: the result gives the check's status and the
segments it names."""

import pytest

from support import FAILING, TYPES, example_path, run_tool

import krlayout


@pytest.mark.parametrize("layout_type", TYPES)
@pytest.mark.parametrize("name", sorted(FAILING))
def test_failing_examples(tmp_path, name, layout_type):
    status, message, ids = FAILING[name]
    result = krlayout.layout(krlayout.load(example_path(name)), type=layout_type)
    assert result.status == status and not result.ok and not result.laid_out
    assert not result.complete
    assert result.message == message
    assert set(result.failed_ids) == ids and len(result.failed_ids) == len(ids)
    assert {segment_id for segment_id, _ in result.messages} == ids
    assert all(text == message for _, text in result.messages)
    assert {s.id for s in result.segments if s.failed} == ids
    # The input sketch is all there is: no laid-out lines, empty arrays.
    assert all(s.lines == () and s.input_lines for s in result.segments)
    assert result.points.shape == (0, 6) and result.axes.shape == (0,)
    assert result.removed_ids == [] and result.dropped == []

    # The tool exits with the status and names the same segments in the same order.
    code, _, stderr = run_tool([example_path(name), "-m", "arrays", "--type", layout_type])
    assert code == status
    named = [line for line in stderr.splitlines() if line.startswith("  %s:" % message)]
    assert named == ["  %s: %s" % (message, " ".join(str(i) for i in result.failed_ids))]


def line(a, b):
    return (a, b)


def test_loop_from_data():
    # A triangle of three segments and a fourth leaving it.
    route = krlayout.Route([
        {"id": 1, "diameter": 0.01, "lines": [line((0, 0), (0.3, 0))]},
        {"id": 2, "diameter": 0.01, "lines": [line((0.3, 0), (0.15, 0.25))]},
        {"id": 3, "diameter": 0.01, "lines": [line((0.15, 0.25), (0, 0))]},
        {"id": 4, "diameter": 0.01, "lines": [line((0.3, 0), (0.6, 0))]},
    ])
    result = krlayout.layout(route)
    assert result.status == 7 and result.message == "Loop Segment"
    assert set(result.failed_ids) == {1, 2, 3}


def test_disjoint_from_data():
    route = krlayout.Route([
        {"id": 1, "diameter": 0.01, "lines": [line((0, 0), (0.3, 0))]},
        {"id": 2, "diameter": 0.01, "lines": [line((0.3, 0), (0.3, 0.2))]},
        {"id": 3, "diameter": 0.01, "lines": [line((1, 1), (1.2, 1))]},
    ])
    result = krlayout.layout(route, type="formboard")
    assert result.status == 8 and result.message == "Disjoint Segment"
    assert result.failed_ids


def test_no_segments():
    result = krlayout.layout(krlayout.Route([]))
    assert result.status == 1 and not result.ok
    assert result.segments == () and result.points.shape == (0, 6)
