"""Triangles of STEP files (ISO 10303-21) as numpy arrays.

    mesh = plenvorith.load("part.step")
    mesh.triangles                      # (n, 3, 3) float32, millimetres

Each file is converted in a process of its own: a damaged file, one that needs too much memory or one
that never ends is a `ConversionError`, and nothing that happens there reaches the interpreter. The
programs that do it come with the Debian package plenvorith and are found in PATH. Nothing is printed.
"""

from ._check import check
from ._errors import ConversionError, MissingProgram, WorkerError
from ._load import convert, load, load_many
from ._mesh import Mesh

__all__ = [
    "ConversionError",
    "Mesh",
    "MissingProgram",
    "WorkerError",
    "check",
    "convert",
    "load",
    "load_many",
]


def __getattr__(name: str) -> str:
    if name == "__version__":
        from importlib.metadata import version  # takes as long as a small file to import

        return version("plenvorith")
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
