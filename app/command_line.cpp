#include "app/command_line.h"

#include <cctype>
#include <cstdlib>
#include <iostream>
#include <string>

#include "app/clean_step_pipeline.h"
#include "app/stl_pipeline.h"

namespace plenvorith {
namespace {

/// What follows the last "." of a path, in lower case; the whole path if it has none. A dot in a
/// directory name counts as well.
std::string extensionOf(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  std::string extension = dot == std::string::npos ? path : path.substr(dot + 1);
  for (char& c : extension) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return extension;
}

/// The linear deflection that an argument asks for. What is no number is 0 to `atof`, and only what
/// is 0 or less is replaced: "nan" goes to the mesher as it is.
double deflectionFrom(const char* argument) {
  constexpr double kDefaultDeflection = 0.1;
  const double deflection = argument == nullptr ? 0.0 : std::atof(argument);
  return deflection <= 0.0 ? kDefaultDeflection : deflection;
}

}  // namespace

int runConverter(int argc, char** argv, std::vector<PartName>* names) {
  if (argc < 3) {
    return 1;
  }
  const std::string inputPath = argv[1];
  const std::string outputPath = argv[2];
  const double deflection = deflectionFrom(argc >= 4 ? argv[3] : nullptr);
  const bool splitShapes = argc >= 5;

  const std::string extension = extensionOf(outputPath);
  bool converted = false;
  if (extension == "stl") {
    converted = convertToStl(inputPath, outputPath, deflection, splitShapes, names);
  } else if (extension == "step" || extension == "stp") {
    converted = convertToCleanStep(inputPath, outputPath, deflection, splitShapes);
  } else {
    std::cerr << "Unsupported format: " << extension << std::endl;
    return 1;
  }
  std::cout << (converted ? "Done" : "Failed") << std::endl;
  return converted ? 0 : 1;
}

}  // namespace plenvorith
