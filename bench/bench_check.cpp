// Says how long it takes to read and mesh a STEP file, or then to find out what its meshes are worth:
// bench_check read|check FILE

#include <cstddef>
#include <iostream>
#include <ostream>
#include <span>
#include <string_view>
#include <vector>

#include <STEPControl_Reader.hxx>

#include "bench/stopwatch.h"
#include "brep/brep_mesher.h"
#include "brep/face_deviation.h"
#include "brep/part_names.h"
#include "check/mesh_facts.h"

int main(int argc, char** argv) {
  using namespace plenvorith;
  if (argc != 3) {
    std::cerr << "usage: bench_check read|check FILE" << std::endl;
    return 2;
  }
  constexpr double kDeflection = 0.1;
  const bench::Stopwatch reading;
  STEPControl_Reader reader;
  Shapes shapes;
  std::ostream nowhere(nullptr);
  if (!readBrepShapes(reader, argv[2], shapes, nowhere)) {
    return 1;
  }
  const std::vector<Triangle> triangles = meshBrepShapes(shapes, kDeflection);
  if (std::string_view(argv[1]) == "read") {
    reading.report();
    return 0;
  }

  const bench::Stopwatch checking;
  const std::vector<PartName> names = namesOfParts(reader, shapes);
  std::size_t start = 0;
  std::size_t closed = 0;
  for (const FaceFacts& faces : measureFaces(shapes, kDeflection)) {
    const MeshFacts mesh = meshFactsOf(std::span(triangles).subspan(start, faces.triangles));
    start += faces.triangles;
    closed += mesh.openEdges == 0 ? 1 : 0;
  }
  checking.report();
  std::cout << names.size() << " parts, " << closed << " closed" << std::endl;
  return 0;
}
