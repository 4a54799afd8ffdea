"""What a process has on disk and which workers it runs."""

from __future__ import annotations

import atexit
import contextlib
import itertools
import os
import sys
import threading
from typing import Iterator

from ._errors import ConversionError, WorkerError
from ._folder import MEMORY, PrivateFolder, remove_abandoned, temporary_base
from ._worker import Worker


class Context:
    """The private folders of a process, and its workers. For any number of threads."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._folders: dict[str, PrivateFolder] = {}
        self._serial = itertools.count(1)
        self._workers: set[Worker] = set()
        self._idle: list[Worker] = []
        self._is_set_up = False

    def _set_up(self) -> None:
        if self._is_set_up:
            return
        self._is_set_up = True
        for base in {MEMORY, temporary_base()}:
            remove_abandoned(base)
        # Processes of multiprocessing end without a look at atexit.
        if "multiprocessing.util" in sys.modules:
            sys.modules["multiprocessing.util"].Finalize(None, self.close, exitpriority=10)
        atexit.register(self.close)

    def _make_folder(self, base: str) -> str:
        with self._lock:
            if base not in self._folders:
                self._folders[base] = PrivateFolder(base)
            path = os.path.join(self._folders[base].path, str(next(self._serial)))
        os.makedirs(path)
        return path

    def start_worker(self) -> Worker:
        with self._lock:
            self._set_up()
        worker = Worker(self._make_folder)
        self._workers.add(worker)
        return worker

    def end_worker(self, worker: Worker) -> None:
        self._workers.discard(worker)
        worker.close()

    @contextlib.contextmanager
    def worker(self) -> Iterator[Worker]:
        """A worker for the caller alone: one that is idle, or a new one."""
        try:
            worker = self._idle.pop()
            if not worker.is_alive():
                self.end_worker(worker)
                worker = self.start_worker()
        except IndexError:
            worker = self.start_worker()
        try:
            yield worker
        except BaseException as error:
            if isinstance(error, ConversionError) and not isinstance(error, WorkerError):
                self._idle.append(worker)
            else:
                self.end_worker(worker)
            raise
        self._idle.append(worker)

    def make_temporary_folder(self) -> str:
        """A new folder of the caller's, who removes it."""
        with self._lock:
            self._set_up()
        return self._make_folder(temporary_base())

    def close(self) -> None:
        """Ends all workers and removes all folders. It may go on being used."""
        atexit.unregister(self.close)
        with self._lock:
            self._is_set_up = False
            workers, self._workers, self._idle = self._workers, set(), []
            folders, self._folders = self._folders, {}
        for worker in workers:
            worker.close()
        for folder in folders.values():
            folder.close()

    def abandon(self) -> None:
        """In a copy of the process that has it all. Nothing is locked here: who would unlock it?"""
        for worker in self._workers:
            worker.abandon()
        for folder in self._folders.values():
            folder.abandon()
        atexit.unregister(self.close)


_current = Context()


def context() -> Context:
    """That of this process."""
    return _current


def _start_anew() -> None:
    global _current
    old, _current = _current, Context()
    old.abandon()


os.register_at_fork(after_in_child=_start_anew)
