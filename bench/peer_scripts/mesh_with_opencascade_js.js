// STEP to binary STL with opencascade.js: node mesh_with_opencascade_js.js INPUT OUTPUT DEFLECTION
'use strict';
const fs = require('fs');
const path = require('path');
const {binaryStl} = require('./binary_stl.js');

/** The package is written for bundlers: node takes its module without the export. */
function load() {
  const folder = path.join(process.env.NODE_PATH, 'opencascade.js', 'dist');
  const source = fs.readFileSync(path.join(folder, 'opencascade.wasm.js'), 'utf8');
  const module = {};
  new Function('module', 'require', '__filename', '__dirname',
               source.replace('export default', 'module.exports ='))(module, require, '', '');
  return new module.exports({
    wasmBinary: fs.readFileSync(path.join(folder, 'opencascade.wasm.wasm')),
  });
}

/** The corners of all faces' triangles; the STL writer of the kernel does not work in node. */
function cornersOf(oc, shape) {
  const corners = [];
  const faces = new oc.TopExp_Explorer_2(shape, oc.TopAbs_ShapeEnum.TopAbs_FACE,
                                         oc.TopAbs_ShapeEnum.TopAbs_SHAPE);
  for (; faces.More(); faces.Next()) {
    const face = oc.TopoDS.Face_1(faces.Current());
    const location = new oc.TopLoc_Location_1();
    const handle = oc.BRep_Tool.Triangulation(face, location);
    if (handle.IsNull()) {
      continue;
    }
    const mesh = handle.get();
    const moved = location.Transformation();
    const isReversed = face.Orientation_1() === oc.TopAbs_Orientation.TopAbs_REVERSED;
    for (let i = 1; i <= mesh.NbTriangles(); ++i) {
      const triangle = mesh.Triangle(i);
      for (const k of isReversed ? [1, 3, 2] : [1, 2, 3]) {
        const point = mesh.Node(triangle.Value(k)).Transformed(moved);
        corners.push(point.X(), point.Y(), point.Z());
        point.delete();
      }
    }
  }
  return corners;
}

const [input, output, deflection] = process.argv.slice(2);
load().then((oc) => {
  oc.FS.writeFile('/in.step', fs.readFileSync(input));
  const reader = new oc.STEPControl_Reader_1();
  reader.ReadFile('/in.step');
  reader.TransferRoots();
  const shape = reader.OneShape();
  new oc.BRepMesh_IncrementalMesh_2(shape, Number(deflection), false, 0.5, false);
  fs.writeFileSync(output, binaryStl(cornersOf(oc, shape)));
});
