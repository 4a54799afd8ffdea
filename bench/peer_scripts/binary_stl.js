'use strict';

/** Binary STL of the corners' coordinates, nine numbers a triangle; the normals are left at zero. */
exports.binaryStl = (corners) => {
  const count = corners.length / 9;
  const stl = Buffer.alloc(84 + 50 * count);
  stl.writeUInt32LE(count, 80);
  corners.forEach((number, i) => {
    stl.writeFloatLE(number, 84 + 50 * Math.floor(i / 9) + 12 + 4 * (i % 9));
  });
  return stl;
};
