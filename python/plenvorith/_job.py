"""What is asked of a worker, and the one check of what it answers.

Jobs and results are lines of JSON; a text in them stands for bytes, each the character of its number.
"""

from __future__ import annotations

import json
import math
import numbers
import operator
import os
from dataclasses import dataclass
from typing import Any

from ._errors import shown

PROTOCOL = 1


@dataclass(frozen=True)
class Settings:
    """How to convert."""

    deflection: float
    prepare: bool
    split: bool
    time_limit: int  # seconds, 0 for none
    memory_limit: int  # bytes, 0 for none

    @staticmethod
    def of(
        deflection: float,
        prepare: bool,
        split: bool,
        time_limit: float | None,
        memory_limit: int | None,
    ) -> Settings:
        """Raises TypeError and ValueError for what cannot be meant."""
        return Settings(
            checked_deflection(deflection),
            bool(prepare),
            bool(split),
            checked_time_limit(time_limit),
            _checked_memory_limit(memory_limit),
        )


def _real(name: str, value: object) -> float:
    if not isinstance(value, numbers.Real) or isinstance(value, bool):
        raise TypeError(f"{name} must be a number, not {type(value).__name__}")
    return float(value)


def checked_deflection(value: object) -> float:
    deflection = _real("deflection", value)
    if not deflection > 0:
        raise ValueError("deflection must be greater than 0")
    return deflection


def checked_time_limit(value: object) -> int:
    """Whole seconds, which is what the worker counts in; 0 for none."""
    if value is None:
        return 0
    seconds = _real("time_limit", value)
    if not 0 < seconds < 1 << 31:
        raise ValueError("time_limit must be greater than 0 and finite, or None")
    return math.ceil(seconds)


def _checked_memory_limit(value: object) -> int:
    if value is None:
        return 0
    limit = operator.index(value)  # type: ignore[arg-type]  # raises what is meant to be raised
    if not 0 < limit < 1 << 63:
        raise ValueError("memory_limit must be greater than 0, or None")
    return limit


def text_of(path: str | bytes) -> str:
    """A path as it stands in a line."""
    return os.fsencode(path).decode("latin-1")


@dataclass(frozen=True)
class Place:
    """Where a job lies on disk while it is done."""

    out: str  # for outputs, emptied for each job
    temporary: str  # emptied for each job
    transcript: str
    content: str  # for an input that is given as bytes

    @property
    def names(self) -> str:
        """The file that the names of shapes are in, if there are any."""
        return os.path.join(self.temporary, "names.json")


def job_line(number: int, source: bytes, output: str, place: Place, settings: Settings) -> bytes:
    job = {
        "id": number,
        "input": text_of(source),
        "outFolder": text_of(place.out),
        "temporaryFolder": text_of(place.temporary),
        "output": output,
        "transcript": text_of(place.transcript),
        "deflection": repr(settings.deflection),
        "split": settings.split,
        "names": settings.split,
        "prepare": settings.prepare,
        "timeLimit": settings.time_limit,
        "memoryLimit": settings.memory_limit,
    }
    return json.dumps(job).encode() + b"\n"


@dataclass(frozen=True)
class ShapeName:
    """What a file calls a part."""

    path: tuple[str, ...] = ()
    name: str = ""


def names_of(line: bytes) -> dict[int, ShapeName]:
    """The names of exact shapes by number, from the file that a worker leaves of them."""
    return {
        shape["number"]: ShapeName(tuple(map(_text, shape["path"])), _text(shape["name"]))
        for shape in json.loads(line)
    }


def _text(characters: str) -> str:
    return shown(characters.encode("latin-1"))


@dataclass(frozen=True)
class Result:
    """What a worker says of a job."""

    is_converted: bool
    reason: str
    exit_status: int | None
    signal: int | None
    seconds: float
    peak_memory: int
    outputs: list[str]  # names in the folder for outputs, by number


class NoResult(ValueError):
    """A line that a worker of this protocol does not write."""


def _field(answer: dict[str, Any], name: str, kind: type | tuple[type, ...], default: Any) -> Any:
    value = answer.get(name, default)
    if value is not default and (not isinstance(value, kind) or isinstance(value, bool)):
        raise NoResult(f"{name} is {value!r}")
    return value


def _output_name(output: object, asked: str) -> str:
    """Only plain names that the job can have made."""
    name = output.get("path") if isinstance(output, dict) else None
    stem = asked.rpartition(".")[0]
    if not isinstance(name, str) or "/" in name or not name.startswith(stem + "."):
        raise NoResult(f"an output is {output!r}")
    return name


def result_of(line: bytes, number: int, asked: str) -> Result:
    """Reads the result of the job of this number, for which this output was asked."""
    try:
        answer = json.loads(line)
    except ValueError:
        raise NoResult("the line is no JSON") from None
    if not isinstance(answer, dict) or answer.get("protocol") != PROTOCOL:
        raise NoResult(f"the line is not of protocol {PROTOCOL}")
    if answer.get("id") != number:
        raise NoResult(f"it is of job {answer.get('id')!r}, not of {number}")
    outputs = _field(answer, "outputs", list, [])
    if answer.get("converted") is True and not outputs:
        raise NoResult("it is converted, and there is no output")
    return Result(
        answer.get("converted") is True,
        _text(_field(answer, "reason", str, "")),
        _field(answer, "exitStatus", int, None),
        _field(answer, "signal", int, None),
        float(_field(answer, "seconds", (int, float), 0.0)),
        _field(answer, "peakMemory", int, 0),
        [_output_name(output, asked) for output in outputs],
    )
