"""Whatever is wrong with a file or with the machine raises what it should, and the next load works."""

import os
import pickle
import signal
import threading

import pytest
from conftest import TRIANGLE, children_of, is_alive, until, workers_of

import plenvorith
from plenvorith import ConversionError, MissingProgram, WorkerError


@pytest.fixture(autouse=True)
def next_load_works():
    yield
    assert len(plenvorith.load(TRIANGLE)) == 1


def error_of(source, **settings):
    with pytest.raises(ConversionError) as caught:
        plenvorith.load(source, **settings)
    assert type(caught.value) is ConversionError
    return caught.value


def test_a_crash_is_an_error_with_its_signal(sample):
    error = error_of(sample("bracket"), deflection=1e-9)
    assert error.signal == signal.SIGABRT
    assert error.exit_status is None
    assert error.reason == "kernel crashed (signal 6, SIGABRT)"
    assert "Meshing BRep (deflection=1e-09)" in error.transcript
    assert str(error) == f"{sample('bracket')}: {error.reason}"


def test_a_time_limit_ends_what_would_never_end(endless):
    assert error_of(endless, time_limit=0.5, prepare=False).reason == "time limit of 1 s"


def test_a_memory_limit_ends_what_needs_more(sample):
    error = error_of(sample("bracket"), memory_limit=100_000_000, deflection=0.00001)
    assert error.reason == "memory limit of 100000000 bytes"


def test_garbage_is_an_error_of_its_own():
    error = error_of(bytes(range(256)) * 10)
    assert error.reason.startswith("not a STEP file (no ISO-10303-21)")
    assert error.source is None
    assert str(error) == error.reason


@pytest.mark.parametrize("source", [b"", bytearray()])
def test_nothing_at_all_is_empty(source):
    assert error_of(source).reason == "empty"


@pytest.mark.parametrize("content", [b"x" * 4096, b"x\n", b"x\r", b"x\0", b"ISO-10303-21"])
def test_bytes_that_no_path_looks_like_are_content(content):
    assert error_of(content).source is None


@pytest.mark.parametrize("path", [b"x", b"x" * 200, b"/nothing/x.step"])
def test_other_bytes_are_a_path(path):
    assert error_of(path).source == path
    assert error_of(bytearray(path)).source is None


def test_a_missing_file_and_a_folder_cannot_be_read(tmp_path):
    error = error_of(tmp_path / "nothing.step")
    assert error.reason == "cannot be read: No such file or directory"
    assert (error.exit_status, error.signal, error.transcript) == (None, None, "")
    folder = error_of(tmp_path)
    assert folder.reason


def test_a_file_without_geometry_tells_its_exit_status():
    error = error_of(TRIANGLE.replace(b"#4=COMPLEX_TRIANGULATED_FACE", b"#4=OTHER"), prepare=False)
    assert error.exit_status == 1
    assert "No geometry found in file" in error.transcript


def test_errors_go_through_pickle(sample):
    error = error_of(sample("bracket"), deflection=1e-9)
    again = pickle.loads(pickle.dumps(error))
    assert type(again) is ConversionError
    assert vars(again) == vars(error)
    assert str(again) == str(error)


def test_a_name_that_is_no_text_can_be_printed(tmp_path):
    error = error_of(os.fsdecode(os.fsencode(tmp_path) + b"/\xff.step"))
    assert str(error).encode().endswith(b"/\\xff.step: cannot be read: No such file or directory")


@pytest.mark.parametrize(
    "settings, kind",
    [
        ({"deflection": "0.1"}, TypeError),
        ({"deflection": None}, TypeError),
        ({"deflection": True}, TypeError),
        ({"deflection": 0}, ValueError),
        ({"deflection": -1.0}, ValueError),
        ({"deflection": float("nan")}, ValueError),
        ({"time_limit": "60"}, TypeError),
        ({"time_limit": 0}, ValueError),
        ({"time_limit": float("inf")}, ValueError),
        ({"memory_limit": 1e9}, TypeError),
        ({"memory_limit": 0}, ValueError),
        ({"colour": "red"}, TypeError),
    ],
)
def test_rejects_arguments_that_cannot_be_meant(settings, kind):
    with pytest.raises(kind):
        plenvorith.load(TRIANGLE, **settings)
    with pytest.raises(kind):
        plenvorith.load_many([TRIANGLE], **settings)


@pytest.mark.parametrize("source", [None, 3, 1.5, ["a.step"]])
def test_rejects_what_is_neither_path_nor_bytes(source):
    with pytest.raises(TypeError):
        plenvorith.load(source)


def test_rejects_a_path_with_a_zero_byte():
    with pytest.raises(ValueError, match="null byte"):
        plenvorith.load("a\0.step")


def test_without_the_programs_the_package_is_named(monkeypatch, tmp_path):
    plenvorith._context.context().close()
    with monkeypatch.context() as patch:
        patch.setenv("PATH", str(tmp_path))
        for call in (plenvorith.load, plenvorith.check, lambda source: plenvorith.load_many([source])):
            with pytest.raises(MissingProgram, match="Debian package plenvorith"):
                call(TRIANGLE)


def in_background(call):
    """Runs it in a thread; gives the thread and where its exception goes."""
    raised = []

    def run():
        try:
            call()
        except Exception as error:
            raised.append(error)

    thread = threading.Thread(target=run)
    thread.start()
    return thread, raised


def the_busy_worker():
    """Number of the worker that has a conversion under way."""
    busy = [worker for worker in workers_of(os.getpid()) if children_of(worker)]
    return busy[0] if busy else None


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGABRT])
def test_a_worker_that_is_killed_is_an_error_of_the_worker(endless, number):
    thread, raised = in_background(lambda: plenvorith.load(endless, prepare=False))
    until(the_busy_worker)
    os.kill(the_busy_worker(), number)
    thread.join(30)
    assert type(raised[0]) is WorkerError
    assert raised[0].signal == number
    assert raised[0].reason == f"the worker was killed (signal {number:d}, {number.name})"


def test_a_worker_that_ends_says_how(endless):
    thread, raised = in_background(lambda: plenvorith.load(endless, prepare=False))
    until(the_busy_worker)
    os.kill(the_busy_worker(), signal.SIGTERM)
    thread.join(30)
    assert raised[0].reason.startswith("the worker ended with status 0")


def test_a_worker_that_is_stopped_is_given_up(endless):
    thread, raised = in_background(lambda: plenvorith.load(endless, prepare=False))
    until(the_busy_worker)
    worker = the_busy_worker()
    os.kill(worker, signal.SIGSTOP)
    thread.join(30)
    assert raised[0].reason == "the worker was stopped"
    assert worker not in workers_of(os.getpid())


def test_a_worker_that_died_while_idle_is_replaced():
    plenvorith.load(TRIANGLE)
    for worker in workers_of(os.getpid()):
        os.kill(worker, signal.SIGKILL)
        until(lambda: not is_alive(worker))
    assert len(plenvorith.load(TRIANGLE)) == 1


def fake_worker(folder, answer):
    """A program in PATH that answers each job with a line."""
    program = folder / "bin" / "plenvorith-batch"
    program.parent.mkdir()
    program.write_text(f"#!/bin/sh\nwhile read -r job; do printf '%s\\n' '{answer}'; done\n")
    program.chmod(0o755)
    return str(program.parent)


@pytest.mark.parametrize(
    "answer",
    [
        "motd: welcome",
        "[]",
        '{"id":1,"converted":true}',
        '{"protocol":2,"id":1,"converted":true}',
        '{"protocol":1,"id":7,"converted":false}',
        '{"protocol":1,"id":1,"converted":true,"outputs":[]}',
        '{"protocol":1,"id":1,"converted":true,"outputs":[{"path":"out.../../../etc"}]}',
        '{"protocol":1,"id":1,"converted":true,"outputs":[{"path":".bashrc"}]}',
        '{"protocol":1,"id":1,"converted":true,"outputs":"out.stl"}',
        '{"protocol":1,"id":1,"converted":false,"seconds":"long"}',
    ],
)
def test_an_answer_that_no_worker_gives_is_not_believed(answer, tmp_path, monkeypatch):
    with monkeypatch.context() as patch:
        plenvorith._context.context().close()
        patch.setenv("PATH", fake_worker(tmp_path, answer) + os.pathsep + os.environ["PATH"])
        with pytest.raises(WorkerError, match="the worker gave no result of ours"):
            plenvorith.load(TRIANGLE)


def test_unknown_fields_are_passed_over(tmp_path, monkeypatch):
    answer = '{"protocol":1,"id":1,"converted":false,"reason":"colours","colours":[1]}'
    with monkeypatch.context() as patch:
        plenvorith._context.context().close()
        patch.setenv("PATH", fake_worker(tmp_path, answer) + os.pathsep + os.environ["PATH"])
        assert error_of(TRIANGLE).reason == "colours"
        plenvorith._context.context().close()


def test_a_program_that_is_no_worker_is_quoted(tmp_path, monkeypatch):
    with monkeypatch.context() as patch:
        plenvorith._context.context().close()
        folder = fake_worker(tmp_path, "")
        (tmp_path / "bin" / "plenvorith-batch").write_text("#!/bin/sh\necho no kernel >&2\nexit 127\n")
        patch.setenv("PATH", folder + os.pathsep + os.environ["PATH"])
        with pytest.raises(WorkerError, match="the worker ended with status 127: no kernel"):
            plenvorith.load(TRIANGLE)
