// STEP to binary STL with occt-import-js: node mesh_with_occt_import.js INPUT OUTPUT DEFLECTION
'use strict';
const fs = require('fs');
const {binaryStl} = require('./binary_stl.js');

const [input, output, deflection] = process.argv.slice(2);
require('occt-import-js')().then((occt) => {
  const result = occt.ReadStepFile(new Uint8Array(fs.readFileSync(input)), {
    linearUnit: 'millimeter',
    linearDeflectionType: 'absolute_value',
    linearDeflection: Number(deflection),
    angularDeflection: 0.5,
  });
  const corners = [];
  for (const mesh of result.meshes) {
    const points = mesh.attributes.position.array;
    for (const vertex of mesh.index.array) {
      corners.push(points[3 * vertex], points[3 * vertex + 1], points[3 * vertex + 2]);
    }
  }
  fs.writeFileSync(output, binaryStl(corners));
});
