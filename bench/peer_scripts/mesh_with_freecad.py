# Run by freecadcmd: STEP to binary STL. The paths and the deflection come in the environment.
import os

import MeshPart
import Part

shape = Part.Shape()
shape.read(os.environ["PEER_INPUT"])
mesh = MeshPart.meshFromShape(Shape=shape, LinearDeflection=float(os.environ["PEER_DEFLECTION"]),
                              AngularDeflection=0.5, Relative=False)
mesh.write(os.environ["PEER_OUTPUT"])
