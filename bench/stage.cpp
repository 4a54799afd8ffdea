// Runs one stage of the program by itself and reports how long it took.
//
//   stage table INPUT            reading the entity table
//   stage analysis INPUT         the analysis of that table, without reading it
//   stage copy INPUT             a copy of that table: what memory for it takes, without reading
//                                and without a search for any place
//   stage walk INPUT             a walk over that table that adds up the lengths of its texts: the
//                                least that looking at every entity takes
//   stage strip INPUT            stripping, with the copy in the temporary directory
//   stage write OUTPUT COUNT     writing COUNT triangles to STL

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "app/allocator.h"
#include "bench/stopwatch.h"
#include "common/triangle.h"
#include "output/stl_writer.h"
#include "steptext/entity_table.h"
#include "steptext/strip_tessellation.h"
#include "steptext/tessellation_analysis.h"

using plenvorith::bench::Stopwatch;

int main(int argc, char** argv) {
  if (argc < 3) {
    return 2;
  }
  plenvorith::allocateLargePages(true);
  if (std::strcmp(argv[1], "write") == 0) {
    std::vector<plenvorith::Triangle> triangles(std::strtoull(argv[3], nullptr, 10));
    for (std::size_t i = 0; i < triangles.size(); ++i) {
      const auto n = static_cast<double>(i);
      triangles[i] = plenvorith::makeTriangle({n, 0, 0}, {n, 1, 0}, {n, 0, 1});
    }
    const Stopwatch stopwatch;
    if (!plenvorith::writeBinaryStl(argv[2], triangles)) {
      return 1;
    }
    stopwatch.report();
    return 0;
  }
  if (std::strcmp(argv[1], "strip") == 0) {
    const Stopwatch stopwatch;
    const std::string clean = plenvorith::stripTessellation(argv[2]);
    stopwatch.report();
    if (clean != argv[2]) {
      std::remove(clean.c_str());
    }
    return 0;
  }
  const Stopwatch reading;
  plenvorith::EntityTable table;
  plenvorith::readEntityTable(table, argv[2]);
  if (std::strcmp(argv[1], "table") == 0) {
    reading.report();
    return 0;
  }
  const Stopwatch looking;
  std::size_t result = 0;
  if (std::strcmp(argv[1], "copy") == 0) {
    const plenvorith::EntityTable copy(table);
    looking.report();
    return copy.size() == table.size() ? 0 : 1;
  }
  if (std::strcmp(argv[1], "walk") == 0) {
    for (const auto& [name, text] : table) {
      result += text.size();
    }
  } else {
    result = plenvorith::analyzeTessellation(table).uniqueFaces.size();
  }
  looking.report();
  std::printf("result %zu\n", result);
  return 0;
}
