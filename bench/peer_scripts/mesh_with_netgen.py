# STEP to STL (text) with Netgen, surface mesh only: mesh_with_netgen.py INPUT OUTPUT
import sys

from netgen import NgOCC, meshing

shape = NgOCC.LoadOCCGeometry(sys.argv[1])
mesh = NgOCC.GenerateMesh(shape, NgOCC.MeshingParameters(
    perfstepsend=meshing.MeshingStep.MESHSURFACE))
mesh.Export(sys.argv[2], "STL Format")
