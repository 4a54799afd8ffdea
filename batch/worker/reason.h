#pragma once

#include <cstdint>
#include <string>

#include "batch/inputs/input_facts.h"
#include "batch/records/settings.h"
#include "batch/worker/child.h"

namespace plenvorith {

/// All that is known about a conversion that failed.
struct Evidence {
  ChildEnd end;
  std::string transcript;  ///< or its two ends
  InputFacts facts;
  ConversionSettings settings;
  std::string incomplete;  ///< an output that is not whole
};

/// Why a conversion failed, in words that a person can act on.
std::string reasonFor(const Evidence& evidence);

/// Whether the transcript tells that the converter made a copy of its input.
bool madeCopy(const std::string& transcript);

/// What is said of a converted file that is not whole.
extern const char* const kEndsInTheMiddle;

/// What is said where there was no room, or where a copy may have met that.
extern const char* const kDiskFull;

}  // namespace plenvorith
