// STEP to binary STL with occt-import-js: node mesh_with_occt_import.js INPUT OUTPUT DEFLECTION
'use strict';
const fs = require('fs');

/** The corners of every triangle of all meshes as STL, normals left at zero. */
function stlOf(meshes) {
  const count = meshes.reduce((sum, mesh) => sum + mesh.index.array.length / 3, 0);
  const stl = Buffer.alloc(84 + 50 * count);
  stl.writeUInt32LE(count, 80);
  let at = 84;
  for (const mesh of meshes) {
    const points = mesh.attributes.position.array;
    mesh.index.array.forEach((vertex, i) => {
      for (let axis = 0; axis < 3; ++axis) {
        stl.writeFloatLE(points[3 * vertex + axis], at + 12 + 12 * (i % 3) + 4 * axis);
      }
      at += i % 3 === 2 ? 50 : 0;
    });
  }
  return stl;
}

const [input, output, deflection] = process.argv.slice(2);
require('occt-import-js')().then((occt) => {
  const result = occt.ReadStepFile(new Uint8Array(fs.readFileSync(input)), {
    linearUnit: 'millimeter',
    linearDeflectionType: 'absolute_value',
    linearDeflection: Number(deflection),
    angularDeflection: 0.5,
  });
  fs.writeFileSync(output, stlOf(result.meshes));
});
