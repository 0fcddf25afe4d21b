"""The GIL is released while a layout runs: other Python threads go on meanwhile, and layouts in
several threads give the same results as one after another."""

import threading

from support import random_tree

import krlayout
from krlayout import _core

# Large enough that a layout takes a good part of a second.
SEGMENTS = 1500
ATTEMPTS = 5


def test_python_runs_while_a_layout_runs():
    route = krlayout.Route(random_tree(SEGMENTS))
    reference = None
    for _ in range(ATTEMPTS):
        done = threading.Event()
        outcome = {}

        def work():
            try:
                outcome["result"] = krlayout.layout(route)
            except BaseException as e:  # handed to the test thread
                outcome["error"] = e
            finally:
                done.set()

        worker = threading.Thread(target=work)
        worker.start()
        # Python code run by this thread while the layout was under way without the GIL. With
        # the GIL held throughout, this thread could not run at all while the count is above 0,
        # so it never sees it: the test does not depend on how fast anything is.
        steps = 0
        while not done.is_set():
            if _core._layouts_in_progress() > 0:
                steps += 1
        worker.join()
        if "error" in outcome:
            raise outcome["error"]
        reference = outcome["result"]
        assert reference.ok and len(reference.segments) + len(reference.removed_ids) == SEGMENTS
        if steps > 0:
            break
    assert steps > 0, "no Python code ran while a layout ran: the GIL was not released"
    assert _core._layouts_in_progress() == 0
    # The same layout as one run in this thread.
    assert krlayout.layout(route).to_json() == reference.to_json()


def test_layouts_in_several_threads():
    route = krlayout.Route(random_tree(400, seed=11))
    expected = {t: krlayout.layout(route, type=t).to_json() for t in ("diameter", "formboard")}
    results = {}

    def work(key, layout_type):
        results[key] = krlayout.layout(route, type=layout_type).to_json()

    threads = [threading.Thread(target=work, args=((i, t), t))
               for i in range(3) for t in expected]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(results) == len(threads)
    for (_, layout_type), text in results.items():
        assert text == expected[layout_type]
