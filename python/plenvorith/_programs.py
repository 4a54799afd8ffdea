"""Where the programs are."""

from __future__ import annotations

import shutil

from ._errors import MissingProgram


def find_program(name: str) -> str:
    """The path of a program of the Debian package plenvorith. Raises MissingProgram."""
    path = shutil.which(name)
    if path is None:
        raise MissingProgram(f"{name} is not in PATH; the Debian package plenvorith has it")
    return path
