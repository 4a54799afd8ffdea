"""The rows of the Python package."""

import os
import statistics
import sys

from inputs import exact
from measuring import BENCH, BIN, ROOT, alternate, median, run
from rows_batch import small_files

# That of Debian, whose packages the measurements need, also where another one runs this script.
PYTHON = "/usr/bin/python3"

LOAD = "import sys, plenvorith\nfor path in sys.argv[1:]: len(plenvorith.load(path, prepare=False))"
LOAD_AGAIN = """
import sys, plenvorith
counts = {len(plenvorith.load(sys.argv[1], prepare=False)) for _ in range(6)}
print("triangles", *counts)
"""
BINDING_AGAIN = """
import sys, baseline_binding
counts = {len(baseline_binding.load(sys.argv[1], 0.1)) for _ in range(6)}
print("triangles", *counts)
"""
FIRST = """
import sys, time, plenvorith
start = time.perf_counter()
plenvorith.load(sys.argv[1])
print(time.perf_counter() - start)
"""
INDEXED = """
import time, numpy as np, plenvorith
from plenvorith._mesh import FACET
steps = np.arange(709, dtype=np.float32) / 8
x, y = np.meshgrid(steps, steps, indexing="ij")
points = np.stack([x, y, np.sin(x) * np.cos(y)], -1)
a, b, c, d = points[:-1, :-1], points[1:, :-1], points[1:, 1:], points[:-1, 1:]
facets = np.zeros(2 * 708 * 708, FACET)
facets["corners"] = np.concatenate([np.stack(t, -2).reshape(-1, 3, 3) for t in ((a, b, c), (a, c, d))])
start = time.perf_counter()
vertices, faces = plenvorith.Mesh(facets).indexed()
print(time.perf_counter() - start)
assert len(vertices) == 709 * 709 and len(faces) == 1002528
"""


def python(script, *arguments):
    environment = {**os.environ, "PATH": f"{BIN}:{os.environ['PATH']}",
                   "PYTHONPATH": f"{ROOT / 'python'}:{BENCH}"}
    return run(PYTHON, "-c", script, *arguments, env=environment)


def measure_python(table, runs, scratch):
    if table.wants("Y1"):
        files = sorted(small_files(scratch / "python", 1000).rglob("*.stp"))
        all_files, one_file = python(LOAD, *files), python(LOAD, files[0])
        single, start = zip(*alternate(lambda: run(BIN / "plenvorith", files[0], scratch / "one.stl"),
                                       lambda: run(BIN / "plenvorith", status=1), 101))
        own = max(0, median(single, "processor") - median(start, "processor"))
        each = (all_files.processor - one_file.processor) / (len(files) - 1)
        table.absolute("Y1", "Python, 1,000 small files, user + system for a file beyond its conversion",
                       1000 * (each - own), "ms", "≤ 3", "≤ 2")
    if table.wants("Y2"):
        assembly = exact("assembly", 1)
        pairs = alternate(lambda: python(LOAD_AGAIN, assembly),
                          lambda: python(BINDING_AGAIN, assembly), min(runs, 5))
        if len({one.text.splitlines()[-1] for pair in pairs for one in pair}) != 1:
            sys.exit("failed: the package and the binding do not give as many triangles")
        table.time("Y2", "Python, 1 MB of assembly six times / a binding of the kernel",
                   pairs, "≤ 1.10", "≤ 1.0")
    if table.wants("Y3"):
        first = [float(python(FIRST, ROOT / "samples" / "bracket.step").text) for _ in range(runs)]
        table.absolute("Y3", "Python, first mesh after import, wall", statistics.median(first), "s",
                       "≤ 0.2", "≤ 0.1")
    if table.wants("Y4"):
        indexed = [float(python(INDEXED).text) for _ in range(runs)]
        table.absolute("Y4", "Python, indexed() of 1 million triangles, wall",
                       statistics.median(indexed), "s", "≤ 0.5", "≤ 0.3")
