"""What bench/run and bench/peers share: running a process and counting what it took, comparing two
in alternation, printing the table, and keeping the figures of a run."""

import csv
import datetime
import json
import os
import platform
import re
import statistics
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "release"
BENCH = BUILD / "bench"
BIN = BUILD / "bin"
PROGRAM = BIN / "plenvorith"
PREPARE = BIN / "plenvorith-prepare"
BATCH = BIN / "plenvorith-batch"
CHECK = BIN / "plenvorith-check"
INPUTS = ROOT / "build" / "bench"
MEGABYTE = 1_000_000
TARGETS = ("plenvorith_programs", "bench_check", "bench_stages", "generate_exact",
           "generate_tessellation", "baseline_binding", "baseline_io", "baseline_kernel",
           "baseline_literal", "baseline_numbers", "baseline_statements", "baseline_stream")


@dataclass
class Run:
    """What one process, or one stage of it, took: seconds, bytes and faults of memory."""

    user: float
    system: float
    wall: float
    peak: int = 0  # of the whole process
    faults: int = 0  # minor ones, of the whole process
    text: str = ""

    @property
    def processor(self):
        return self.user + self.system


def run(*command, status=0, cwd=None, env=None, limit=None):
    """Runs a process to its end. Ends the program if it ends otherwise than expected; a status of
    None stands for any. Past the limit, in seconds of processor time, the process is killed, and
    so it is where it sits idle for long."""
    with tempfile.TemporaryFile() as out:
        start = time.perf_counter()
        if limit:
            command = ["timeout", "-s", "KILL", 5 * limit, "prlimit", f"--cpu={limit}", *command]
        process = subprocess.Popen([*map(str, command)], stdout=out,
                                   stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, cwd=cwd,
                                   env=env)
        _, ended, usage = os.wait4(process.pid, 0)
        wall = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(ended)
        out.seek(0)
        text = out.read().decode(errors="replace")
    if status is not None and process.returncode != status:
        sys.exit(f"failed: {' '.join(map(str, command))}\n{text}")
    return Run(usage.ru_utime, usage.ru_stime, wall, usage.ru_maxrss * 1024, usage.ru_minflt, text)


def reported(*command):
    """The same for a baseline that says itself how long it took, without its start."""
    result = run(*command)
    times = re.search(r"^seconds user (\S+) system (\S+) wall (\S+)$", result.text, re.M)
    result.user, result.system, result.wall = map(float, times.groups())
    return result


def stage(name, *path):
    """One stage of the program by itself, which may print lines of its own."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        result = run(BENCH / "bench_stages", *path, f"--benchmark_filter=^{name}/",
                     f"--benchmark_out={out.name}", "--benchmark_out_format=json")
        counted = json.load(out)["benchmarks"][0]
    result.user, result.system, result.wall = (counted[key] for key in ("user", "system", "wall"))
    return result


def build():
    """The release preset with its benchmarks."""
    subprocess.run([ROOT / "script" / "bootstrap", "bench"], check=True)
    subprocess.run(["cmake", "--preset", "release", "-DPLENVORITH_BUILD_BENCH=ON"], cwd=ROOT,
                   stdout=sys.stderr, check=True)
    subprocess.run(["cmake", "--build", "--preset", "release", "--target", *TARGETS], cwd=ROOT,
                   stdout=sys.stderr, check=True)
    INPUTS.mkdir(parents=True, exist_ok=True)


def alternate(ours, baseline, pairs, warm_up=True):
    """Runs both by turns, so that both see the same machine; gives the pairs."""
    result = [(ours(), baseline()) for _ in range(pairs + warm_up)]
    return result[warm_up:]


def first_line(*command):
    result = subprocess.run(command, capture_output=True, text=True, check=False, cwd=ROOT)
    return (result.stdout.splitlines() or [""])[0].strip()


def machine():
    """Where and of what a run was made, as pairs of a name and a text."""
    processor = re.search(r"^model name\s*: (.*)$", Path("/proc/cpuinfo").read_text(), re.M)
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    release = re.search(r'^PRETTY_NAME="(.*)"$', Path("/etc/os-release").read_text(), re.M)
    pages = Path("/sys/kernel/mm/transparent_hugepage/enabled")
    packages = ("libocct-foundation-dev", "libmimalloc-dev", "libgoogle-perftools-dev", "libc6")
    installed = [(name, first_line("dpkg-query", "-W", "-f=${Version}", name)) for name in packages]
    return [
        ("Date", f"{datetime.date.today():%Y-%m-%d}"),
        ("Commit", first_line("git", "rev-parse", "HEAD")
         + (" and changes" if first_line("git", "status", "--porcelain", "-uno") else "")),
        ("Compiler", first_line("c++", "--version")),
        ("Processor", f"{os.cpu_count()} x {processor[1] if processor else platform.machine()}"),
        ("Memory", f"{memory:.0f} GiB, transparent large pages: "
         + (pages.read_text().strip() if pages.exists() else "none")),
        ("System", f"{release[1] if release else '?'}, Linux {platform.release()}"),
        ("Packages", ", ".join(f"{name} {version}" for name, version in installed if version)),
        ("Load at the start", " ".join(f"{load:.2f}" for load in os.getloadavg())),
    ]


class Figures:
    """Every figure of a run, and the table made of them. With a folder both are kept there, beside
    a README that says what they were made on, and the table replaces the one in the document."""

    def __init__(self, name, folder=None):
        self.raw = []
        self.lines = []
        self.name = name
        self.folder = folder
        self.about = machine()

    def line(self, text):
        print(text, flush=True)
        self.lines.append(text)

    def count(self, row, work, side, measured):
        self.raw.append([row, work, side, f"{measured.user:.6f}", f"{measured.system:.6f}",
                         f"{measured.wall:.6f}", measured.peak, measured.faults, ""])

    def keep(self):
        """Publishes the run, if it has a folder."""
        if not self.folder:
            return
        self.folder.mkdir(parents=True, exist_ok=True)
        with open(self.folder / f"{self.name}raw.csv", "w", newline="") as out:
            writer = csv.writer(out, lineterminator="\n")
            writer.writerow(["row", "work", "side", "user_s", "system_s", "wall_s", "peak_bytes",
                             "minor_faults", "value"])
            writer.writerows(self.raw)
        (self.folder / f"{self.name}summary.md").write_text("\n".join(self.lines) + "\n")
        readme = self.folder / "README.md"
        heading = f"# A run of bench/{'peers' if self.name else 'run'}\n"
        about = heading + "\n" + "".join(f"- {name}: {text}\n" for name, text in self.about)
        old = readme.read_text() if readme.exists() else ""
        others = [part for part in re.split(r"(?=^# )", old, flags=re.M)
                  if part and not part.startswith(heading)]
        readme.write_text("\n".join(part.rstrip() + "\n" for part in [*others, about]))
        document = ROOT / "docs" / "performance.md"
        mark = f"<!-- bench/{'peers' if self.name else 'run'} -->"
        before, after = document.read_text().split(f"{mark}\n")
        about = ". ".join(text for name, text in self.about if name in (
            "Date", "Processor", "Memory", "System", "Compiler", "Packages"))
        after = after[after.index("<!-- end -->"):]
        table = "\n".join(self.lines)
        document.write_text(f"{before}{mark}\n{table}\n\n{about}.\n{after}")
        print(f"Kept in {self.folder} and {document}", file=sys.stderr)


def archive_folder(name):
    """Where the run of today on the machine of this name is kept."""
    return ROOT / "bench" / "runs" / f"{datetime.date.today():%Y-%m-%d}-{name}"


def median(measured, what):
    return statistics.median(getattr(one, what) for one in measured)
