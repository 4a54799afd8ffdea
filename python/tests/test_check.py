"""What plenvorith-check says, as dictionaries."""

import shutil
from pathlib import Path

import pytest

import plenvorith

pytestmark = pytest.mark.skipif(
    shutil.which("plenvorith-check") is None, reason="plenvorith-check is not built"
)


def test_a_good_file_has_no_problems(sample):
    (whole,) = plenvorith.check(sample("assembly"))
    assert (whole["parts"], whole["partsWithProblems"]) == (4, 0)


def test_all_parts_have_the_names_and_numbers_of_a_split(sample):
    *parts, whole = plenvorith.check(sample("assembly"), all_parts=True)
    split = plenvorith.load(sample("assembly"), split=True)
    assert [(part["number"], tuple(part["path"]), part["name"]) for part in parts] == [
        (mesh.number, mesh.path, mesh.name) for mesh in split
    ]
    assert [part["closed"] for part in parts] == [True, True, True, False]


def test_a_mesh_is_compared_with_its_file(sample, tmp_path):
    (mesh,) = plenvorith.convert(sample("bracket"), tmp_path / "a.stl", prepare=False)
    (whole,) = plenvorith.check(sample("bracket"), mesh)
    assert whole["partsWithProblems"] == 0
    with pytest.raises(plenvorith.ConversionError, match="not the mesh of"):
        plenvorith.check(sample("paired"), mesh)
    (mesh,) = plenvorith.convert(sample("bracket"), mesh, prepare=False, deflection=0.5)
    plenvorith.check(sample("bracket"), mesh, deflection=0.5)


def test_bytes_will_do(sample, tmp_path):
    step = Path(sample("bracket")).read_bytes()
    (path,) = plenvorith.convert(sample("bracket"), tmp_path / "a.stl", prepare=False)
    stl = Path(path).read_bytes()
    assert plenvorith.check(step) == plenvorith.check(sample("bracket"))
    assert plenvorith.check(memoryview(stl)) == plenvorith.check(path)
    assert plenvorith.check(step, memoryview(stl)) == plenvorith.check(sample("bracket"), path)


def test_a_hole_is_a_problem(sample, tmp_path):
    mesh = plenvorith.load(sample("bracket"))
    stl = bytes(80) + (len(mesh) - 1).to_bytes(4, "little") + mesh.facets[1:].tobytes()
    said = plenvorith.check(bytearray(stl))[-1]
    assert said["closed"] is False
    assert said["openEdges"] == 3


@pytest.mark.parametrize("source", ["nothing.step", b"Dear Sir or Madam,\n", b""])
def test_rejects_what_cannot_be_read(source):
    with pytest.raises(plenvorith.ConversionError) as caught:
        plenvorith.check(source)
    assert caught.value.exit_status == 1
    assert caught.value.reason and not caught.value.reason.startswith("Error")


def test_a_time_limit_holds(endless):
    with pytest.raises(plenvorith.ConversionError, match="time limit of 1 s"):
        plenvorith.check(endless, time_limit=1)


def test_rejects_a_deflection_without_a_mesh(sample):
    with pytest.raises(ValueError, match="there is none"):
        plenvorith.check(sample("bracket"), deflection=0.5)


def test_names_that_are_no_utf_8_can_be_printed(tmp_path, monkeypatch):
    program = tmp_path / "plenvorith-check"
    program.write_text(
        "#!/bin/sh\nprintf '%s\\n' '" + r'{"name":"a\udcff","path":["\\udcff","\\\udc80"]}' + "'\n"
    )
    program.chmod(0o755)
    monkeypatch.setenv("PATH", f"{tmp_path}:/usr/bin:/bin")
    assert plenvorith.check("a.step") == [{"name": r"a\xff", "path": [r"\udcff", r"\\x80"]}]
