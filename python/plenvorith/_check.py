"""What plenvorith-check says of a mesh."""

from __future__ import annotations

import contextlib
import json
import os
import shutil
import subprocess
from typing import Any, Iterator

from ._context import context
from ._conversion import content_of, path_of
from ._errors import ConversionError, Source, shown
from ._job import checked_deflection, checked_time_limit
from ._programs import find_program


@contextlib.contextmanager
def _as_file(source: Source) -> Iterator[bytes]:
    """The path of a source, which is a file for the time being if it is the content of one."""
    content = content_of(source)
    if content is None:
        yield path_of(source)
        return
    folder = context().make_temporary_folder()
    try:
        path = os.path.join(folder, "input.step")
        with open(path, "wb") as file:
            file.write(content)
        yield os.fsencode(path)
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def check(
    source: Source,
    mesh: Source | None = None,
    *,
    deflection: float = 0.1,
    all_parts: bool = False,
    exact: bool = False,
    time_limit: float | None = None,
) -> list[dict[str, Any]]:
    """Tells which parts of a mesh cannot be trusted, as plenvorith-check does.

    source      a STEP file, as for `load`; or an STL file, alone
    mesh        the STL file that was made of it as it is, without preparing; None to mesh it anew
    deflection  millimetres, with which the mesh was made
    all_parts   whether to tell of all parts; else only of those with a problem
    exact       whether to compare with the exact volume, area and centre of gravity
    time_limit  seconds; None for none

    Gives the lines of the program: a dictionary for each part, with its `number`, `path` and `name`,
    and at the end one for the file. The manual page plenvorith-check(1) has all fields. Raises
    ConversionError if a file cannot be read or has no geometry, or if the mesh is not of the source.
    """
    limit = checked_time_limit(time_limit)
    numbers = repr(checked_deflection(deflection))
    with contextlib.ExitStack() as files:
        command: list[str | bytes] = [find_program("plenvorith-check")]
        command += ["--all"] * all_parts + ["--exact"] * exact
        command.append(files.enter_context(_as_file(source)))
        if mesh is not None:
            command += [files.enter_context(_as_file(mesh)), numbers]
        name = None if content_of(source) is not None else source
        try:
            ended = subprocess.run(
                command, stdin=subprocess.DEVNULL, capture_output=True, timeout=limit or None
            )
        except subprocess.TimeoutExpired:
            raise ConversionError(f"time limit of {limit} s", name) from None
    said = shown(ended.stderr)
    if ended.returncode not in (0, 3):
        by_signal = ended.returncode < 0
        raise ConversionError(
            f"signal {-ended.returncode}" if by_signal else said.strip().rpartition("\n")[2],
            name,
            said,
            None if by_signal else ended.returncode,
            -ended.returncode if by_signal else None,
        )
    lines = ended.stdout.decode("utf-8", "surrogateescape").splitlines()
    return [json.loads(line) for line in lines]
