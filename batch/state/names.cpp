#include "batch/state/names.h"

#include <climits>
#include <cstddef>

#include <xxhash.h>

#include "batch/inputs/input_identity.h"
#include "batch/system/folder.h"
#include "batch/version.h"

namespace plenvorith {
namespace {

std::string hexFrom(XXH64_hash_t number) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (int shift = 60; shift >= 0; shift -= 4) {
    text += kDigits[number >> shift & 15U];
  }
  return text;
}

}  // namespace

Places placesIn(const std::string& outputFolder) {
  const std::string state = (outputFolder == "/" ? "" : outputFolder) + "/.plenvorith-batch";
  return {outputFolder, state, state + "/run", state + "/state.db", state + "/lock"};
}

std::string outputNameFor(const std::string& input, const ConversionSettings& settings) {
  return input.substr(input.rfind('/') + 1) + '.' + settings.to;
}

std::string transcriptFor(const std::string& name) {
  constexpr const char* kExtension = ".txt";
  constexpr std::size_t kKept = 200;
  const std::size_t start = name.rfind('/') + 1;
  if (name.size() - start + 4 <= NAME_MAX) {
    return "transcripts/" + name + kExtension;
  }
  const std::string distinct = hexFrom(XXH3_64bits(name.data() + start, name.size() - start));
  return "transcripts/" + name.substr(0, start + kKept) + '~' + distinct + kExtension;
}

std::string settingsText(const ConversionSettings& settings) {
  return "to=" + settings.to + " deflection=" + settings.deflection +
         (settings.split ? " split" : "") + (settings.prepare ? " prepare" : "");
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
