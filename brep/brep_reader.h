#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include <TopoDS_Shape.hxx>

class STEPControl_Reader;

namespace plenvorith {

/// The meshable pieces of a model, each placed in it: solids, then shells that lie in no solid,
/// then faces that lie in neither. The shapes are handles; copies share the geometry.
using Shapes = std::vector<TopoDS_Shape>;

/// Reads the exact geometry of a STEP file through the kernel.
///
/// Each group is in the order in which the kernel explores the model, and a piece that the model
/// uses twice at one place comes twice. A model without solids, shells and faces (of curves only,
/// for example) gives itself as the only piece.
///
/// Takes   the `path` of the file; `shapes` is cleared first and filled.
/// Gives   true if `shapes` holds at least one shape.
/// Prints  the number of transferred roots and shapes once the file is read, and the number of
///         pieces once it is taken apart. The kernel prints lines of its own.
/// Errors  those of the kernel pass.
[[nodiscard]] bool readBrepShapes(const std::string& path, Shapes& shapes);

/// The same by a `reader` of the caller's, which afterwards knows what the file calls its shapes;
/// the lines go to `log`.
[[nodiscard]] bool readBrepShapes(STEPControl_Reader& reader, const std::string& path,
                                  Shapes& shapes, std::ostream& log);

}  // namespace plenvorith
