#pragma once

#include <string>
#include <vector>

#include "brep/brep_reader.h"

namespace plenvorith {

struct PartName;  // brep/part_facts.h

/// Converts one STEP file to binary STL.
///
/// The mesh of the exact geometry comes first in the file, then the tessellation that nothing exact
/// duplicates. With `splitShapes` every shape gets a file of its own beside the output path, which
/// itself is not written then; a file without exact geometry is written whole all the same.
///
/// Takes   the linear `deflection` in model units; where the names of the exact shapes go, in the
///         order of the shapes, or null.
/// Gives   whether the output was written (in split mode: whether the shapes were gone through).
/// Prints  its steps on standard output, what makes it fail on standard error.
/// Errors  exceptions of the steps pass, and then leave the temporary copy of the input behind.
bool convertToStl(const std::string& inputPath, const std::string& outputPath, double deflection,
                  bool splitShapes, std::vector<PartName>* names = nullptr);

/// Meshes every shape for itself and writes it with the kernel's STL writer, to `outputPath`
/// followed by "_", its number and ".stl". Null shapes are skipped, with their numbers, and so are
/// those that the mesher gives up on; a file that cannot be written is not noticed.
///
/// Prints  a line for each file.
void writeShapesAsStl(const Shapes& shapes, const std::string& outputPath, double deflection);

}  // namespace plenvorith
