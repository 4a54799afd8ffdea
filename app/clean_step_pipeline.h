#pragma once

#include <string>

#include "brep/brep_reader.h"

namespace plenvorith {

/// Converts one STEP file to a STEP file with its exact geometry and no tessellation, through the
/// kernel's writer.
///
/// A file with tessellation that nothing exact duplicates cannot be written like this; everything
/// in it goes to a binary STL file beside the output path instead, whose extension becomes ".stl".
/// With `splitShapes` the file is not analysed, and every shape gets a STEP file of its own.
///
/// Takes   the linear `deflection` in model units, for exact geometry that goes to STL.
/// Gives   whether an output was written (in split mode: whether the shapes could be read).
/// Prints  its steps on standard output, what makes it fail on standard error.
/// Errors  exceptions of the steps pass, and then leave the temporary copy of the input behind.
bool convertToCleanStep(const std::string& inputPath, const std::string& outputPath,
                        double deflection, bool splitShapes);

/// Writes every shape to a STEP file of its own: `outputPath` followed by "_", the shape's
/// number and ".stp", whatever the extension of `outputPath`. Null shapes are skipped, with their
/// numbers.
///
/// Prints  a line for each file that was written, nothing for one that could not be.
void writeShapesAsStep(const Shapes& shapes, const std::string& outputPath);

}  // namespace plenvorith
