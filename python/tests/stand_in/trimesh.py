"""Has of the package trimesh what the recipes use, where that is not installed: the same names and
arguments, and enough behind them to see what comes in."""

import json

import numpy as np


class Trimesh:
    def __init__(self, vertices=None, faces=None, process=True):
        self.vertices = np.array(vertices, np.float64)
        self.faces = np.array(faces, np.int64)
        assert self.vertices.shape[1:] == self.faces.shape[1:] == (3,)
        assert self.faces.min() == 0 and self.faces.max() == len(self.vertices) - 1
        self.metadata = {}
        self.units = None

    @property
    def bounds(self):
        return np.array([self.vertices.min(axis=0), self.vertices.max(axis=0)])

    def apply_scale(self, scaling):
        self.vertices *= scaling
        return self


class Scene:
    def __init__(self):
        self._nodes = {}

    def add_geometry(self, geometry, node_name=None, geom_name=None):
        assert isinstance(geometry, Trimesh) and node_name not in self._nodes
        self._nodes[node_name] = {"name": geom_name, "bounds": geometry.bounds.tolist()}
        return node_name

    def export(self, file_obj):
        with open(file_obj, "w", encoding="utf-8") as file:
            json.dump(self._nodes, file)
