"""What a mesh can do by itself."""

import numpy as np
import pytest

from plenvorith import Mesh
from plenvorith._mesh import FACET


def mesh_of(corners):
    facets = np.zeros(len(corners), FACET)
    facets["corners"] = corners
    return Mesh(facets)


def obvious_indexed(mesh):
    """Slow: a dictionary of corners."""
    vertices, faces = {}, []
    for triangle in mesh.triangles:
        face = []
        for corner in triangle:
            key = (corner + np.float32(0)).tobytes()
            face.append(vertices.setdefault(key, len(vertices)))
        faces.append(face)
    joined = np.frombuffer(b"".join(vertices), np.float32).reshape(-1, 3)
    return joined, np.array(faces, np.int64).reshape(-1, 3)


@pytest.mark.parametrize("seed", range(60))
def test_indexed_is_what_a_dictionary_gives(seed):
    random = np.random.default_rng(seed)
    count = int(random.integers(0, 60))
    values = np.array([0, -0.0, 1, -1, 1e-45, 0.1, np.inf, 3.4e38, 2**-126], np.float32)
    corners = random.choice(values[: random.integers(1, len(values) + 1)], (count, 3, 3))
    vertices, faces = mesh_of(corners).indexed()
    expected_vertices, expected_faces = obvious_indexed(mesh_of(corners))
    assert vertices.tobytes() == expected_vertices.tobytes()
    assert np.array_equal(faces, expected_faces)
    assert (vertices.dtype, faces.dtype) == (np.float32, np.int64)
    assert (vertices.shape[1:], faces.shape) == ((3,), (count, 3))


def test_indexed_joins_the_corners_of_a_grid():
    steps = np.arange(101, dtype=np.float32) / 10
    grid = np.stack(np.meshgrid(steps, steps, [np.float32(1)], indexing="ij"), -1)[:, :, 0]
    a, b, c, d = grid[:-1, :-1], grid[1:, :-1], grid[1:, 1:], grid[:-1, 1:]
    corners = np.concatenate([np.stack(t, -2).reshape(-1, 3, 3) for t in ((a, b, c), (a, c, d))])
    vertices, faces = mesh_of(corners).indexed()
    assert len(vertices) == 101 * 101
    assert np.array_equal(vertices[faces], corners)


def test_indexed_makes_one_of_both_zeros():
    vertices, faces = mesh_of([[[0, 0, 0], [-0.0, 0, -0.0], [0, 1, 0]]]).indexed()
    assert np.signbit(vertices).any() == np.False_
    assert faces.tolist() == [[0, 0, 1]]


def test_bounds_pass_over_what_is_no_number():
    mesh = mesh_of([[[1, np.nan, 0], [-2, 5, 0], [3, 4, 0]]])
    assert mesh.bounds.tolist() == [[-2, 4, 0], [3, 5, 0]]


def test_a_mesh_without_triangles_has_no_bounds():
    mesh = mesh_of(np.empty((0, 3, 3)))
    assert np.isnan(mesh.bounds).all()
    assert mesh.bounds.shape == (2, 3)
    vertices, faces = mesh.indexed()
    assert (vertices.shape, faces.shape) == ((0, 3), (0, 3))
