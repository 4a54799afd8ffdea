"""The recipes of the documentation do what they say."""

import importlib.util
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import urllib.error
import urllib.request
from pathlib import Path

import numpy as np
import pytest
from conftest import ROOT, SAMPLES

DOCUMENT = ROOT / "docs" / "python.md"
HAS_TRIMESH = importlib.util.find_spec("trimesh") is not None


def recipe(heading):
    text = DOCUMENT.read_text(encoding="utf-8")
    return re.search(rf"### {heading}\n\n```python\n(.*?)\n```\n", text, re.DOTALL)[1]


def environment(**more):
    stand_in = [] if HAS_TRIMESH else [str(Path(__file__).parent / "stand_in")]
    paths = [*stand_in, *os.environ.get("PYTHONPATH", "").split(os.pathsep)]
    return {**os.environ, "PYTHONPATH": os.pathsep.join(paths), **more}


@pytest.fixture
def folder(tmp_path):
    """What the recipes find: samples, and two files that are none."""
    shutil.copy(ROOT / "samples" / "assembly.step", tmp_path)
    (tmp_path / "parts" / "bad").mkdir(parents=True)
    for path in SAMPLES:
        shutil.copy(path, tmp_path / "parts")
    (tmp_path / "parts" / "bad" / "empty.stp").touch()
    (tmp_path / "parts" / "bad" / "letter.step").write_text("Dear Sir or Madam,\n")
    return tmp_path


def run(heading, folder):
    ended = subprocess.run(
        [sys.executable, "-W", "error", "-c", recipe(heading)],
        cwd=folder,
        env=environment(),
        capture_output=True,
        text=True,
        check=False,
    )
    assert (ended.returncode, ended.stderr) == (0, "")
    return ended.stdout


def test_every_recipe_has_a_test():
    headings = re.findall(r"^### (.*)$", DOCUMENT.read_text(encoding="utf-8"), re.MULTILINE)
    tests = Path(__file__).read_text(encoding="utf-8")
    assert len(headings) == 5
    for heading in headings:
        assert f'("{heading}"' in tests


def test_to_trimesh(folder):
    assert run("To trimesh", folder).split()[-1] == "mm"


def test_to_glb_with_names(folder):
    run("To GLB, with names", folder)
    content = (folder / "assembly.glb").read_bytes()
    for name in (b"lamp/foot 1", b"lamp/pole 2", b"lamp/bulb 3", b"lamp/shade 4"):
        assert name in content
    if HAS_TRIMESH:
        assert content[:4] == b"glTF"
    else:
        low, high = json.loads(content)["lamp/pole 2"]["bounds"]
        assert (low[2], high[2]) == pytest.approx((0.004, 0.05))


def test_a_folder_into_an_archive(folder):
    said = run("A folder into a numpy archive", folder)
    assert sorted(line.split(": ")[1] for line in said.splitlines()) == [
        "empty",
        "not a STEP file (no ISO-10303-21)",
    ]
    with np.load(folder / "parts.npz") as archive:
        assert len(archive.files) == 2 * len(SAMPLES)
        faces = archive["parts/bracket.step/faces"]
        vertices = archive["parts/bracket.step/vertices"]
    assert (faces.shape, faces.max()) == ((548, 3), len(vertices) - 1)


def test_a_data_set(folder):
    run("A data set of point clouds", folder)
    with np.load(folder / "clouds.npz") as archive:
        names, clouds = archive["names"], archive["clouds"]
    assert list(names) == sorted(f"parts/{path.name}" for path in SAMPLES)
    assert (clouds.shape, clouds.dtype) == ((len(SAMPLES), 2048, 3), np.float32)
    assert np.linalg.norm(clouds, axis=2).max() == pytest.approx(1)


def test_a_web_service(folder):
    with subprocess.Popen(
        [sys.executable, "-c", recipe("A web service that survives bad files")],
        cwd=folder,
        env=environment(PORT="0"),
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        text=True,
    ) as service:
        try:
            address = service.stdout.readline().strip()
            good = (folder / "parts" / "bracket.step").read_bytes()
            for bad in (b"Dear Sir or Madam,\n", b"", b"/etc/passwd", good[: len(good) // 2]):
                with pytest.raises(urllib.error.HTTPError) as refused:
                    urllib.request.urlopen(urllib.request.Request(address, bad), timeout=60)
                assert refused.value.code == 422
                refused.value.close()
                with urllib.request.urlopen(urllib.request.Request(address, good), timeout=60) as made:
                    assert len(made.read()) == 84 + 50 * 548
        finally:
            service.send_signal(signal.SIGINT)
