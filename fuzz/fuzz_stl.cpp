// Input: the content of a binary STL file.

#include <cmath>

#include "check/mesh_facts.h"
#include "fuzz/fuzz_target.h"
#include "tests/reference/reference_mesh.h"
#include "tests/support/memory_file.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  static test::MemoryFile file;
  if (size > fuzz::kMaxInput) {
    return 0;
  }
  const std::string content = fuzz::textOf(data, size);
  MeshFacts facts;
  if (!readMeshFacts(file.write(content), facts).empty()) {
    return 0;
  }
  const std::vector<test::StlRecord> records = test::recordsOf(content);
  const test::ReferenceMesh expected = test::referenceMesh(records);
  fuzz::require(facts.measure.triangles == records.size(), "triangles");
  fuzz::require(facts.openEdges == expected.openEdges, "open edges");
  fuzz::require(facts.pieces == expected.pieces, "pieces");
  return 0;
}
