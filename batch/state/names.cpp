#include "batch/state/names.h"

#include <algorithm>
#include <sstream>

#include "batch/inputs/input_identity.h"
#include "batch/version.h"

namespace plenvorith {
Places placesIn(const std::string& outputFolder) {
  const std::string state = (outputFolder == "/" ? "" : outputFolder) + "/.plenvorith-batch";
  return {outputFolder, state, state + "/run", state + "/state.db", state + "/lock"};
}

std::string outputNameFor(const std::string& input, const ConversionSettings& settings) {
  return input.substr(input.rfind('/') + 1) + '.' + settings.to;
}

std::string workNameFor(const std::string& input, const ConversionSettings& settings) {
  const std::string name = outputNameFor(input, settings);
  const bool isPlain =
      std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
  return isPlain ? name : "output." + settings.to;
}

std::string settingsText(const ConversionSettings& settings) {
  return "to=" + settings.to + " deflection=" + settings.deflection +
         (settings.split ? " split" : "") + (settings.parts ? " parts" : "") +
         (settings.prepare ? " prepare" : "");
}

ConversionSettings settingsFrom(const std::string& text) {
  ConversionSettings settings;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word.starts_with("to=")) {
      settings.to = word.substr(3);
    } else if (word.starts_with("deflection=")) {
      settings.deflection = word.substr(11);
    } else if (word == "split") {
      settings.split = true;
    } else if (word == "parts") {
      settings.parts = true;
    } else if (word == "prepare") {
      settings.prepare = true;
    }
  }
  return settings;
}

std::string programText(const ConversionSettings& settings) {
  if (settings.program.empty()) {
    return versionText();
  }
  int error = 0;
  const auto identity = identityOf(settings.program, error);
  return settings.program + (identity ? " of " + std::to_string(identity->size) + " bytes, " +
                                            std::to_string(identity->mtime)
                                      : "");
}

}  // namespace plenvorith
