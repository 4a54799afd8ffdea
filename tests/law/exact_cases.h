#pragma once

#include <string>
#include <vector>

namespace plenvorith::test {

/// A file with exact geometry or tessellation, or both.
struct ExactCase {
  std::string name;
  std::string content;
};

/// Each item that the kernel delivers.
std::vector<ExactCase> casesOfExactGeometry();

/// Each item that the kernel delivers, with a body of tessellation that duplicates it.
std::vector<ExactCase> casesOfCopies();

/// Each item that it does not deliver, with a body of one triangle that is then all there is.
std::vector<ExactCase> casesOfTheOnlyGeometry();

/// Files with exact geometry beside a body of tessellation, with an error that the kernel gets over.
std::vector<ExactCase> casesOfErrors();

/// An exact part used in an assembly whose own shape is nothing but a body of one triangle.
std::vector<ExactCase> casesOfAssemblies();

}  // namespace plenvorith::test
