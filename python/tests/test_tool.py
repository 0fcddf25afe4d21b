"""The module against the command-line tool in arrays mode: the same lines, bit for bit, and the
same result document."""

import json
import struct

import pytest

from support import EXAMPLES, FAILING, TYPES, example_path, run_tool

import krlayout


def bits(value):
    return struct.pack("<d", value)


def line_bits(start, end):
    return b"".join(bits(v) for v in tuple(start) + tuple(end))


# Each case: keyword arguments of layout() and the same options for the tool.
CASES = [({"type": t}, ["--type", t]) for t in TYPES] + [
    ({"type": 1, "grid": (0.03, 0.015)}, ["--type", "1", "--grid", "0.03,0.015"]),
    ({"grid_x": 0.025}, ["--grid-x", "0.025"]),
    ({"type": "formboard", "clearance": 0.035}, ["--type", "formboard", "--clearance", "0.035"]),
    ({"type": "formboard", "clearance": 0}, ["--type", "formboard", "--clearance", "0"]),
    ({"units": "in", "grid": 0.25}, ["--units", "in", "--grid", "0.25"]),
]


@pytest.mark.parametrize("case", range(len(CASES)))
@pytest.mark.parametrize("name", EXAMPLES)
def test_same_as_the_tool(tmp_path, name, case):
    kwargs, args = CASES[case]
    path = example_path(name)
    out = tmp_path / "out.json"
    code, _, _ = run_tool([path, "-q", "-m", "arrays", "-o", str(out)] + args)
    result = krlayout.layout(krlayout.load(path), **kwargs)

    # The exit code says what the status says.
    if result.status != 0:
        assert code == result.status
    else:
        assert code == (0 if result.complete else 12)

    text = out.read_text(encoding="utf-8")
    assert result.to_json() == text
    doc = json.loads(text)
    assert doc["status"] == result.status
    assert [s["id"] for s in doc["segments"]] == [s.id for s in result.segments]
    count = 0
    for ours, theirs in zip(result.segments, doc["segments"]):
        assert len(ours.lines) == len(theirs["lines"])
        for (start, end), axis, line in zip(ours.lines, ours.axes, theirs["lines"]):
            assert line_bits(start, end) == line_bits(line["start"], line["end"])
            assert axis == line["axis"]
            # The line's row in the output arrays.
            assert line["line_id"] == [count, count]
            assert result.points[count].tobytes() == line_bits(start, end)
            assert result.axes[count] == axis
            count += 1
    assert count == len(result.points)
    if name in FAILING:
        assert set(doc["check"]["segments"]) == FAILING[name][2]
        assert doc["check"]["segments"] == result.failed_ids
