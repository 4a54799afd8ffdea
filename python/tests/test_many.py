"""Many files at a time."""

import os
import signal

import pytest
from conftest import SAMPLES, TRIANGLE, children_of, until, workers_of

import plenvorith
from plenvorith import ConversionError, Mesh


def write(path, content=TRIANGLE):
    path.write_bytes(content)
    return path


def test_each_file_comes_with_its_mesh():
    meshes = dict(plenvorith.load_many(SAMPLES, jobs=3))
    assert set(meshes) == set(SAMPLES)
    for path, mesh in meshes.items():
        assert mesh.facets.tobytes() == plenvorith.load(path).facets.tobytes()


def test_they_come_as_they_end(tmp_path, endless):
    quick = [write(tmp_path / f"{i}.step") for i in range(6)]
    results = plenvorith.load_many([endless, *quick], jobs=2, time_limit=3, prepare=False)
    order = [path for path, _ in results]
    assert order == [*quick, endless]


def test_bad_files_in_the_midst_of_200_are_their_own_results(tmp_path):
    bad = {
        7: b"no STEP file\n",
        50: b"",
        99: TRIANGLE.replace(b"(1.,0.,0.)", b"(x.,0.,0.)"),
        198: TRIANGLE[:-18],
    }
    paths = [write(tmp_path / f"{i:03}.step", bad.get(i, TRIANGLE)) for i in range(200)]
    results = dict(plenvorith.load_many(paths, jobs=4, prepare=False))
    assert len(results) == 200
    for i, path in enumerate(paths):
        assert isinstance(results[path], Mesh) == (i not in (7, 50, 99)), path
    assert isinstance(results[paths[7]], ConversionError)
    assert results[paths[50]].reason == "empty"
    assert results[paths[99]].signal == signal.SIGABRT
    assert results[paths[198]].doubt == "ends in the middle (no END-ISO-10303-21)"


def test_a_worker_that_is_killed_takes_no_file_with_it(tmp_path):
    paths = [write(tmp_path / f"{i}.step") for i in range(30)]
    results = plenvorith.load_many(paths, jobs=2)
    seen = dict([next(results)])
    for worker in workers_of(os.getpid()):
        os.kill(worker, signal.SIGKILL)
    seen.update(results)
    assert [len(seen[path]) for path in paths] == [1] * 30


def test_leaving_early_ends_the_workers(tmp_path, endless):
    paths = [write(tmp_path / "a.step"), endless, endless]
    for path, mesh in plenvorith.load_many(paths, jobs=3, prepare=False):
        until(lambda: sum(len(children_of(worker)) for worker in workers_of(os.getpid())) == 2)
        break
    assert workers_of(os.getpid()) == []


def test_files_are_taken_as_there_is_room_for_them(tmp_path):
    taken = []

    def endlessly_many():
        while True:
            taken.append(TRIANGLE)
            yield TRIANGLE

    for number, (_, mesh) in enumerate(plenvorith.load_many(endlessly_many(), jobs=2)):
        if number == 9:
            break
    assert len(taken) == 12  # ten, and two under way


def test_nothing_to_do_starts_nothing():
    assert list(plenvorith.load_many([])) == []
    assert workers_of(os.getpid()) == []


def test_parts_come_as_lists(sample):
    ((path, parts),) = plenvorith.load_many([sample("assembly")], split=True)
    assert [part.number for part in parts] == [1, 2, 3, 4]


@pytest.mark.parametrize(
    "arguments, kind",
    [
        (("a.step",), TypeError),
        ((b"a.step",), TypeError),
        ((None,), TypeError),
        (([],), ValueError),
        (([],), TypeError),
    ],
    ids=["str", "bytes", "None", "no jobs", "half a job"],
)
def test_rejects_arguments_before_anything_is_begun(arguments, kind):
    with pytest.raises(kind):
        plenvorith.load_many(*arguments, jobs=0 if kind is ValueError else 0.5)
