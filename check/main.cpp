#include <iostream>
#include <string>
#include <vector>

#include <unistd.h>

#include "check/json_report.h"
#include "check/model_reader.h"
#include "check/options.h"
#include "check/problems.h"
#include "check/text_report.h"

namespace plenvorith {
namespace {

constexpr int kNoProblem = 0;
constexpr int kError = 1;
constexpr int kWrongUse = 2;
constexpr int kProblems = 3;

/// Standard output, kept for the report: what the kernel prints there goes to standard error until
/// it is given back.
class ReservedOutput {
 public:
  ReservedOutput() : output_(dup(STDOUT_FILENO)) {
    (void)dup2(STDERR_FILENO, STDOUT_FILENO);
  }
  ~ReservedOutput() {
    std::cout.flush();
    (void)dup2(output_, STDOUT_FILENO);
    (void)close(output_);
  }
  ReservedOutput(const ReservedOutput&) = delete;
  ReservedOutput& operator=(const ReservedOutput&) = delete;

 private:
  int output_;
};

int fail(const std::string& problem) {
  std::cerr << "Error: " << problem << std::endl;
  return kError;
}

/// Prints a report; the result is the exit status.
int print(const std::vector<std::string>& lines, bool hasProblems) {
  for (const std::string& line : lines) {
    std::cout << line << std::endl;
  }
  if (!std::cout.good()) {
    return fail("the report cannot be written");
  }
  return hasProblems ? kProblems : kNoProblem;
}

int checkMesh(const CheckOptions& options, bool asText) {
  MeshFacts facts;
  const std::string problem = readMeshFacts(options.mesh, facts);
  if (!problem.empty()) {
    return fail(options.mesh + " " + problem);
  }
  if (facts.measure.triangles == 0) {
    return fail(options.mesh + " has no triangles");
  }
  return print(asText ? textReport(facts) : std::vector{jsonReport(facts)},
               !isClosed(facts) || !(volumeOf(facts.measure) > 0));
}

int checkFile(const CheckOptions& options, bool asText) {
  CheckedModel model;
  std::string problem;
  {
    const ReservedOutput reserved;
    problem =
        readCheckedModel(options.input, options.mesh, options.deflection, options.withExact, model);
  }
  if (!problem.empty()) {
    return fail(problem);
  }
  const Reported reported = options.all ? Reported::All : Reported::Problems;
  const bool hasProblems = totalsOf(model).partsWithProblems > 0 || hasProblemOfTheWhole(model);
  return print(asText ? textReport(model, reported) : jsonReport(model, reported), hasProblems);
}

int run(const std::vector<std::string>& arguments) {
  const std::optional<CheckOptions> options = checkOptionsFrom(arguments);
  if (!options) {
    std::cerr << "usage: plenvorith-check [--all] [--exact] [--text] INPUT.step "
                 "[MESH.stl|- [DEFLECTION]]"
              << std::endl;
    std::cerr << "       plenvorith-check [--text] MESH.stl" << std::endl;
    return kWrongUse;
  }
  const bool asText = options->asText || isatty(STDOUT_FILENO) == 1;
  return options->input.empty() ? checkMesh(*options, asText) : checkFile(*options, asText);
}

}  // namespace
}  // namespace plenvorith

int main(int argc, char** argv) {
  return plenvorith::run({argv + (argc > 0 ? 1 : 0), argv + argc});
}
