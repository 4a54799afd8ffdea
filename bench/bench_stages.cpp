// The stages that are our own code, each by itself.
//
//   bench_stages [--benchmark_...]            decoding and writing, on what is made in memory
//   bench_stages INPUT [--benchmark_...]      and the stages that read a file, once each:
//
//     table      reading the entity table
//     analysis   the analysis of that table, without reading it
//     copy       a copy of that table: what memory for it takes, without reading and without a
//                search for any place
//     walk       a walk over that table that adds up the lengths of its texts: the least that
//                looking at every entity takes
//     strip      stripping, with the copy in the temporary directory
//
// bench/run picks one with --benchmark_filter and reads the file of --benchmark_out.

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/stopwatch.h"
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

void addEntity(EntityTable& table, std::string_view name, std::string_view text) {
  table.texts().begin();
  table.texts().append(name);
  table.texts().append("=");
  table.texts().append(text);
  table.addText(name.size());
}

void benchPointList(benchmark::State& state) {
  const std::string text = pointList(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    StepCursor cursor{text};
    benchmark::DoNotOptimize(parsePointList(cursor));
  }
  state.SetBytesProcessed(bytes(state, text.size()));
  state.SetItemsProcessed(bytes(state, 3 * kItems));
}
BENCHMARK(benchPointList)->Name("points")->ArgName("decimals")->Arg(6)->Arg(13);

void benchIndexTriples(benchmark::State& state) {
  const std::string text = indexTriples();
  for (auto _ : state) {
    StepCursor cursor{text};
    benchmark::DoNotOptimize(parseIndexTriples(cursor));
  }
  state.SetBytesProcessed(bytes(state, text.size()));
  state.SetItemsProcessed(bytes(state, 3 * kItems));
}
BENCHMARK(benchIndexTriples)->Name("triples");

void benchFaceDecoder(benchmark::State& state) {
  const std::string points = "COORDINATES_LIST('',10000," + pointList(6) + ");";
  const std::string face =
      "COMPLEX_TRIANGULATED_FACE('',#1,10000,(),$,()," + indexTriples() + ",());";
  EntityTable table;
  addEntity(table, "#1", points);
  addEntity(table, "#2", face);
  for (auto _ : state) {
    benchmark::DoNotOptimize(decodeAllTriangulatedFaces(table));
  }
  state.SetBytesProcessed(bytes(state, points.size() + face.size()));
  state.SetItemsProcessed(bytes(state, kItems));
}
BENCHMARK(benchFaceDecoder)->Name("faces");

/// Reads the table in which a stage begins.
EntityTable tableOf(const std::string& path) {
  EntityTable table;
  readEntityTable(table, path);
  return table;
}

/// Says what a stage over the file at `path` took, in user and system time, too. One iteration is
/// one cold run, as in the program.
void finish(benchmark::State& state, const bench::Times& times, const std::string& path) {
  state.SetIterationTime(times.wall);
  state.counters["user"] = times.user;
  state.counters["system"] = times.system;
  state.counters["wall"] = times.wall;
  state.SetBytesProcessed(static_cast<std::int64_t>(std::filesystem::file_size(path)));
}

void benchTable(benchmark::State& state, const std::string& path) {
  for (auto _ : state) {
    EntityTable table;
    const bench::Stopwatch stopwatch;
    readEntityTable(table, path);
    finish(state, stopwatch.elapsed(), path);
  }
}

void benchAnalysis(benchmark::State& state, const std::string& path) {
  const EntityTable table = tableOf(path);
  for (auto _ : state) {
    const bench::Stopwatch stopwatch;
    benchmark::DoNotOptimize(analyzeTessellation(table));
    finish(state, stopwatch.elapsed(), path);
  }
}

void benchCopy(benchmark::State& state, const std::string& path) {
  const EntityTable table = tableOf(path);
  for (auto _ : state) {
    const bench::Stopwatch stopwatch;
    EntityTable copy;
    for (const auto& [name, text] : table) {
      addEntity(copy, name, text);
    }
    finish(state, stopwatch.elapsed(), path);
    benchmark::DoNotOptimize(copy.size());
  }
}

void benchWalk(benchmark::State& state, const std::string& path) {
  const EntityTable table = tableOf(path);
  for (auto _ : state) {
    const bench::Stopwatch stopwatch;
    std::size_t result = 0;
    for (const auto& [name, text] : table) {
      result += text.size();
    }
    finish(state, stopwatch.elapsed(), path);
    benchmark::DoNotOptimize(result);
  }
}

void benchStrip(benchmark::State& state, const std::string& path) {
  for (auto _ : state) {
    const bench::Stopwatch stopwatch;
    const std::string clean = stripTessellation(path);
    finish(state, stopwatch.elapsed(), path);
    if (clean != path) {
      std::filesystem::remove(clean);
    }
  }
}

/// A file in the temporary directory, as large as row 7 of the table asks for.
void benchWrite(benchmark::State& state) {
  constexpr std::size_t kTriangles = 1'200'000;
  std::vector<Triangle> triangles(kTriangles);
  for (std::size_t i = 0; i < kTriangles; ++i) {
    const auto n = static_cast<double>(i);
    triangles[i] = makeTriangle({n, 0, 0}, {n, 1, 0}, {n, 0, 1});
  }
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / "plenvorith-bench.stl";
  for (auto _ : state) {
    const bench::Stopwatch stopwatch;
    if (!writeBinaryStl(path, triangles)) {
      state.SkipWithError("cannot write");
      return;
    }
    finish(state, stopwatch.elapsed(), path);
    std::filesystem::remove(path);  // cutting off an old file would be measured, too
  }
}
BENCHMARK(benchWrite)->Name("write")->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void registerFileStages(const std::string& path) {
  const auto add = [&path](const char* name, auto stage) {
    benchmark::RegisterBenchmark(name, stage, path)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  };
  add("table", benchTable);
  add("analysis", benchAnalysis);
  add("copy", benchCopy);
  add("walk", benchWalk);
  add("strip", benchStrip);
}

}  // namespace
}  // namespace plenvorith

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc > 2 || (argc == 2 && std::strncmp(argv[1], "--", 2) == 0)) {
    std::fprintf(stderr, "usage: bench_stages [INPUT] [--benchmark_...]\n");
    return 2;
  }
  if (argc == 2) {
    plenvorith::registerFileStages(argv[1]);
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
