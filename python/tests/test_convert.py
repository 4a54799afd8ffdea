"""Files to files."""

import os
import subprocess
from pathlib import Path

import pytest
from conftest import TRIANGLE

import plenvorith


def made_by_program(source, output, *more):
    """What the program itself makes in an empty folder: contents by name."""
    folder = output.parent / "expected"
    folder.mkdir()
    subprocess.run(
        ["plenvorith", source, folder / output.name, *more], capture_output=True, check=True
    )
    return {path.name: path.read_bytes() for path in folder.iterdir()}


@pytest.mark.parametrize("name", ["assembly", "mixed", "tessellated"])
@pytest.mark.parametrize("output", ["part.stl", "PART.STP", "a. b.step"])
@pytest.mark.parametrize("split", [False, True])
def test_makes_what_the_program_makes(name, output, split, sample, tmp_path):
    if name == "tessellated" and split and not output.lower().endswith("stl"):
        pytest.skip("there is nothing exact in it")
    expected = made_by_program(sample(name), tmp_path / output, *["0.1", "yes"][: 2 * split])
    (tmp_path / "made").mkdir()
    paths = plenvorith.convert(
        sample(name), tmp_path / "made" / output, split=split, prepare=False
    )
    made = {os.path.basename(path): Path(path).read_bytes() for path in paths}
    assert set(made) == set(expected)
    assert sorted(os.listdir(tmp_path / "made")) == sorted(expected)
    for file, content in expected.items():
        if file.lower().endswith(".stl"):
            assert made[file] == content
        else:  # its header has the time
            assert made[file].split(b"DATA;")[1] == content.split(b"DATA;")[1]


def test_what_fails_leaves_what_is_there(tmp_path):
    target = tmp_path / "a.stl"
    target.write_bytes(b"old")
    with pytest.raises(plenvorith.ConversionError):
        plenvorith.convert(b"\n", target)
    assert target.read_bytes() == b"old"
    plenvorith.convert(TRIANGLE, target)
    assert target.stat().st_size == 134
    assert sorted(os.listdir(tmp_path)) == ["a.stl", "memory", "tmp"]


def test_files_have_the_usual_rights(tmp_path):
    before = os.umask(0o027)
    try:
        plenvorith.convert(TRIANGLE, tmp_path / "a.stl")
    finally:
        os.umask(before)
    assert (tmp_path / "a.stl").stat().st_mode & 0o777 == 0o640


def test_a_link_leads_to_the_file(tmp_path):
    (tmp_path / "there").mkdir()
    (tmp_path / "a.stl").symlink_to("there/b.stl")
    assert plenvorith.convert(TRIANGLE, tmp_path / "a.stl") == [str(tmp_path / "there" / "b.stl")]


@pytest.mark.parametrize("output", ["a.obj", "a", "stl", "a.stl/b", ""])
def test_rejects_other_outputs(output, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(ValueError, match="must end in"):
        plenvorith.convert(TRIANGLE, output)


def test_rejects_the_input_as_output(tmp_path):
    path = tmp_path / "a.stp"
    path.write_bytes(TRIANGLE)
    with pytest.raises(ValueError, match="must not be the input"):
        plenvorith.convert(path, path)
    assert path.read_bytes() == TRIANGLE


def test_rejects_a_folder_that_is_not_there(tmp_path):
    with pytest.raises(FileNotFoundError, match="nowhere"):
        plenvorith.convert(TRIANGLE, tmp_path / "nowhere" / "a.stl")
