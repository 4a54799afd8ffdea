"""Files to meshes, and files to files."""

from __future__ import annotations

import os
import secrets
import shutil
from dataclasses import dataclass
from typing import Generic, Iterable, Iterator, Literal, TypeVar, overload

from ._context import Context, context
from ._conversion import Conversion, Loaded
from ._errors import ConversionError, Path, Source, WorkerError
from ._job import Result, Settings
from ._mesh import Mesh
from ._programs import find_program
from ._worker import Worker, wait

S = TypeVar("S", bound=Source)


def _convert(conversion: Conversion, worker: Worker) -> Result:
    while True:
        conversion.start(worker)
        result = wait([worker]).result()
        if not conversion.is_for_another_place(result):
            return result


@overload
def load(
    source: Source,
    *,
    deflection: float = ...,
    split: Literal[False] = ...,
    prepare: bool = ...,
    time_limit: float | None = ...,
    memory_limit: int | None = ...,
) -> Mesh: ...


@overload
def load(
    source: Source,
    *,
    deflection: float = ...,
    split: Literal[True],
    prepare: bool = ...,
    time_limit: float | None = ...,
    memory_limit: int | None = ...,
) -> list[Mesh]: ...


def load(
    source: Source,
    *,
    deflection: float = 0.1,
    split: bool = False,
    prepare: bool = True,
    time_limit: float | None = None,
    memory_limit: int | None = None,
) -> Mesh | list[Mesh]:
    """Converts a STEP file to triangles, in millimetres.

    source        a path, or the content of a file as a bytearray or memoryview. `bytes` are a path,
                  unless they hold a line end, a zero byte or "ISO-10303-21", as any STEP file does:
                  give what comes from strangers as a memoryview.
    deflection    millimetres that the mesh is asked to stay within of the exact surface
    split         whether to give a list of meshes, one for each solid, free shell and free face, by
                  number; stored triangles are the last one
    prepare       whether to bring all of the file's tessellation into the form that is decoded, as
                  plenvorith-prepare does; without it the facets are those of plenvorith, to the bit
    time_limit    seconds, rounded up to whole ones; None for none
    memory_limit  bytes of address space; None for none

    Raises ConversionError, and what is derived from it, if there is no mesh; MissingProgram; TypeError
    and ValueError for arguments. An interruption (Ctrl-C) ends the conversion.
    """
    settings = Settings.of(deflection, prepare, split, time_limit, memory_limit)
    conversion = Conversion(source, settings)
    with context().worker() as worker:
        return conversion.load(_convert(conversion, worker))


def convert(
    source: Source,
    output: Path,
    *,
    deflection: float = 0.1,
    split: bool = False,
    prepare: bool = True,
    time_limit: float | None = None,
    memory_limit: int | None = None,
) -> list[str]:
    """Converts a STEP file to an STL file, or to a STEP file with the exact geometry alone.

    output   ends in .stl, .stp or .step, which says what to make. With `split` there is one file for
             each shape: part.stl_1.stl, part.stl_2.stl, ... Where a STEP file would lose geometry,
             which triangles are, an STL file is made instead, as plenvorith does.

    Gives the paths of what was made. The files appear when they are whole, and replace others. The
    other arguments, and what is raised, are those of `load`; and OSError if a file cannot be written.
    """
    settings = Settings.of(deflection, prepare, split, time_limit, memory_limit)
    target = os.path.realpath(os.fsdecode(output))
    stem, extension = os.path.splitext(target)
    if extension.lower() not in (".stl", ".stp", ".step"):
        raise ValueError("output must end in .stl, .stp or .step")
    asked = "out" + extension.lower()
    conversion = Conversion(source, settings, asked)
    if conversion.is_input(target):
        raise ValueError("output must not be the input")
    if not os.path.isdir(os.path.dirname(target)):
        raise FileNotFoundError(2, os.strerror(2), os.path.dirname(target))
    made = []
    with context().worker() as worker:
        for name, path in conversion.outputs(_convert(conversion, worker)).items():
            is_as_asked = name.startswith(asked)
            made.append(target + name[len(asked) :] if is_as_asked else stem + name[len("out") :])
            _move(path, made[-1])
    return made


def _move(source: str, target: str) -> None:
    """Also to another file system, and even then the target is whole whenever it is there."""
    aside = f"{target}.{secrets.token_hex(8)}"
    try:
        with open(source, "rb") as content, open(aside, "xb") as file:
            shutil.copyfileobj(content, file, 1 << 20)
        os.replace(aside, target)
    except BaseException:
        if os.path.exists(aside):
            os.unlink(aside)
        raise
    os.unlink(source)


@overload
def load_many(
    sources: Iterable[S],
    *,
    jobs: int | None = ...,
    deflection: float = ...,
    split: Literal[False] = ...,
    prepare: bool = ...,
    time_limit: float | None = ...,
    memory_limit: int | None = ...,
) -> Iterator[tuple[S, Mesh | ConversionError]]: ...


@overload
def load_many(
    sources: Iterable[S],
    *,
    jobs: int | None = ...,
    deflection: float = ...,
    split: Literal[True],
    prepare: bool = ...,
    time_limit: float | None = ...,
    memory_limit: int | None = ...,
) -> Iterator[tuple[S, list[Mesh] | ConversionError]]: ...


def load_many(
    sources: Iterable[S],
    *,
    jobs: int | None = None,
    deflection: float = 0.1,
    split: bool = False,
    prepare: bool = True,
    time_limit: float | None = None,
    memory_limit: int | None = None,
) -> Iterator[tuple[S, Mesh | list[Mesh] | ConversionError]]:
    """Converts STEP files, several at a time, and gives each with its mesh as it is done.

    jobs   how many at a time; None for as many as there are processors for this process

    A file that fails comes with its ConversionError in place of a mesh, and the others go on. Files are
    taken from `sources` as there is room for them. The other arguments are those of `load`. Leaving the
    loop early ends what is under way.
    """
    settings = Settings.of(deflection, prepare, split, time_limit, memory_limit)
    if jobs is None:
        jobs = len(os.sched_getaffinity(0))
    elif not isinstance(jobs, int):
        raise TypeError(f"jobs must be a number, not {type(jobs).__name__}")
    elif jobs < 1:
        raise ValueError("jobs must be at least 1")
    if isinstance(sources, (str, bytes, os.PathLike)):
        raise TypeError("sources must be several paths, not one")
    find_program("plenvorith-batch")
    return _Many(context(), iter(sources), settings, jobs).run()


@dataclass
class _Underway(Generic[S]):
    source: S
    conversion: Conversion
    tries: int = 0


class _Many(Generic[S]):
    """Files under way, each in a worker of its own."""

    def __init__(
        self, context: Context, sources: Iterator[S], settings: Settings, jobs: int
    ) -> None:
        self._context = context
        self._sources = sources
        self._settings = settings
        self._jobs = jobs
        self._again: list[_Underway[S]] = []
        self._busy: dict[Worker, _Underway[S]] = {}
        self._idle: list[Worker] = []

    def run(self) -> Iterator[tuple[S, Loaded | ConversionError]]:
        try:
            self._start_some()
            while self._busy:
                worker = wait(list(self._busy))
                file = self._busy.pop(worker)
                outcome = self._outcome(worker, file)
                self._start_some()  # which goes on while the caller looks at the outcome
                if outcome is not None:
                    yield file.source, outcome
        finally:
            for worker in [*self._busy, *self._idle]:
                self._context.end_worker(worker)

    def _start_some(self) -> None:
        while len(self._busy) < self._jobs:
            file = self._next()
            if file is None:
                return
            worker = self._idle.pop() if self._idle else self._context.start_worker()
            self._busy[worker] = file
            file.tries += 1
            file.conversion.start(worker)

    def _next(self) -> _Underway[S] | None:
        if self._again:
            return self._again.pop()
        for source in self._sources:
            return _Underway(source, Conversion(source, self._settings))
        return None

    def _outcome(self, worker: Worker, file: _Underway[S]) -> Loaded | ConversionError | None:
        """What became of a file; None if it is to be tried again."""
        try:
            result = worker.result()
            self._idle.append(worker)
            if not file.conversion.is_for_another_place(result):
                return file.conversion.load(result)
        except WorkerError as error:
            self._context.end_worker(worker)
            # It may have been idle when it was ended, and the file has nothing to do with it.
            if file.tries > 1:
                return error
        except ConversionError as error:
            return error
        self._again.append(file)
        return None
