"""Threads, forks, interruptions and kills: nothing is shared that must not be, nothing stays behind."""

import gc
import multiprocessing
import os
import signal
import threading
import time

import pytest
from conftest import TRIANGLE, children_of, is_alive, until, workers_of

import plenvorith


def count_of(source):
    return len(plenvorith.load(source))


def test_threads_convert_at_the_same_time(sample):
    counts = {}

    def convert(number):
        for _ in range(5):
            source, count = ((sample("bracket"), 548), (TRIANGLE, 1))[number % 2]
            counts.setdefault(number, []).append(count_of(source) == count)

    threads = [threading.Thread(target=convert, args=(number,)) for number in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert counts == {number: [True] * 5 for number in range(8)}


def test_a_thread_that_waits_keeps_no_other_waiting(endless):
    def convert():
        with pytest.raises(plenvorith.ConversionError, match="time limit"):
            plenvorith.load(endless, prepare=False, time_limit=4)

    thread = threading.Thread(target=convert)
    thread.start()
    until(lambda: any(children_of(worker) for worker in workers_of(os.getpid())))
    assert count_of(TRIANGLE) == 1
    assert thread.is_alive()
    thread.join()


def test_one_worker_does_for_one_thread_after_another():
    for _ in range(3):
        thread = threading.Thread(target=plenvorith.load, args=(TRIANGLE,))
        thread.start()
        thread.join()
    assert len(workers_of(os.getpid())) == 1


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_processes_of_multiprocessing_start_anew(method, sample, memory):
    mesh = plenvorith.load(sample("bracket"))
    with multiprocessing.get_context(method).Pool(2) as pool:
        counts = pool.map_async(count_of, [sample("bracket"), TRIANGLE] * 3)
        assert count_of(TRIANGLE) == 1  # at the same time
        assert counts.get(60) == [548, 1] * 3
        pool.close()
        pool.join()
    assert len(mesh.triangles) == 548
    assert len(workers_of(os.getpid())) == 1


def test_a_mesh_comes_out_of_another_process(sample):
    with multiprocessing.get_context("fork").Pool(1) as pool:
        mesh = pool.apply(plenvorith.load, (sample("bracket"),))
        with pytest.raises(plenvorith.ConversionError, match="cannot be read"):
            pool.apply(plenvorith.load, ("nothing.step",))
        pool.close()
        pool.join()
    assert mesh.facets.tobytes() == plenvorith.load(sample("bracket")).facets.tobytes()


def test_a_fork_shares_nothing_and_takes_nothing_with_it():
    plenvorith.load(TRIANGLE)
    workers = workers_of(os.getpid())
    iterator = plenvorith.load_many([TRIANGLE] * 3, jobs=1)
    next(iterator)
    child = os.fork()
    if child == 0:
        status = 1
        try:
            assert count_of(TRIANGLE) == 1
            with pytest.raises(RuntimeError, match="forked from"):
                list(iterator)
            plenvorith._context.context().close()
            status = 0
        finally:
            os._exit(status)
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
    assert len(list(iterator)) == 2
    assert count_of(TRIANGLE) == 1
    assert set(workers) <= set(workers_of(os.getpid()))


def test_a_fork_that_lives_on_keeps_no_worker_alive(interpreter):
    parent = interpreter(
        f"""
        plenvorith.load({TRIANGLE!r})
        child = os.fork()
        if child == 0:
            sys.stdin.readline()
            os._exit(0)
        say(child)
        sys.stdin.readline()
        """
    )
    child = int(parent.line())
    (worker,) = workers_of(parent.pid)
    parent.kill()
    until(lambda: not is_alive(worker))
    assert is_alive(child)
    os.kill(child, signal.SIGKILL)
    plenvorith.load(TRIANGLE)  # removes what the killed one has left


def test_an_interruption_ends_the_conversion_within_a_second(endless, interpreter, memory):
    python = interpreter(
        f"""
        import time
        try:
            say("begins")
            plenvorith.load({endless!r}, prepare=False)
        except KeyboardInterrupt:
            say("interrupted", len(plenvorith.load({TRIANGLE!r})))
        """
    )
    assert python.line() == "begins"
    until(lambda: any(children_of(worker) for worker in workers_of(python.pid)))
    (worker,) = workers_of(python.pid)
    (child,) = children_of(worker)
    start = time.monotonic()
    python.kill(signal.SIGINT)
    until(lambda: not is_alive(child))
    assert time.monotonic() - start < 1
    assert python.end() == ("interrupted 1\n", "", 0)
    assert os.listdir(memory) == []


def test_an_interruption_of_many_ends_them_all(endless, interpreter, memory):
    python = interpreter(
        f"""
        say("begins")
        try:
            list(plenvorith.load_many([{endless!r}] * 3, jobs=3, prepare=False))
        except KeyboardInterrupt:
            say("interrupted")
            sys.stdin.readline()
        """
    )
    assert python.line() == "begins"
    until(lambda: sum(len(children_of(worker)) for worker in workers_of(python.pid)) == 3)
    python.kill(signal.SIGINT)
    assert python.line() == "interrupted"
    assert workers_of(python.pid) == []
    assert os.listdir(memory) != []  # its folder, which is empty
    assert [files for _, _, files in os.walk(memory) if files] == []
    python.end()


@pytest.mark.parametrize("ends", ["pass", "raise SystemExit(0)", "1 / 0", "exit()"])
def test_the_end_of_an_interpreter_leaves_nothing(ends, interpreter, memory):
    python = interpreter(
        f"""
        mesh = plenvorith.load({TRIANGLE!r})
        iterator = plenvorith.load_many([{TRIANGLE!r}] * 9, jobs=2)
        next(iterator)
        say(*os.listdir(os.environ["MEMORY"]))
        {ends}
        """
    )
    assert python.line().startswith("plenvorith-python-")
    python.end()
    assert os.listdir(memory) == []


def test_what_a_killed_interpreter_leaves_the_next_start_removes(endless, interpreter, memory):
    script = f"say('begins'); plenvorith.load({endless!r}, prepare=False)"
    killed, lives = interpreter(script), interpreter(script)
    for python in (killed, lives):
        until(lambda: any(children_of(worker) for worker in workers_of(python.pid)))
    (worker,) = workers_of(killed.pid)
    assert len(os.listdir(memory)) == 2
    killed.kill()
    until(lambda: not is_alive(worker))
    assert len(os.listdir(memory)) == 2
    starts = interpreter(f"plenvorith.load({TRIANGLE!r}); say(*os.listdir(os.environ['MEMORY']))")
    assert len(starts.line().split()) == 2  # its own, and that of the one that lives
    starts.end()
    assert len(os.listdir(memory)) == 1
    assert any(children_of(worker) for worker in workers_of(lives.pid))
    lives.kill(signal.SIGINT)
    lives.end()
    assert os.listdir(memory) == []


def test_where_children_are_ignored_all_works(interpreter):
    python = interpreter(
        f"""
        import signal
        signal.signal(signal.SIGCHLD, signal.SIG_IGN)
        say(len(plenvorith.load({TRIANGLE!r})))
        """
    )
    assert python.end() == ("1\n", "", 0)


def test_descriptors_stay_as_many(sample):
    plenvorith.load(TRIANGLE)
    gc.collect()  # what other tests have left
    before = len(os.listdir("/proc/self/fd"))
    for _ in range(20):
        plenvorith.load(sample("bracket"))
        with pytest.raises(plenvorith.ConversionError):
            plenvorith.load(b"\n")
    list(plenvorith.load_many([TRIANGLE] * 5, jobs=2))
    assert len(os.listdir("/proc/self/fd")) <= before


def test_hundreds_of_meshes_can_be_held(interpreter):
    # Each just large enough to be mapped.
    python = interpreter(
        f"""
        import resource
        resource.setrlimit(resource.RLIMIT_NOFILE, (300, 300))
        step = {TRIANGLE!r}
        many = step.replace(b"((1,2,3))", b"(" + b",".join([b"(1,2,3)"] * 5300) + b")")
        held = [plenvorith.load(many) for _ in range(400)]
        say(set(map(len, held)), len(plenvorith.load(step)))
        """
    )
    assert python.end() == ("{5300} 1\n", "", 0)


def test_hundreds_of_loads_keep_the_memory(interpreter, sample):
    python = interpreter(
        f"""
        def resident():
            with open("/proc/self/statm") as statm:
                return int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

        mesh = plenvorith.load({sample("tessellated")!r})
        for _ in range(100):
            plenvorith.load({TRIANGLE!r})
        before = resident()
        for _ in range({2000 if "PLENVORITH_THOROUGH" in os.environ else 200}):
            mesh = plenvorith.load({sample("tessellated")!r})
        say(max(0, resident() - before))
        """
    )
    grown, err, status = python.end()
    assert (err, status) == ("", 0)
    assert int(grown) < 5_000_000
