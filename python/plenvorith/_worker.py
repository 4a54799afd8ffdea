"""A worker: a process that converts file after file, each in a copy of itself."""

from __future__ import annotations

import os
import select
import shutil
import signal
import subprocess
import time
from typing import IO, Callable

from ._errors import WorkerError, shown
from ._job import NoResult, Place, Result, Settings, job_line, result_of
from ._programs import find_program

# A worker ends a conversion at its time limit, and what does not end then some seconds later. One that
# has said nothing so long after the limit never will.
GRACE = 20.0
# How long a worker may be seen stopped. Where a whole session is stopped and goes on, this process may
# go on first.
STOPPED = 2.0
LOOK = 0.2


class Worker:
    """One process of plenvorith-batch, and what it has under way: one job, or none."""

    def __init__(self, make_folder: Callable[[str], str]) -> None:
        """`make_folder` makes a folder for this worker alone below a base."""
        program = find_program("plenvorith-batch")
        self._make_folder = make_folder
        self._folders: dict[str, str] = {}
        self._owner = os.getpid()
        self._errors: IO[bytes] = os.fdopen(os.memfd_create("errors"), "w+b", buffering=0)
        self._process = subprocess.Popen(
            [program, "--worker"],
            bufsize=0,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=self._errors,
            # What is meant for this process, as an interruption from the keyboard, does not reach it.
            start_new_session=True,
        )
        assert self._process.stdin and self._process.stdout
        self._jobs = self._process.stdin
        self._results = self._process.stdout
        self._number = 0  # of the last job
        self._asked = ""  # the output of the job under way, or nothing
        self._deadline = 0.0
        self._stopped = 0.0  # how long it has been seen so
        self._answer: list[bytes] = []
        self._trouble = ""

    @property
    def descriptor(self) -> int:
        """Can be read when there is an answer."""
        return self._results.fileno()

    def is_alive(self) -> bool:
        return self._process.poll() is None

    def place(self, base: str) -> Place:
        """Where below a base its jobs lie on disk."""
        if base not in self._folders:
            self._folders[base] = self._make_folder(base)
        folder = self._folders[base]
        return Place(*(os.path.join(folder, name) for name in ("out", "tmp", "log", "input.step")))

    def start(self, source: bytes, output: str, place: Place, settings: Settings) -> None:
        """Gives it a job. What becomes of that is known when `wait` names the worker."""
        self._check_owner()
        self._number += 1
        self._asked = output
        self._answer = []
        self._stopped = 0.0
        limit = settings.time_limit
        self._deadline = time.monotonic() + limit + GRACE if limit else float("inf")
        rest = memoryview(job_line(self._number, source, output, place, settings))
        try:
            while rest:
                rest = rest[self._jobs.write(rest) :]
        except BrokenPipeError:
            self._trouble = "ended"

    def receive(self) -> bool:
        """Takes what has come; whether that is all that will."""
        block = os.read(self.descriptor, 1 << 16)
        self._answer.append(block)
        if not block:
            self._trouble = "ended"
        return not block or b"\n" in block

    def look(self) -> bool:
        """Looks whether it will ever answer; to be called every LOOK seconds."""
        try:
            state = os.waitid(
                os.P_PID,
                self._process.pid,
                os.WEXITED | os.WSTOPPED | os.WNOHANG | os.WNOWAIT,
            )
        except ChildProcessError:
            state = None  # this process lets the system bury its children
        if state is not None and state.si_code == os.CLD_STOPPED:
            self._stopped += LOOK
        else:
            self._stopped = 0.0
        if self._stopped >= STOPPED:
            self._trouble = "was stopped"
        elif time.monotonic() > self._deadline:
            self._trouble = "does not answer"
        return self._trouble != ""

    def result(self) -> Result:
        """The result of the job. Raises WorkerError; then the worker is good for nothing more."""
        if not self._trouble:
            try:
                answer = result_of(b"".join(self._answer), self._number, self._asked)
                self._asked = ""
                return answer
            except NoResult as error:
                self._trouble = f"gave no result of ours: {error}"
        if self._trouble != "ended":
            raise WorkerError(f"the worker {self._trouble}")
        try:
            status = self._process.wait(STOPPED)
        except subprocess.TimeoutExpired:
            raise WorkerError("the worker closed its results") from None
        if status < 0:
            name = signal.Signals(-status).name if -status in set(signal.Signals) else ""
            raise WorkerError(f"the worker was killed (signal {-status}, {name})", signal=-status)
        self._errors.seek(0)
        last = shown(self._errors.read()[-4096:]).strip().rpartition("\n")[2]
        raise WorkerError(f"the worker ended with status {status}" + (last and f": {last}"))

    def close(self) -> None:
        """Ends it, with the conversion under way, and removes its folders."""
        if os.getpid() != self._owner:
            return  # a copy of what another process has
        try:
            if self._asked and self._trouble != "was stopped":
                self._process.terminate()  # it waits for the end of its conversion
                self._process.wait(STOPPED)
        except subprocess.TimeoutExpired:
            pass
        finally:
            self._process.kill()
            self._process.wait()
            self._close_streams()
            for folder in self._folders.values():
                shutil.rmtree(folder, ignore_errors=True)

    def abandon(self) -> None:
        """In a copy of the process that has it: so that the worker notices when that process ends."""
        self._close_streams()
        self._process.returncode = 0  # there is nothing to bury here

    def _close_streams(self) -> None:
        for stream in (self._jobs, self._results, self._errors):
            stream.close()

    def _check_owner(self) -> None:
        if os.getpid() != self._owner:
            raise RuntimeError("the conversions belong to the process that this one was forked from")


def wait(workers: list[Worker]) -> Worker:
    """Waits for the first of busy workers that has an answer, or never will."""
    poller = select.poll()
    by_descriptor = {}
    for worker in workers:
        worker._check_owner()
        by_descriptor[worker.descriptor] = worker
        poller.register(worker.descriptor, select.POLLIN)
    next_look = time.monotonic() + LOOK
    while True:
        for descriptor, _ in poller.poll(LOOK * 1000):
            if by_descriptor[descriptor].receive():
                return by_descriptor[descriptor]
        if time.monotonic() >= next_look:
            next_look = time.monotonic() + LOOK
            for worker in workers:
                if worker.look():
                    return worker
