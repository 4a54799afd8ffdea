"""Where files lie while they are converted."""

import fcntl
import os

from conftest import TRIANGLE

import plenvorith
from plenvorith import _folder


def abandoned(base, name="plenvorith-python-x"):
    folder = base / name
    (folder / "1" / "out").mkdir(parents=True)
    (folder / "1" / "out" / "out.stl").write_bytes(b"old")
    return folder


def test_only_abandoned_folders_of_ours_are_removed(tmp_path):
    gone = abandoned(tmp_path)
    other = abandoned(tmp_path, "plenvorith-batch-x")
    (tmp_path / "plenvorith-python-file").write_bytes(b"no folder")
    (tmp_path / "plenvorith-python-link").symlink_to(other)
    lives = abandoned(tmp_path, "plenvorith-python-lives")
    descriptor = os.open(lives, os.O_RDONLY)
    fcntl.flock(descriptor, fcntl.LOCK_EX)
    _folder.remove_abandoned(str(tmp_path))
    os.close(descriptor)
    assert not gone.exists()
    assert (other / "1" / "out" / "out.stl").exists()
    assert (lives / "1" / "out" / "out.stl").exists()
    assert (tmp_path / "plenvorith-python-file").exists()
    assert (tmp_path / "plenvorith-python-link").is_symlink()


def test_the_first_use_removes_what_is_abandoned(memory, own_temporary_folder):
    folders = [abandoned(memory), abandoned(own_temporary_folder)]
    plenvorith.load(TRIANGLE)
    assert [folder.exists() for folder in folders] == [False, False]


def test_a_folder_taken_before_it_is_locked_is_made_again(memory, monkeypatch):
    lock, taken = _folder._lock, []

    def lock_too_late(descriptor):
        if not taken:
            taken.append(True)
            os.rmdir(memory / os.listdir(memory)[0])
        return lock(descriptor)

    monkeypatch.setattr(_folder, "_lock", lock_too_late)
    folder = _folder.PrivateFolder(str(memory))
    assert os.path.isdir(folder.path)
    folder.close()
    assert os.listdir(memory) == []


def test_without_room_in_memory_the_disk_is_taken(monkeypatch, memory, own_temporary_folder):
    assert _folder.roomy_base(1) == str(memory)
    assert _folder.roomy_base(1 << 60) == str(own_temporary_folder)
    monkeypatch.setattr(_folder, "MEMORY", "/nowhere")
    assert _folder.roomy_base(1) == str(own_temporary_folder)
    assert len(plenvorith.load(TRIANGLE)) == 1


def test_where_memory_is_full_the_disk_is_tried(monkeypatch, tmp_path, sample):
    """By a worker that says so once."""
    from plenvorith import _worker

    result_of, bases = _worker.result_of, []

    def full_at_first(line, number, asked):
        if not bases:
            bases.append("memory")
            line = b'{"protocol":1,"id":%d,"converted":false,"reason":"disk full"}' % number
        return result_of(line, number, asked)

    monkeypatch.setattr(_worker, "result_of", full_at_first)
    assert len(plenvorith.load(sample("bracket"))) == 548
    assert bases
    bases.clear()
    ((_, mesh),) = plenvorith.load_many([sample("bracket")])
    assert bases and len(mesh) == 548
