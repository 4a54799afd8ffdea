"""One file on its way through a worker."""

from __future__ import annotations

import os
import re
from dataclasses import replace
from typing import Union

import numpy as np

from ._errors import ConversionError, Source, shown
from ._folder import roomy_base, temporary_base
from ._job import Place, Result, Settings, ShapeName, names_of
from ._mesh import FACET, Mesh, read_facets
from ._worker import Worker

STL = "out.stl"
Loaded = Union[Mesh, "list[Mesh]"]
_TRANSCRIPT_ENDS = 1 << 17


def content_of(source: object) -> memoryview | None:
    """The bytes of a file that are given as such; None for a path.

    `bytes` are a path, as everywhere in Python, unless no path looks like that.
    """
    if isinstance(source, (bytearray, memoryview)):
        return memoryview(source).cast("B")
    if isinstance(source, bytes):
        is_path = source and len(source) < 4096 and not re.search(rb"[\0\n\r]|ISO-10303-21", source)
        return None if is_path else memoryview(source)
    return None


def path_of(source: Source) -> bytes:
    """The absolute path that is meant now, wherever the process goes. Raises TypeError."""
    path = os.fsencode(source)
    if b"\0" in path:
        raise ValueError("embedded null byte")
    return os.path.join(os.getcwdb(), path)  # as it is: "a/../b" may lead elsewhere than "b"


def _ends_of(path: str) -> str:
    """A text; of a very long one the two ends."""
    try:
        with open(path, "rb") as file:
            text = file.read(2 * _TRANSCRIPT_ENDS)
            rest = os.fstat(file.fileno()).st_size - len(text)
            if rest > 0:
                file.seek(-_TRANSCRIPT_ENDS, os.SEEK_END)
                text = text[:_TRANSCRIPT_ENDS] + b"\n...\n" + file.read()
    except FileNotFoundError:
        return ""
    return shown(text)


_NOTHING = np.empty(0, FACET)


class Conversion:
    """What is asked for, and how far it has come."""

    def __init__(self, source: Source, settings: Settings, output: str = STL) -> None:
        """Raises TypeError and ValueError for what can be no input."""
        self.source = source
        self._content = content_of(source)
        self._path = b"" if self._content is not None else path_of(source)
        self._settings = settings
        self._output = output
        self._base = ""
        self._place: Place | None = None

    def start(self, worker: Worker) -> None:
        if not self._base:
            self._base = roomy_base(self._size())
        place = self._place = worker.place(self._base)
        if self._content is not None:
            with open(place.content, "wb") as file:
                file.write(self._content)
            self._path = os.fsencode(place.content)
        worker.start(self._path, self._output, place, self._settings)

    def _size(self) -> int:
        if self._content is not None:
            return len(self._content)
        try:
            return os.stat(self._path).st_size
        except OSError:
            return 0  # the worker tells what is wrong

    def is_input(self, path: str) -> bool:
        try:
            return self._content is None and os.path.samefile(self._path, path)
        except OSError:
            return False

    def is_for_another_place(self, result: Result) -> bool:
        """Whether it failed for want of memory to write to, and is to be started once more."""
        is_cramped = result.reason == "disk full" and self._base != temporary_base()
        if is_cramped:
            self._base = temporary_base()
        return is_cramped

    def outputs(self, result: Result) -> dict[str, str]:
        """The paths of what was made, by the names that the converter gave. Raises ConversionError."""
        assert self._place
        if self._content is not None:
            os.unlink(self._place.content)
        if not result.is_converted:
            raise ConversionError(
                result.reason,
                None if self._content is not None else self.source,
                _ends_of(self._place.transcript),
                result.exit_status,
                result.signal,
            )
        return {name: os.path.join(self._place.out, name) for name in result.outputs}

    def _names(self) -> dict[int, ShapeName]:
        assert self._place
        try:
            with open(self._place.names, "rb") as file:
                return names_of(file.read())
        except FileNotFoundError:
            return {}

    def load(self, result: Result) -> Loaded:
        """The mesh, or those of the parts by number. Raises ConversionError."""
        outputs = self.outputs(result)
        assert self._place
        about = Mesh(
            _NOTHING,
            seconds=result.seconds,
            peak_memory=result.peak_memory,
            transcript=_ends_of(self._place.transcript),
            doubt=result.reason,
        )
        names = self._names()
        meshes = []
        for output, path in outputs.items():
            part = re.fullmatch(r"out\.stl_(\d+)\.stl", output)
            number = int(part[1]) if part else None
            name = names.get(number or 0, ShapeName())
            facets = read_facets(path)
            meshes.append(
                replace(about, facets=facets, number=number, name=name.name, path=name.path)
            )
            os.unlink(path)
        return meshes if self._settings.split else meshes[0]
