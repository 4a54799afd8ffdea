"""The package as users install it."""

import importlib.util
import os
import subprocess
import sys
from pathlib import Path

import pytest

PYTHON = Path(__file__).resolve().parent.parent


def run(*command, **settings):
    ended = subprocess.run(
        list(map(str, command)), capture_output=True, text=True, check=False, **settings
    )
    assert ended.returncode == 0, ended.stdout + ended.stderr
    return ended.stdout


def test_a_wheel_installs_without_a_network(tmp_path, sample):
    for module, package in (("pip", "pip"), ("wheel", "wheel"), ("ensurepip", "venv")):
        if importlib.util.find_spec(module) is None:
            pytest.skip(f"needs the Debian package python3-{package}")
    sources = tmp_path / "project"
    (sources / "python").mkdir(parents=True)
    (sources / "CMakeLists.txt").write_bytes((PYTHON.parent / "CMakeLists.txt").read_bytes())
    for name in ("pyproject.toml", "setup.py", "plenvorith"):
        (sources / "python" / name).symlink_to(PYTHON / name)
    offline = {**os.environ, "PIP_NO_INDEX": "1", "HOME": str(tmp_path)}
    offline.pop("PYTHONPATH")
    venv = tmp_path / "venv"
    run(sys.executable, "-m", "venv", "--system-site-packages", venv, env=offline)
    python = venv / "bin" / "python"
    pip = [python, "-m", "pip", "-q", "--disable-pip-version-check", "--no-cache-dir"]
    wheels = tmp_path / "wheels"
    build = ("wheel", "--no-build-isolation", "--no-deps", "-w", wheels)
    run(*pip, *build, sources / "python", env=offline)
    (wheel,) = wheels.iterdir()
    assert wheel.name.endswith("-py3-none-any.whl")
    run(*pip, "install", wheel, env=offline)
    script = (
        "import plenvorith, sys; print(plenvorith.__file__, plenvorith.__version__);"
        "print(len(plenvorith.load(sys.argv[1])))"
    )
    where, count = run(python, "-c", script, sample("bracket"), env=offline, cwd="/").splitlines()
    file, version = where.split()
    assert Path(file).is_relative_to(venv)
    assert f"VERSION {version}\n" in (sources / "CMakeLists.txt").read_text()
    assert (Path(file).parent / "py.typed").exists()
    assert count == "548"


def test_types_are_right(tmp_path):
    if importlib.util.find_spec("mypy") is None:
        pytest.skip("needs the Debian package mypy")
    (tmp_path / "use.py").write_text(
        "import plenvorith\n"
        "mesh: plenvorith.Mesh = plenvorith.load('a.step')\n"
        "parts: list[plenvorith.Mesh] = plenvorith.load(bytearray(), split=True)\n"
        "for path, result in plenvorith.load_many(['a.step']):\n"
        "    if isinstance(result, plenvorith.ConversionError):\n"
        "        print(path.upper(), result.reason.upper())\n"
        "    else:\n"
        "        print(result.triangles.shape, result.indexed()[1].dtype)\n"
    )
    run(
        sys.executable, "-m", "mypy", "--strict", "--python-version", "3.9",
        "--cache-dir", tmp_path / "cache", "--config-file", PYTHON / "pyproject.toml",
        PYTHON / "plenvorith", tmp_path / "use.py", cwd=tmp_path,
    )  # fmt: skip


def test_style_is_clean():
    if importlib.util.find_spec("flake8") is None:
        pytest.skip("needs the Debian package python3-flake8")
    assert run(sys.executable, "-m", "flake8", "--config", PYTHON / ".flake8", PYTHON, cwd=PYTHON) == ""


def test_numpy_is_all_that_is_imported():
    script = (
        "import sys, numpy; before = set(sys.modules); import plenvorith;"
        "print(*sorted({name.partition('.')[0] for name in set(sys.modules) - before}))"
    )
    imported = set(run(sys.executable, "-c", script).split())
    assert imported - set(sys.stdlib_module_names) <= {"numpy", "plenvorith"}
