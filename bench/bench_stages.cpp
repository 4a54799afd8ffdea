// The stages that are our own code, each by itself, on generated input in memory or on disk.

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "output/stl_writer.h"
#include "steptext/entity_table.h"
#include "steptext/strip_tessellation.h"
#include "steptext/tessellation_analysis.h"
#include "tessellation/face_decoder.h"
#include "tessellation/step_cursor.h"

namespace plenvorith {
namespace {

constexpr int kItems = 10'000;

std::int64_t bytes(const benchmark::State& state, std::size_t size) {
  return static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(size);
}

std::string pointList(int decimals) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> coordinate(-500.0, 500.0);
  std::string text = "(";
  for (int i = 0; i < kItems; ++i) {
    std::array<char, 120> point{};
    std::snprintf(point.data(), point.size(), "%s(%.*f,%.*f,%.*f)", i == 0 ? "" : ",", decimals,
                  coordinate(random), decimals, coordinate(random), decimals, coordinate(random));
    text += point.data();
  }
  return text + ")";
}

std::string indexTriples() {
  std::string text = "(";
  for (int i = 1; i <= kItems - 2; ++i) {
    text += i == 1 ? "(" : ",(";
    text += std::to_string(i) + "," + std::to_string(i + 1) + "," + std::to_string(i + 2) + ")";
  }
  return text + ")";
}

/// A file of many short entities as exact geometry has them, gone at the end of the scope.
class ExactLikeFile {
 public:
  ExactLikeFile() : path_(std::filesystem::temp_directory_path() / "plenvorith-bench.stp") {
    std::ofstream file(path_);
    for (int i = 1; i <= kItems; ++i) {
      file << "#" << i << "=CARTESIAN_POINT('',(" << 0.25 * i << ",1.5,-2.));\n";
    }
  }
  ~ExactLikeFile() {
    std::filesystem::remove(path_);
  }
  ExactLikeFile(const ExactLikeFile&) = delete;
  ExactLikeFile& operator=(const ExactLikeFile&) = delete;

  std::string path() const {
    return path_;
  }
  std::size_t size() const {
    return std::filesystem::file_size(path_);
  }

 private:
  std::filesystem::path path_;
};

void benchPointList(benchmark::State& state) {
  const std::string text = pointList(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    StepCursor cursor{text};
    benchmark::DoNotOptimize(parsePointList(cursor));
  }
  state.SetBytesProcessed(bytes(state, text.size()));
  state.SetItemsProcessed(bytes(state, 3 * kItems));
}
BENCHMARK(benchPointList)->ArgName("decimals")->Arg(6)->Arg(13);

void benchIndexTriples(benchmark::State& state) {
  const std::string text = indexTriples();
  for (auto _ : state) {
    StepCursor cursor{text};
    benchmark::DoNotOptimize(parseIndexTriples(cursor));
  }
  state.SetBytesProcessed(bytes(state, text.size()));
  state.SetItemsProcessed(bytes(state, 3 * kItems));
}
BENCHMARK(benchIndexTriples);

void benchFaceDecoder(benchmark::State& state) {
  const EntityTable table = {
      {"#1", "COORDINATES_LIST('',10000," + pointList(6) + ");"},
      {"#2", "COMPLEX_TRIANGULATED_FACE('',#1,10000,(),$,()," + indexTriples() + ",());"},
  };
  for (auto _ : state) {
    benchmark::DoNotOptimize(decodeAllTriangulatedFaces(table));
  }
  state.SetBytesProcessed(bytes(state, table.at("#1").size() + table.at("#2").size()));
  state.SetItemsProcessed(bytes(state, kItems));
}
BENCHMARK(benchFaceDecoder);

void benchEntityTable(benchmark::State& state) {
  const ExactLikeFile file;
  for (auto _ : state) {
    EntityTable table;
    readEntityTable(table, file.path());
    benchmark::DoNotOptimize(table);
  }
  state.SetBytesProcessed(bytes(state, file.size()));
  state.SetItemsProcessed(bytes(state, kItems));
}
BENCHMARK(benchEntityTable);

void benchAnalysis(benchmark::State& state) {
  const ExactLikeFile file;
  EntityTable table;
  readEntityTable(table, file.path());
  // With one tessellated representation every text is searched for relationships.
  table["#0"] = "TESSELLATED_SHAPE_REPRESENTATION('',(),$);";
  for (auto _ : state) {
    benchmark::DoNotOptimize(analyzeTessellation(table));
  }
  state.SetBytesProcessed(bytes(state, file.size()));
}
BENCHMARK(benchAnalysis);

void benchStripNothing(benchmark::State& state) {
  const ExactLikeFile file;
  for (auto _ : state) {
    benchmark::DoNotOptimize(stripTessellation(file.path()));
  }
  state.SetBytesProcessed(bytes(state, file.size()));
}
BENCHMARK(benchStripNothing);

void benchStlWriter(benchmark::State& state) {
  const std::vector<Triangle> triangles(kItems, makeTriangle({0, 0, 0}, {1, 0, 0}, {0, 1, 0}));
  for (auto _ : state) {
    benchmark::DoNotOptimize(writeBinaryStl("/dev/null", triangles));
  }
  state.SetBytesProcessed(bytes(state, 84 + 50 * triangles.size()));
  state.SetItemsProcessed(bytes(state, kItems));
}
BENCHMARK(benchStlWriter);

}  // namespace
}  // namespace plenvorith

BENCHMARK_MAIN();
