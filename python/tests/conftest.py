"""What the tests share. The programs are those in PATH."""

import os
import signal
import subprocess
import sys
import textwrap
import time
from pathlib import Path

import numpy as np
import pytest

import plenvorith

ROOT = Path(__file__).resolve().parent.parent.parent
SAMPLES = sorted((ROOT / "samples").glob("*.step"))

# One triangle, stored as such: what converts fastest.
TRIANGLE = b"""ISO-10303-21;
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


@pytest.fixture
def sample():
    return lambda name: str(ROOT / "samples" / f"{name}.step")


@pytest.fixture(autouse=True)
def own_temporary_folder(tmp_path, monkeypatch):
    """Every test, and what it starts, has a folder of temporary files of its own, empty afterwards."""
    folder = tmp_path / "tmp"
    folder.mkdir()
    monkeypatch.setenv("TMPDIR", str(folder))
    monkeypatch.setattr("tempfile.tempdir", None)
    monkeypatch.setattr("plenvorith._folder.MEMORY", str(tmp_path / "memory"))
    monkeypatch.setattr("plenvorith._context.MEMORY", str(tmp_path / "memory"))
    (tmp_path / "memory").mkdir()
    yield folder
    plenvorith._context.context().close()
    assert os.listdir(folder) == []
    assert os.listdir(tmp_path / "memory") == []


@pytest.fixture
def memory(tmp_path):
    """Stands for /dev/shm."""
    return tmp_path / "memory"


def children_of(pid):
    """Numbers of the processes that a process has started."""
    found = []
    for entry in Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                fields = (entry / "stat").read_text().rpartition(")")[2].split()
            except OSError:
                continue  # ended meanwhile
            if int(fields[1]) == pid:
                found.append(int(entry.name))
    return found


def workers_of(pid):
    return [child for child in children_of(pid) if is_worker(child)]


def is_worker(pid):
    try:
        return b"--worker" in Path(f"/proc/{pid}/cmdline").read_bytes().split(b"\0")
    except OSError:
        return False


def until(condition, seconds=30):
    """Waits for something to become true."""
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end, "it never happened"
        time.sleep(0.01)


def is_alive(pid):
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] not in "ZX"
    except OSError:
        return False


class Interpreter:
    """Python in a process of its own, which runs a script and talks with the test in lines."""

    PREAMBLE = """
        import os, sys, plenvorith
        plenvorith._folder.MEMORY = plenvorith._context.MEMORY = os.environ["MEMORY"]
        def say(*words):
            print(*words, flush=True)
    """

    def __init__(self, script, memory):
        script = textwrap.dedent(self.PREAMBLE) + textwrap.dedent(script)
        self.process = subprocess.Popen(
            [sys.executable, "-W", "error", "-c", script],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            env={**os.environ, "MEMORY": str(memory)},
            start_new_session=True,
        )
        self.pid = self.process.pid

    def line(self):
        return self.process.stdout.readline().rstrip("\n")

    def kill(self, number=signal.SIGKILL):
        self.process.send_signal(number)

    def end(self):
        """What it has said since, on both streams, and its exit status."""
        out, err = self.process.communicate(timeout=60)
        return out, err, self.process.returncode


@pytest.fixture
def interpreter(memory):
    started = []

    def start(script):
        started.append(Interpreter(script, memory))
        return started[-1]

    yield start
    for one in started:
        if one.process.poll() is None:
            one.kill()
        one.process.communicate()


@pytest.fixture
def endless(tmp_path):
    """A file that no conversion ever comes to the end of: nobody writes to it."""
    path = tmp_path / "endless.step"
    os.mkfifo(path)
    return str(path)


def volume(mesh):
    """Of a closed mesh, by the divergence theorem."""
    corners = mesh.triangles.astype(np.float64)
    return np.einsum("ij,ij", corners[:, 0], np.cross(corners[:, 1], corners[:, 2])) / 6
