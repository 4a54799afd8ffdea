"""The rows of the converter: whole conversions, its stages, its memory."""

import os
import subprocess
import time
from pathlib import Path

from inputs import exact, mixed, points_and_triangles, tessellation, without_blanks
from measuring import BENCH, MEGABYTE, PROGRAM, alternate, reported, run, stage


def converting(path, stl):
    """The program on a file, as a function that runs it."""
    def measured():
        stl.unlink(missing_ok=True)  # cutting off an old file would be measured, too
        return run(PROGRAM, path, stl)
    return measured


def measure_tessellation(table, runs, scratch):
    stl = scratch / "out.stl"
    for row, kind, must, reach in (("1", "long", "≤ 1.15", "≤ 1.0"),
                                   ("2", "wrapped", "≤ 1.2", "≤ 1.0"),
                                   ("2b", "short", "≤ 1.6", "≤ 1.3")):
        if not table.wants(row):
            continue
        path = tessellation(kind, 100)
        table.time(row, f"tessellation, 100 MB, {kind} / number floor",
                   alternate(converting(path, stl), lambda: run(BENCH / "baseline_numbers", path),
                             runs), must, reach)
        table.time(row, f"tessellation, 100 MB, {kind} / streaming loop",
                   alternate(converting(path, stl),
                             lambda: run(BENCH / "baseline_stream", path, scratch / "stream"),
                             runs))
    if table.wants("9"):
        large, small = tessellation("long", 1000), tessellation("long", 100)
        table.time("9", "tessellation, 1 GB / 100 MB, user time",
                   alternate(converting(large, stl), converting(small, stl), max(3, runs // 3)),
                   "≤ 10", "≤ 9", what="user")
    if table.wants("10"):
        for kind, must, reach in (("long", "≤ 0.95", "≤ 0.85"), ("wrapped", "≤ 0.95", "≤ 0.85"),
                                  ("short", "", "")):
            path = tessellation(kind, 100)
            points, triangles = points_and_triangles(kind, path)
            table.amount("10", f"peak memory − 40 MB, {kind} / file + 96 B triangles + 24 B points",
                         run(PROGRAM, path, stl).peak - 40 * MEGABYTE,
                         path.stat().st_size + 96 * triangles + 24 * points, "bytes", must, reach)
    if table.wants("12"):
        for kind, must, reach in (("long", "≥ 40", "≥ 100"), ("wrapped", "", ""), ("short", "", "")):
            path = tessellation(kind, 100)
            table.time("12", f"the literal way / ours, 100 MB, {kind} (inverse)",
                       alternate(lambda: run(BENCH / "baseline_literal", path, stl),
                                 converting(path, stl), 2, warm_up=False),
                       must, reach)
    if table.wants("13"):
        measure_faults(table, tessellation("short", 1000), scratch)


class Memory:
    """Anonymous memory of a process as the system counts it, in bytes."""

    def __init__(self, process):
        counts = {}
        try:
            for line in Path(f"/proc/{process}/smaps_rollup").read_text().splitlines()[1:]:
                name, value = line.split()[:2]
                counts[name] = int(value) * 1024
        except OSError:
            pass  # ended meanwhile
        self.all = counts.get("Anonymous:", 0)
        self.in_large_pages = counts.get("AnonHugePages:", 0)


def watch(process):
    """Looks at a process until it ends. Gives its memory at the peak and its page faults."""
    peak = Memory(process.pid)
    while True:
        ended, _, usage = os.wait4(process.pid, os.WNOHANG)
        if ended:
            process.returncode = 0
            return peak, usage.ru_minflt
        peak = max(peak, Memory(process.pid), key=lambda memory: memory.all)
        time.sleep(0.005)


def measure_faults(table, path, scratch):
    """Page faults of a conversion against those that it takes to touch as much memory once, in pages
    of the size that the system gave. What the start takes is in neither: it is counted in a process
    that says that it begins to read, from a FIFO that stays empty, and is killed."""
    fifo = scratch / "fifo"
    os.mkfifo(fifo)
    kept_open = os.open(fifo, os.O_RDWR)
    with subprocess.Popen([PROGRAM, fifo, scratch / "out.stl"], stdout=subprocess.PIPE) as process:
        for line in process.stdout:
            if line.startswith(b"[1]"):
                break
        begun = Memory(process.pid)
        process.kill()
        _, begin_faults = watch(process)
    os.close(kept_open)
    with subprocess.Popen([PROGRAM, path, scratch / "out.stl"],
                          stdout=subprocess.DEVNULL) as process:
        done, faults = watch(process)
    large = done.in_large_pages - begun.in_large_pages
    small = done.all - begun.all - large
    ideal = large / (2 << 20) + small / os.sysconf("SC_PAGE_SIZE")
    table.amount("13", f"page faults, 1 GB, short / touching its {(large + small) / MEGABYTE:.0f} MB "
                       f"once, {100 * large / (large + small):.0f} % of it in large pages",
                 faults - begin_faults, ideal, "faults", "≤ 1.2", "≤ 1.05")


def measure_stages(table, runs, scratch):
    def block_read(path):
        return lambda: reported(BENCH / "baseline_io", "read", path)

    def rows(row, name, what, must, reach, forms=("#1=",)):
        if not table.wants(row):
            return
        for form in forms:
            path = exact("plates", 50)
            path = without_blanks(path) if form == "#1=" else path
            table.time(row, f"{what}, 50 MB exact, `{form}` / block read",
                       alternate(lambda: stage(name, path), block_read(path), runs), must, reach)

    both = ("#1=", "#1 = ")
    rows("3", "table", "entity table", "≤ 12", "≤ 8", both)
    rows("3", "copy", "mere copy of the table", "", "")
    rows("4", "analysis", "analysis", "≤ 2.5", "≤ 1.5")
    rows("4", "walk", "mere walk over the table", "", "")
    rows("5", "strip", "stripping nothing", "≤ 3", "≤ 1.5", both)
    if table.wants("6"):
        path, kept = mixed()
        table.time("6", "stripping half of 110 MB / block read + write",
                   alternate(lambda: stage("strip", path),
                             lambda: reported(BENCH / "baseline_io", "copy", path, scratch / "copy",
                                              kept), runs), "≤ 2.5", "≤ 1.5")
    if table.wants("7"):
        table.time("7", "writing 1.2 million triangles / zeros",
                   alternate(lambda: stage("write"),
                             lambda: reported(BENCH / "baseline_io", "zeros", scratch / "zeros",
                                              84 + 50 * 1_200_000), runs), "≤ 4", "≤ 2")


def measure_exact(table, runs, scratch):
    stl = scratch / "out.stl"
    some = max(3, runs // 2)
    for row, kind, size, text, pairs in (("8", "plates", 10, "10 MB, plates", some),
                                         ("8", "assembly", 10, "10 MB, assembly", some),
                                         ("8", "plates", 50, "50 MB, plates", 2),
                                         ("8", "assembly", 50, "50 MB, assembly", 2),
                                         ("8b", "surfaces", 3, "3 MB, surfaces", 3),
                                         ("8b", "uses", 100, "9 MB, 100 parts used 1,000 times", 3),
                                         ("8b", "quilt", 5000, "20 MB, a part of 5,000 faces", 3)):
        if table.wants(row):
            path = exact(kind, size)
            table.time(row, f"exact to STL, {text} / bare kernel",
                       alternate(converting(path, stl),
                                 lambda: run(BENCH / "baseline_kernel", path, 0.1), pairs,
                                 warm_up=False), "≤ 1.00", "≤ 0.85")
    if table.wants("11"):
        for kind in ("plates", "assembly"):
            path = without_blanks(exact(kind, 10))
            table.amount("11", f"peak memory, exact, 10 MB, {kind} / bare kernel's + entity texts",
                         run(PROGRAM, path, stl).peak,
                         run(BENCH / "baseline_kernel", path, 0.1).peak + path.stat().st_size,
                         "bytes", "≤ 1.3", "≤ 1.1")
    if table.wants("14"):
        table.time("14", "start: program / bare kernel, both without arguments",
                   alternate(lambda: run(PROGRAM, status=1),
                             lambda: run(BENCH / "baseline_kernel", status=2), 10 * runs),
                   "≤ 1.0", "≤ 0.9")
