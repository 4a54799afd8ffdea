#pragma once

#include <string>

#include "batch/records/settings.h"

namespace plenvorith {

/// Where everything of one output folder stands. Paths are absolute and have no "/" at the end.
struct Places {
  std::string output;  ///< the output folder, DIR
  std::string state;   ///< DIR/.plenvorith-batch
  std::string run;     ///< work in progress, gone at the end of a run
  std::string database;
  std::string lock;
};

Places placesIn(const std::string& outputFolder);

/// The name of the file that the converter is asked for: that of the input and the new extension.
std::string outputNameFor(const std::string& input, const ConversionSettings& settings);

/// The path of the transcript below the state's folder, for an input with this path below the base.
/// A name that leaves no room for an extension is cut and made distinct.
std::string transcriptFor(const std::string& name);

/// All that decides what is made of an input, as one text: two conversions of the same bytes with
/// the same text and the same program give the same outputs.
std::string settingsText(const ConversionSettings& settings);

/// The program that converts, with its version: this one's, or path, size and time of another.
std::string programText(const ConversionSettings& settings);

}  // namespace plenvorith
