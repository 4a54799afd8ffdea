// Runs one case file: ROOT, NAME=PATH for each program (no PATH if it is not built), and the file.

#include <cstddef>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tests/cli/case_file.h"
#include "tests/cli/case_run.h"
#include "tests/support/temp_dir.h"

namespace {

using plenvorith::test::Case;
using plenvorith::test::CaseSetting;

constexpr int kSkipped = 77;

int runCaseFile(const CaseSetting& setting, const std::string& path) {
  if (!std::filesystem::is_regular_file(path)) {
    std::cerr << path << ": no such file" << std::endl;
    return 2;
  }
  int status = 0;
  for (const Case& testCase : plenvorith::test::parseCases(
           plenvorith::test::readFile(path), plenvorith::test::commonTexts(setting))) {
    const std::string missing = plenvorith::test::missingProgram(testCase, setting);
    if (!missing.empty()) {
      std::cout << missing << " is not built" << std::endl;
      return kSkipped;
    }
    for (const std::string& failure : plenvorith::test::failuresOf(testCase, setting)) {
      std::cerr << path << ": " << (testCase.row.empty() ? "" : "with " + testCase.row + ": ")
                << failure << std::endl;
      status = 1;
    }
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() < 2) {
    std::cerr << "usage: case_main ROOT [NAME=PATH...] CASE" << std::endl;
    return 2;
  }
  CaseSetting setting;
  setting.root = arguments.front();
  for (std::size_t i = 1; i + 1 < arguments.size(); ++i) {
    const std::size_t equals = arguments[i].find('=');
    setting.programs[arguments[i].substr(0, equals)] = arguments[i].substr(equals + 1);
  }
  try {
    return runCaseFile(setting, arguments.back());
  } catch (const std::exception& error) {
    std::cerr << arguments.back() << ": " << error.what() << std::endl;
    return 2;
  }
}
