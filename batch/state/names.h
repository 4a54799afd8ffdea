#pragma once

#include <string>

#include "batch/records/settings.h"

namespace plenvorith {

/// Where everything of one output folder stands. Paths are absolute and have no "/" at the end.
struct Places {
  std::string output;  ///< the output folder, DIR
  std::string state;   ///< DIR/.plenvorith-batch
  std::string run;     ///< below it is the work in progress of each run, gone at its end
  std::string database;
  std::string lock;
};

Places placesIn(const std::string& outputFolder);

/// The name of the output of an input: that of the input and the new extension.
std::string outputNameFor(const std::string& input, const ConversionSettings& settings);

/// The name that the converter is asked for, in a folder of its own: the same, unless it holds bytes
/// that the kernel would write as others. Then it is one that it leaves alone.
std::string workNameFor(const std::string& input, const ConversionSettings& settings);

/// All that decides what is made of an input, as one text: two conversions of the same bytes with
/// the same text and the same program give the same outputs.
std::string settingsText(const ConversionSettings& settings);

/// What of the settings can be told from that text.
ConversionSettings settingsFrom(const std::string& text);

/// The program that converts, with its version: this one's, or path, size and time of another.
std::string programText(const ConversionSettings& settings);

}  // namespace plenvorith
