"""The rows of plenvorith-batch."""

import re
import shutil
import signal
import subprocess
import time
from pathlib import Path

from inputs import tessellation
from measuring import BATCH, MEGABYTE, PROGRAM, ROOT, alternate, median, run

SMALL = """ISO-10303-21;
HEADER;
FILE_SCHEMA(('AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF'));
ENDSEC;
DATA;
#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),$);
#2=TESSELLATED_SOLID('',(#4),$);
#3=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));
#4=COMPLEX_TRIANGULATED_FACE('',#3,3,((0.,0.,1.)),$,(),((1,2,3)),());
ENDSEC;
END-ISO-10303-21;
"""


def distinct(text, number):
    """The same file with other bytes: equal ones would be converted once."""
    return text.replace("HEADER;", f"HEADER;/* {number} */", 1)


def small_files(folder, count):
    """So many files of one triangle each, a thousand to a folder."""
    for i in range(count):
        path = folder / f"{i // 1000:03}" / f"{i:06}.stp"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(distinct(SMALL, i))
    return folder


def tree_memory(root):
    """Memory of a process and all below it; pages that several share count once."""
    parents = {}
    for entry in Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                fields = (entry / "stat").read_text().rsplit(")", 1)[1].split()
                parents[int(entry.name)] = int(fields[1])
            except OSError:
                pass  # ended meanwhile
    family, total = {root}, 0
    for _ in range(4):  # driver, worker, child and one to spare
        family |= {child for child, parent in parents.items() if parent in family}
    for process in family:
        try:
            total += 1024 * int(re.search(r"^Pss:\s+(\d+)",
                                          Path(f"/proc/{process}/smaps_rollup").read_text(),
                                          re.M)[1])
        except (OSError, TypeError):
            pass  # ended meanwhile
    return total


def measure_batch(table, _, scratch):
    def batch(inputs, output, *options):
        shutil.rmtree(output, ignore_errors=True)
        return run(BATCH, "--as-is", inputs, "-o", output, *options)

    output = scratch / "batch-out"
    if table.wants("B1") or table.wants("B4"):
        count = 10_000
        inputs = small_files(scratch / "small", count)
        all_files = batch(inputs, output, "--jobs", 2)
        single, start = zip(*alternate(
            lambda: run(PROGRAM, inputs / "000" / "000000.stp", scratch / "one.stl"),
            lambda: run(PROGRAM, status=1), 101))
        beyond = all_files.processor / count - max(
            0, median(single, "processor") - median(start, "processor"))
        table.absolute("B1", "batch, 10,000 small files, user + system for a file beyond its conversion",
                       1000 * beyond, "ms", "≤ 1.7", "≤ 1")
        again = [run(BATCH, "--as-is", inputs, "-o", output, "--jobs", 2, "--resume") for _ in range(3)]
        table.absolute("B4", "batch --resume, 10,000 files converted before, wall",
                       median(again, "wall"), "s", "≤ 0.3", "≤ 0.2")
    if table.wants("B2"):
        inputs = scratch / "brackets"
        inputs.mkdir()
        bracket = (ROOT / "samples" / "bracket.step").read_text()
        for i in range(1000):
            (inputs / f"{i}.step").write_text(distinct(bracket, i))
        loop = f'for i in {inputs}/*.step; do "{PROGRAM}" "$i" "{scratch}/one.stl"; done'
        table.time("B2", "batch, one job, 1,000 x bracket.step / the program in a shell loop",
                   alternate(lambda: batch(inputs, output, "--jobs", 1),
                             lambda: run("sh", "-c", loop), 1, warm_up=False), "≤ 0.5", "≤ 0.4")
    if table.wants("B3"):
        inputs = scratch / "sizes"
        inputs.mkdir()
        for i in range(200):
            text = Path(tessellation("long", 1 + i % 10)).read_text()
            (inputs / f"{i}.stp").write_text(distinct(text, i))
        table.time("B3", "batch, 200 files of 1 to 10 MB, one job / two jobs, wall",
                   alternate(lambda: batch(inputs, output, "--jobs", 1),
                             lambda: batch(inputs, output, "--jobs", 2), 3), "≥ 1.95", "≥ 1.98",
                   what="wall")
    if table.wants("B5"):
        inputs = small_files(scratch / "many", 100_000)
        shutil.rmtree(output, ignore_errors=True)
        with subprocess.Popen([BATCH, inputs, "-o", output, "--jobs", "2"],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
            peak, seen, end = 0, 0, time.monotonic() + 120
            while process.poll() is None and seen < 20 and time.monotonic() < end:
                peak = max(peak, tree_memory(process.pid))
                seen += any(output.glob("*/*.stl"))
                time.sleep(0.1)
            process.send_signal(signal.SIGINT)
            process.wait(120)
        table.absolute("B5", "batch, memory of driver and workers, 100,000 files listed",
                       peak / MEGABYTE, "MB", "≤ 60", "≤ 50")
