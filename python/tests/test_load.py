"""Files become the arrays that they should."""

import math
import os
import pickle
import subprocess
from pathlib import Path

import numpy as np
import pytest
from conftest import SAMPLES, TRIANGLE, volume

import plenvorith


def facets_of_program(source, folder, *more):
    """The records that the program itself writes, or None."""
    target = folder / "program.stl"
    target.unlink(missing_ok=True)
    subprocess.run(["plenvorith", source, target, *more], capture_output=True, cwd=folder)
    return target.read_bytes()[84:] if target.exists() else None


def real_files():
    folder = os.environ.get("PLENVORITH_CORPUS")
    return sorted(Path(folder).glob("*.st*p")) + sorted(Path(folder).glob("*.p21")) if folder else []


@pytest.mark.parametrize("path", SAMPLES + real_files(), ids=lambda path: path.stem)
def test_facets_are_those_of_the_program_to_the_bit(path, tmp_path):
    expected = facets_of_program(path, tmp_path)
    if expected is None:
        with pytest.raises(plenvorith.ConversionError):
            plenvorith.load(path, prepare=False)
    else:
        assert plenvorith.load(path, prepare=False).facets.tobytes() == expected


@pytest.mark.parametrize("path", SAMPLES, ids=lambda path: path.stem)
def test_facets_are_those_of_preparing_and_converting(path, tmp_path):
    ready = tmp_path / "ready.step"
    subprocess.run(["plenvorith-prepare", path, ready], capture_output=True, check=True)
    expected = facets_of_program(ready, tmp_path)
    assert plenvorith.load(path).facets.tobytes() == expected


@pytest.mark.parametrize(
    "form",
    [str, os.fsencode, Path, Path.read_bytes]
    + [lambda path: bytearray(path.read_bytes()), lambda path: memoryview(path.read_bytes())],
    ids=["str", "bytes path", "PathLike", "bytes", "bytearray", "memoryview"],
)
def test_input_may_be_a_path_or_bytes(form, sample):
    expected = plenvorith.load(sample("mixed")).facets.tobytes()
    assert plenvorith.load(form(Path(sample("mixed")))).facets.tobytes() == expected


def test_a_relative_path_is_that_of_the_moment(tmp_path, monkeypatch):
    (tmp_path / "a").mkdir()
    (tmp_path / "a" / "part.step").write_bytes(TRIANGLE)
    plenvorith.load(TRIANGLE)  # the worker has started elsewhere
    monkeypatch.chdir(tmp_path / "a")
    assert len(plenvorith.load("part.step")) == 1


@pytest.mark.parametrize("name", [b"\xff\xfe.step", b"a\n.step", b"[x] 'y'.step", b"\xc3\xa4 b.stp"])
def test_any_name_will_do(name, tmp_path):
    path = os.fsencode(tmp_path) + b"/" + name
    with open(path, "wb") as file:
        file.write(TRIANGLE)
    assert len(plenvorith.load(os.fsdecode(path))) == 1


def test_arrays_have_the_shapes_and_values_of_the_triangle():
    mesh = plenvorith.load(TRIANGLE)
    assert len(mesh) == 1
    assert mesh.triangles.dtype == np.float32
    assert mesh.triangles.tolist() == [[[0, 0, 0], [1, 0, 0], [0, 1, 0]]]
    assert mesh.normals.tolist() == [[0, 0, 1]]
    assert mesh.facets.itemsize == 50
    assert mesh.bounds.tolist() == [[0, 0, 0], [1, 1, 0]]
    assert np.shares_memory(mesh.triangles, mesh.facets)
    assert np.shares_memory(mesh.normals, mesh.facets)
    assert mesh.seconds > 0
    assert mesh.peak_memory > 1_000_000
    assert mesh.transcript.endswith("Done\n")
    assert mesh.doubt == ""
    assert repr(mesh) == "<plenvorith.Mesh of 1 triangles>"


def test_arrays_can_be_written_to_and_outlive_all_else(sample):
    mesh = plenvorith.load(sample("coupling"), deflection=0.01)
    triangles = mesh.triangles
    expected = triangles.copy()
    del mesh
    plenvorith.load(TRIANGLE)
    plenvorith._context.context().close()
    assert np.array_equal(triangles, expected)
    triangles *= 2
    assert np.array_equal(triangles, expected * 2)


def test_a_mesh_goes_through_pickle(sample):
    mesh = plenvorith.load(sample("bracket"))
    again = pickle.loads(pickle.dumps(mesh))
    assert again.facets.tobytes() == mesh.facets.tobytes()
    assert (again.seconds, again.transcript) == (mesh.seconds, mesh.transcript)
    assert np.array_equal(again.triangles, mesh.triangles)


# Chords lie inside of their circle by the deflection at most.
def test_volumes_are_those_of_the_formulas(sample):
    foot, pole, bulb, shade = plenvorith.load(sample("assembly"), split=True, deflection=0.005)
    for part, exact in (
        (foot, math.pi * 30**2 * 4),
        (pole, math.pi * 2.5**2 * 46),
        (bulb, 4 / 3 * math.pi * 8**3),
    ):
        assert exact * 0.998 < volume(part) < exact
    flange = plenvorith.load(sample("paired"), deflection=0.005)
    holes = 6 * math.pi * 3**2 * 6 + math.pi * 9**2 * 22
    exact = math.pi * 30**2 * 6 + math.pi * 14**2 * 16 - holes
    assert volume(flange) == pytest.approx(exact, rel=1e-3)
    ring = plenvorith.load(sample("mixed"), split=True, deflection=0.005)[0]
    assert volume(ring) == pytest.approx(2 * math.pi**2 * 9 * 1.5**2, rel=3e-3)


def test_parts_come_by_number_and_are_the_whole(sample):
    parts = plenvorith.load(sample("assembly"), split=True)
    whole = plenvorith.load(sample("assembly"))
    assert [part.number for part in parts] == [1, 2, 3, 4]
    # Their files the kernel writes itself; it meshes each by itself, and may cut a plane otherwise.
    assert sum(map(len, parts)) == len(whole)
    np.testing.assert_allclose(np.min([part.bounds[0] for part in parts], axis=0), whole.bounds[0])
    np.testing.assert_allclose(np.max([part.bounds[1] for part in parts], axis=0), whole.bounds[1])


def test_parts_have_the_names_of_the_file(sample, tmp_path):
    parts = plenvorith.load(sample("assembly"), split=True)
    assert [part.path for part in parts] == [
        ("lamp", "foot"),
        ("lamp", "pole"),
        ("lamp", "bulb"),
        ("lamp", "shade"),
    ]
    content = Path(sample("assembly")).read_bytes()
    content = content.replace(b"PRODUCT('foot','foot'", b"PRODUCT('foot','Fu\xc3\x9f \"1\"'")
    foot = plenvorith.load(content, split=True)[0]
    assert foot.path == ("lamp", 'Fu\u00df "1"')
    assert plenvorith.load(sample("assembly")).path == ()


def test_stored_triangles_are_the_last_part(sample):
    parts = plenvorith.load(sample("mixed"), split=True)
    assert [part.number for part in parts] == [1, None]
    assert len(parts[1]) == 118
    parts = plenvorith.load(sample("tessellated"), split=True)
    assert [part.number for part in parts] == [None]


def test_deflection_is_the_program_s(sample, tmp_path):
    expected = facets_of_program(sample("assembly"), tmp_path, "0.5")
    assert plenvorith.load(sample("assembly"), deflection=0.5).facets.tobytes() == expected
    assert plenvorith.load(sample("assembly"), deflection=np.float32(0.5)).facets.tobytes() == expected


def test_a_file_that_ends_in_the_middle_is_doubtful():
    mesh = plenvorith.load(TRIANGLE.replace(b"END-ISO-10303-21;\n", b""), prepare=False)
    assert mesh.doubt == "ends in the middle (no END-ISO-10303-21)"


def test_nothing_is_printed(sample, capfd):
    plenvorith.load(sample("mixed"))
    with pytest.raises(plenvorith.ConversionError):
        plenvorith.load(b"no STEP file\n")
    assert capfd.readouterr() == ("", "")
