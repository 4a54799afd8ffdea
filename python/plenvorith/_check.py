"""What plenvorith-check says of a mesh."""

from __future__ import annotations

import contextlib
import json
import os
import re
import shutil
import subprocess
from typing import Any, Iterator

from ._context import context
from ._conversion import content_of, path_of
from ._errors import ConversionError, Source, shown
from ._job import checked_deflection, checked_time_limit
from ._programs import find_program


def _is_stl(content: memoryview) -> bool:
    """As long as the number of triangles says that it holds."""
    return len(content) == 84 + 50 * int.from_bytes(content[80:84], "little")


@contextlib.contextmanager
def _as_file(source: Source) -> Iterator[bytes]:
    """The path of a source, which is a file for the time being if it is the content of one."""
    content = content_of(source)
    if content is None:
        yield path_of(source)
        return
    folder = context().make_temporary_folder()
    try:
        path = os.path.join(folder, "input.stl" if _is_stl(content) else "input.step")
        with open(path, "wb") as file:
            file.write(content)
        yield os.fsencode(path)
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def _last_line(text: str) -> str:
    return text.strip().rpartition("\n")[2].removeprefix("Error: ")


def check(
    source: Source,
    mesh: Source | None = None,
    *,
    deflection: float | None = None,
    all_parts: bool = False,
    exact: bool = False,
    time_limit: float | None = None,
) -> list[dict[str, Any]]:
    """Tells which parts of a mesh cannot be trusted, as plenvorith-check does.

    source      a STEP file, as for `load`; or an STL file, alone
    mesh        the STL file that was made of it as it is, without preparing; None to mesh it anew
    deflection  millimetres, with which the mesh was made; None for 0.1
    all_parts   whether to tell of all parts; else only of those with a problem
    exact       whether to compare with the exact volume, area and centre of gravity
    time_limit  seconds; None for none

    Gives the lines of the program: a dictionary for each part, with its `number`, `path` and `name`,
    and at the end one for the file. The manual page plenvorith-check(1) has all fields. Raises
    ConversionError if a file cannot be read or has no geometry, or if the mesh is not of the source.
    """
    limit = checked_time_limit(time_limit)
    if deflection is not None and mesh is None:
        raise ValueError("deflection is that of a mesh, and there is none")
    asked = [] if deflection is None else [repr(checked_deflection(deflection))]
    with contextlib.ExitStack() as files:
        command: list[str | bytes] = [find_program("plenvorith-check")]
        command += ["--all"] * all_parts + ["--exact"] * exact
        command.append(files.enter_context(_as_file(source)))
        if mesh is not None:
            command += [files.enter_context(_as_file(mesh)), *asked]
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
            f"signal {-ended.returncode}" if by_signal else _last_line(said),
            name,
            said,
            None if by_signal else ended.returncode,
            -ended.returncode if by_signal else None,
        )
    # A byte that is no UTF-8 comes as half of a surrogate pair, which cannot be printed.
    lines = re.sub(
        r"(?<!\\)((?:\\\\)*)\\udc([89a-f][0-9a-f])", r"\1\\\\x\2", ended.stdout.decode("utf-8")
    )
    return [json.loads(line) for line in lines.splitlines()]
