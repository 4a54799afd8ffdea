"""Triangles as arrays."""

from __future__ import annotations

import mmap
import os
import secrets
import sys
import weakref
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

import numpy as np
import numpy.typing as npt

if TYPE_CHECKING:
    import trimesh

# A record of a binary STL file, 50 bytes without a gap: the unit normal, the three corners in
# counter-clockwise order seen from outside, and a number that is 0.
FACET = np.dtype(
    [("normal", "<f4", (3,)), ("corners", "<f4", (3, 3)), ("attribute", "<u2")]
)
_HEADER = 84

# Below this many bytes reading is faster than mapping.
_SMALL = 1 << 18
# Before Python 3.13 each mapping keeps a descriptor, of which a process has about a thousand.
_MOST_MAPPED = 256
_mapped: weakref.WeakSet[mmap.mmap] = weakref.WeakSet()


def _buffer_of(path: str) -> bytearray | mmap.mmap:
    """The bytes of a file. They can be written to, which changes no file."""
    with open(path, "rb") as file:
        size = os.fstat(file.fileno()).st_size
        if sys.version_info >= (3, 13):
            if size >= _SMALL:
                return mmap.mmap(file.fileno(), size, access=mmap.ACCESS_COPY, trackfd=False)
        elif size >= _SMALL and len(_mapped) < _MOST_MAPPED:
            buffer = mmap.mmap(file.fileno(), size, access=mmap.ACCESS_COPY)
            _mapped.add(buffer)
            return buffer
        content = bytearray(size)
        if file.readinto(content) != size:
            raise EOFError(f"{path} has shrunk")
        return content


def read_facets(path: str) -> npt.NDArray[np.void]:
    """The records of a whole binary STL file, which is not needed any more afterwards."""
    buffer = _buffer_of(path)
    count = (len(buffer) - _HEADER) // FACET.itemsize
    return np.frombuffer(buffer, FACET, count, _HEADER)


def _same_corners(bits: npt.NDArray[np.uint32]) -> npt.NDArray[np.intp]:
    """For each column of `bits` (3, n) the first column that equals it.

    A table of as many places as there are columns takes the first column of each hash, and what
    equals that column is done; the few others try again with another hash. Three times as fast as
    sorting. The factors are random so that no file can be made to collide.
    """
    same = np.empty(bits.shape[1], np.intp)
    left = np.arange(bits.shape[1])
    bits_left = bits
    while len(left):
        size = len(left).bit_length()
        factors = [np.uint32(secrets.randbits(32) | 1) for _ in range(4)]
        place = np.zeros(len(left), np.uint32)
        for axis in range(3):
            place += bits_left[axis]
            place *= factors[axis]
            place ^= place >> np.uint32(15)
        place *= factors[3]
        place >>= np.uint32(32 - size)
        table = np.empty(1 << size, np.intp)
        table[place[::-1]] = left[::-1]  # the last one assigned stays, which is the first column
        found = table[place]
        same[left] = found
        is_other = np.zeros(len(left), bool)
        for axis in range(3):
            is_other |= bits[axis][found] != bits_left[axis]
        left = left[is_other]
        bits_left = bits_left[:, is_other]
    return same


@dataclass(eq=False, repr=False)
class Mesh:
    """The triangles of a file, or of one part of it. Coordinates are millimetres."""

    facets: npt.NDArray[np.void]
    """(n,) records of `normal` (3,), `corners` (3, 3), both float32, and `attribute`: the records of
    the STL file. It can be written to. `triangles` and `normals` are views of it."""

    seconds: float = 0.0
    """Time that the conversion took."""

    peak_memory: int = 0
    """Bytes of memory that the conversion needed at most."""

    transcript: str = ""
    """What the conversion printed; of a very long transcript the beginning and the end."""

    doubt: str = ""
    """What is doubtful about the result, as a file that ends in the middle; mostly empty."""

    number: int | None = None
    """Of the part, from 1; None for a whole file and for stored triangles, which are one part."""

    name: str = ""
    """Of the part, as the file has it."""

    path: tuple[str, ...] = ()
    """Names of the products from the root of the assembly down to the one with the part."""

    @property
    def triangles(self) -> npt.NDArray[np.float32]:
        """(n, 3, 3) float32: of each triangle three corners, counter-clockwise seen from outside."""
        corners: npt.NDArray[np.float32] = self.facets["corners"]
        return corners

    @property
    def normals(self) -> npt.NDArray[np.float32]:
        """(n, 3) float32: of each triangle the unit normal, or zero where it has no area."""
        normals: npt.NDArray[np.float32] = self.facets["normal"]
        return normals

    @property
    def bounds(self) -> npt.NDArray[np.float64]:
        """(2, 3) float64: least and largest coordinates; NaN without triangles."""
        if not len(self):
            return np.full((2, 3), np.nan)
        corners = self.triangles
        low = np.fmin.reduce(corners, axis=(0, 1))
        high = np.fmax.reduce(corners, axis=(0, 1))
        bounds: npt.NDArray[np.float64] = np.stack([low, high]).astype(np.float64)
        return bounds

    def indexed(self) -> tuple[npt.NDArray[np.float32], npt.NDArray[np.int64]]:
        """Vertices (v, 3) float32 without repetition, and faces (n, 3) int64, indices of them.

        Face i is triangle i. Vertices are equal if all bits are, but for the sign of zero; they stand
        in the order in which the triangles first use them.
        """
        corners = np.empty((3, 3 * len(self)), np.float32)
        by_axis = self.triangles.transpose(2, 0, 1)
        np.add(by_axis, np.float32(0), out=corners.reshape(by_axis.shape))  # makes 0 of -0
        same = _same_corners(corners.view(np.uint32))
        is_first = same == np.arange(len(same))
        number = np.cumsum(is_first, dtype=np.int64) - 1
        vertices = np.ascontiguousarray(corners[:, is_first].T)
        return vertices, number[same].reshape(-1, 3)

    def to_trimesh(self) -> trimesh.Trimesh:
        """The same as an object of trimesh, with joined vertices. Needs that package."""
        import trimesh

        vertices, faces = self.indexed()
        mesh = trimesh.Trimesh(vertices=vertices, faces=faces, process=False)
        mesh.units = "mm"
        if self.name:
            mesh.metadata["name"] = self.name
        return mesh

    def __len__(self) -> int:
        """The number of triangles."""
        return len(self.facets)

    def __repr__(self) -> str:
        name = f" {self.name!r}" if self.name else ""
        return f"<plenvorith.Mesh{name} of {len(self)} triangles>"

    def __getstate__(self) -> dict[str, Any]:
        return {**self.__dict__, "facets": np.array(self.facets)}
