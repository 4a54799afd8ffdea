#include "tests/cli/step_files.h"

#include <cstddef>
#include <stdexcept>

#include "tests/support/temp_dir.h"

namespace plenvorith::test {

std::string stepFile(std::string_view entities) {
  return "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n" + std::string(entities) +
         "ENDSEC;\nEND-ISO-10303-21;\n";
}

std::string appendEntities(const std::string& file, std::string_view entities) {
  std::string longer = file;
  return longer.insert(longer.rfind("ENDSEC;"), entities);
}

std::string composeStepFile(const std::filesystem::path& folder,
                            const std::vector<std::string>& names, std::string_view entities) {
  std::string file = stepFile("");
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::filesystem::path whole = folder / (names[i] + ".step");
    const std::filesystem::path some = folder / (names[i] + ".entities");
    if (i == 0 && std::filesystem::is_regular_file(whole)) {
      file = readFile(whole);
    } else if (std::filesystem::is_regular_file(some)) {
      file = appendEntities(file, readFile(some));
    } else {
      throw std::runtime_error("tests/data has no \"" + names[i] + "\" that could stand here");
    }
  }
  return appendEntities(file, entities);
}

}  // namespace plenvorith::test
