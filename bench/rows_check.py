"""The rows of plenvorith-check."""

import math
import shutil
import struct

from inputs import exact, without_blanks
from measuring import BATCH, BENCH, CHECK, INPUTS, Run, alternate, median, reported, run
from rows_batch import distinct


def in_a_row(runs):
    """What several processes take together, one after the other."""
    return Run(*(sum(getattr(one, what) for one in runs) for what in ("user", "system", "wall")),
               max(one.peak for one in runs), sum(one.faults for one in runs))


def torus(triangles, step=1):
    """A closed mesh of about so many triangles, as an STL file: in the order of a sweep or, where each
    is so many places from the one before (a large prime), in no order."""
    path = INPUTS / f"torus-{triangles}-{step}.stl"
    if path.exists():
        return path
    steps = math.isqrt(triangles // 2)
    turns = [2 * math.pi * i / steps for i in range(steps)]
    rings = [[struct.pack("<3f", (10 + 3 * math.cos(w)) * math.cos(u),
                          (10 + 3 * math.cos(w)) * math.sin(u), 3 * math.sin(w)) for w in turns]
             for u in turns]
    count = 2 * steps * steps
    assert math.gcd(count, step) == 1
    with open(path, "wb") as out:
        out.write(bytes(80) + struct.pack("<I", count))
        for k in range(count):
            quad, half = divmod(k * step % count, 2)
            i, j = divmod(quad, steps)
            one, other, above = rings[i], rings[(i + 1) % steps], (j + 1) % steps
            a, c = one[j], other[above]
            b, d = (c, one[above]) if half else (other[j], c)
            out.write(bytes(12) + a + b + d + bytes(2))
    return path


def measure_check(table, runs, scratch):
    few = max(3, runs // 2)
    if table.wants("C1"):
        paths = [without_blanks(exact(kind, 10)) for kind in ("plates", "assembly")]

        def stage(mode):
            return lambda: in_a_row([reported(BENCH / "bench_check", mode, path) for path in paths])

        table.time("C1", "names, closedness and deviation of plates and assembly, 10 MB each / reading "
                         "and meshing them", alternate(stage("check"), stage("read"), few,
                                                       warm_up=False), "≤ 0.06", "≤ 0.04")
    if table.wants("C2"):
        def against_admesh(name, path, must):
            pairs = alternate(lambda: run(CHECK, path), lambda: run("admesh", "--exact", path), 3,
                              warm_up=False)
            table.time("C2", f"an STL file alone, 5 million triangles {name} / admesh", pairs, must)

        # In a sweep admesh has each neighbour at hand. Most meshes are between the two.
        against_admesh("in the order of a sweep", torus(5_000_000), "")
        against_admesh("in no order", torus(5_000_000, step=7_368_787), "≤ 0.2")
        path = torus(10_000_000)
        triangles = (path.stat().st_size - 84) // 50
        alone = [run(CHECK, path) for _ in range(3)]
        table.absolute("C2", "an STL file alone, 10 million triangles",
                       triangles / median(alone, "processor") / 1e6,
                       "million triangles a second", "≥ 1.5", "")
        table.absolute("C2", "an STL file alone, peak memory", alone[0].peak / triangles,
                       "bytes a triangle", "≤ 60", "")
    if table.wants("C3"):
        folder = scratch / "parts"
        folder.mkdir()
        for i in range(8):
            source = without_blanks(exact("plates" if i % 2 else "assembly", 1))
            (folder / f"{i}.stp").write_text(distinct(source.read_text(), i))

        output = scratch / "checked"

        def batch(*options):
            shutil.rmtree(output, ignore_errors=True)
            return run(BATCH, folder, "-o", output, "--jobs", 2, *options)

        table.time("C3", "batch with --check / without", alternate(lambda: batch("--check"), batch, few),
                   "≤ 2.1", "")
