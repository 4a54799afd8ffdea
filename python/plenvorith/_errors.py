"""What can go wrong."""

from __future__ import annotations

import os
from typing import Union

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
Source = Union[Path, bytes, bytearray, memoryview]


def shown(text: bytes) -> str:
    """Bytes from outside as a text that can be printed: what is no UTF-8 becomes an escape."""
    return text.decode("utf-8", "backslashreplace")


class ConversionError(Exception):
    """A file was not converted.

    reason       why, in words that a person can act on; the same as in a report of plenvorith-batch
    source       the path as it was given; None if it was the content of a file
    transcript   what the conversion printed; of a very long one the beginning and the end
    exit_status  of the conversion; None if a signal ended it, or if it was not begun
    signal       number of the signal that ended the conversion, or None
    """

    def __init__(
        self,
        reason: str,
        source: Path | None = None,
        transcript: str = "",
        exit_status: int | None = None,
        signal: int | None = None,
    ) -> None:
        # All of them, so that the error can go from one process to another.
        super().__init__(reason, source, transcript, exit_status, signal)
        self.reason = reason
        self.source = source
        self.transcript = transcript
        self.exit_status = exit_status
        self.signal = signal

    def __str__(self) -> str:
        if self.source is None:
            return self.reason
        return f"{shown(os.fsencode(self.source))}: {self.reason}"


class WorkerError(ConversionError):
    """The process that converts files ended or stopped in the midst of a file, not by what the file
    does: it was killed, say. The next call starts a new one."""


class MissingProgram(RuntimeError):
    """A program of the Debian package plenvorith is not in PATH."""
