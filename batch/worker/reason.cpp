#include "batch/worker/reason.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <string_view>

#include <string.h>

#include "common/escaped_text.h"

namespace plenvorith {

const char* const kEndsInTheMiddle = "ends in the middle (no END-ISO-10303-21)";
const char* const kDiskFull = "disk full";

namespace {

bool diskWasFull(const ChildEnd& end) {
  // The system counts in blocks, and a file system may keep some of them back.
  constexpr std::int64_t kHardlyAny = std::int64_t{64} << 10;
  return end.leastSpace < kHardlyAny;
}

bool says(const Evidence& evidence, std::string_view words) {
  return evidence.transcript.find(words) != std::string::npos;
}

bool saysAny(const Evidence& evidence, const auto& phrases) {
  return std::any_of(phrases.begin(), phrases.end(),
                     [&](std::string_view words) { return says(evidence, words); });
}

bool isOutOfMemory(const Evidence& evidence) {
  constexpr std::array<std::string_view, 4> kPhrases = {"std::bad_alloc", "Standard_OutOfMemory",
                                                        "Cannot allocate memory", "out of memory"};
  if (saysAny(evidence, kPhrases)) {
    return true;
  }
  // A library that does not look at what it gets crashes.
  const std::int64_t limit = evidence.settings.memoryLimit;
  return limit > 0 && evidence.end.signal && evidence.end.peakMemory > limit / 4 * 3;
}

std::string signalText(int signal) {
  const char* const name = sigabbrev_np(signal);
  return "signal " + std::to_string(signal) +
         (name == nullptr ? std::string() : std::string(", SIG") + name);
}

/// Limits of time, memory and space, whatever else there is to say; empty if it was none of them.
std::string limitReason(const Evidence& evidence) {
  if (evidence.end.forkError != 0) {
    return std::string("no process can be started: ") + strerror(evidence.end.forkError);
  }
  if (evidence.end.timedOut) {
    return "time limit of " + std::to_string(evidence.settings.timeLimit.count()) + " s";
  }
  if (diskWasFull(evidence.end) || says(evidence, "No space left on device")) {
    return kDiskFull;
  }
  if (isOutOfMemory(evidence)) {
    const std::int64_t limit = evidence.settings.memoryLimit;
    return limit > 0 ? "memory limit of " + std::to_string(limit) + " bytes" : "out of memory";
  }
  return {};
}

std::string signalReason(const Evidence& evidence) {
  const int signal = *evidence.end.signal;
  constexpr std::array<std::string_view, 3> kOfTheKernel = {"Standard_", "StdFail_", "gp_"};
  if (signal == SIGKILL) {
    return "killed (" + signalText(signal) + "), perhaps by the system for want of memory";
  }
  if (signal != SIGABRT || saysAny(evidence, kOfTheKernel)) {
    return "kernel crashed (" + signalText(signal) + ")";
  }
  return "given up (" + signalText(signal) + ")";
}

/// What the text of the input is not; empty if it looks like a whole STEP file.
std::string structureReason(const InputFacts& facts) {
  if (!facts.isWhole) {
    return {};
  }
  if (!facts.form.empty()) {
    return "not a STEP file but " + facts.form;
  }
  if (!facts.hasStart) {
    return "not a STEP file (no ISO-10303-21)";
  }
  return facts.hasEnd ? "" : kEndsInTheMiddle;
}

/// Why there is no geometry in a whole STEP file; empty if there may be.
std::string geometryReason(const Evidence& evidence) {
  constexpr std::array<std::string_view, 5> kNoGeometry = {
      "No geometry found in file", "No triangles found in tessellation", "Failed to read STEP",
      "Failed to read BRep", "Failed to write STL"};
  if (!saysAny(evidence, kNoGeometry)) {
    return {};
  }
  if (!evidence.facts.hasTessellation) {
    return "no geometry that the converter takes";
  }
  const char* const hint = evidence.settings.prepare ? "" : ": try without --as-is";
  if (evidence.facts.hasExactGeometry) {
    return std::string("exact geometry behind annotation") + hint;
  }
  return std::string("tessellation of a form that the converter does not decode") + hint;
}

std::string preparationReason(const Evidence& evidence) {
  constexpr int kNothingThere = 3;
  if (!evidence.settings.prepare || says(evidence, "Reading: ")) {
    return {};
  }
  return evidence.end.exitStatus == kNothingThere ? "no geometry in the file, says its preparation"
                                                  : "cannot be prepared";
}

}  // namespace

bool madeCopy(const std::string& transcript) {
  return transcript.find("[PREPROCESS] ") != std::string::npos;
}

std::string reasonFor(const Evidence& evidence) {
  std::string reason = limitReason(evidence);
  if (!reason.empty()) {
    return reason;
  }
  std::string structure = structureReason(evidence.facts);
  if (evidence.end.signal) {
    if (structure.empty() && says(evidence, "stod")) {
      return "a malformed number";
    }
    reason = signalReason(evidence);
    return structure.empty() ? reason : structure + "; " + reason;
  }
  if (!structure.empty()) {
    return structure;
  }
  if (evidence.end.exitStatus == 0) {
    return evidence.incomplete.empty() ? "nothing was written"
                                       : "incomplete: " + printable(evidence.incomplete);
  }
  reason = preparationReason(evidence);
  if (reason.empty()) {
    reason = geometryReason(evidence);
  }
  if (reason.empty() && evidence.end.exitStatus) {
    reason = "exit status " + std::to_string(*evidence.end.exitStatus);
  }
  return reason;
}

}  // namespace plenvorith
