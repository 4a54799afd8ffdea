#include "batch/worker/reason.h"

#include <cerrno>
#include <csignal>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

/// A conversion of a whole STEP file that ended with this exit status and transcript.
Evidence endedWith(int exitStatus, const std::string& transcript) {
  Evidence evidence;
  evidence.end.exitStatus = exitStatus;
  evidence.end.leastSpace = std::numeric_limits<std::int64_t>::max();
  evidence.transcript = transcript;
  evidence.facts.isWhole = evidence.facts.hasStart = evidence.facts.hasEnd = true;
  return evidence;
}

Evidence killedBy(int signal, const std::string& transcript) {
  Evidence evidence = endedWith(0, transcript);
  evidence.end.exitStatus.reset();
  evidence.end.signal = signal;
  return evidence;
}

constexpr const char* kNoGeometry = "Error: No geometry found in file\nFailed\n";

TEST(ReasonFor, NamesTheStructureThatIsMissing) {
  Evidence evidence = endedWith(1, kNoGeometry);
  EXPECT_EQ(reasonFor(evidence), "no geometry that the converter takes");
  evidence.facts.hasEnd = false;
  EXPECT_EQ(reasonFor(evidence), "ends in the middle (no END-ISO-10303-21)");
  evidence.facts.hasStart = false;
  EXPECT_EQ(reasonFor(evidence), "not a STEP file (no ISO-10303-21)");
  evidence.facts.form = "packed with zip";
  EXPECT_EQ(reasonFor(evidence), "not a STEP file but packed with zip");
  evidence.facts.isWhole = false;
  EXPECT_EQ(reasonFor(evidence), "no geometry that the converter takes");
}

TEST(ReasonFor, HintsAtPreparingOnlyWhereThatIsNotDone) {
  Evidence evidence = endedWith(1, "Reading: x\n" + std::string(kNoGeometry));
  evidence.facts.hasTessellation = true;
  EXPECT_EQ(reasonFor(evidence),
            "tessellation of a form that the converter does not decode: try without --as-is");
  evidence.facts.hasExactGeometry = true;
  EXPECT_EQ(reasonFor(evidence), "exact geometry behind annotation: try without --as-is");
  evidence.settings.prepare = true;
  EXPECT_EQ(reasonFor(evidence), "exact geometry behind annotation");
}

TEST(ReasonFor, SaysThatNoProcessCouldBeStarted) {
  Evidence evidence = endedWith(0, "");
  evidence.end.exitStatus.reset();
  evidence.end.forkError = EAGAIN;
  EXPECT_EQ(reasonFor(evidence), "no process can be started: Resource temporarily unavailable");
}

TEST(ReasonFor, NamesLimitsBeforeAllElse) {
  Evidence evidence = killedBy(SIGTERM, kNoGeometry);
  evidence.facts.hasStart = false;
  evidence.end.timedOut = true;
  evidence.settings.timeLimit = std::chrono::seconds(6);
  EXPECT_EQ(reasonFor(evidence), "time limit of 6 s");
  evidence.end.timedOut = false;
  evidence.end.leastSpace = 4096;
  EXPECT_EQ(reasonFor(evidence), "disk full");
}

TEST(ReasonFor, KnowsWantOfMemory) {
  Evidence evidence = killedBy(SIGABRT, "terminate called after throwing 'std::bad_alloc'\n");
  EXPECT_EQ(reasonFor(evidence), "out of memory");
  evidence.settings.memoryLimit = 1000000;
  EXPECT_EQ(reasonFor(evidence), "memory limit of 1000000 bytes");
  evidence = killedBy(SIGSEGV, "");
  evidence.settings.memoryLimit = 1000000;
  evidence.end.peakMemory = 750001;
  EXPECT_EQ(reasonFor(evidence), "memory limit of 1000000 bytes");
  evidence.end.peakMemory = 750000;
  EXPECT_EQ(reasonFor(evidence), "kernel crashed (signal 11, SIGSEGV)");
}

TEST(ReasonFor, TellsSignalsApart) {
  EXPECT_EQ(reasonFor(killedBy(SIGABRT, "what():  stod\n")), "a malformed number");
  EXPECT_EQ(reasonFor(killedBy(SIGFPE, "")), "kernel crashed (signal 8, SIGFPE)");
  EXPECT_EQ(reasonFor(killedBy(SIGABRT, "instance of 'Standard_NullObject'\n")),
            "kernel crashed (signal 6, SIGABRT)");
  EXPECT_EQ(reasonFor(killedBy(SIGABRT, "std::out_of_range\n")), "given up (signal 6, SIGABRT)");
  EXPECT_EQ(reasonFor(killedBy(SIGKILL, "")),
            "killed (signal 9, SIGKILL), perhaps by the system for want of memory");
  Evidence cut = killedBy(SIGABRT, "what():  stod\n");
  cut.facts.hasEnd = false;
  EXPECT_EQ(reasonFor(cut),
            "ends in the middle (no END-ISO-10303-21); given up (signal 6, SIGABRT)");
}

TEST(ReasonFor, NamesWhatIsWrongWithOutputs) {
  Evidence evidence = endedWith(0, "Done\n");
  EXPECT_EQ(reasonFor(evidence), "nothing was written");
  evidence.incomplete = "a\n.stl";
  EXPECT_EQ(reasonFor(evidence), "incomplete: a\\n.stl");
}

TEST(ReasonFor, TellsWhatPreparingFound) {
  Evidence evidence = endedWith(3, "Preparing: x\n");
  evidence.settings.prepare = true;
  EXPECT_EQ(reasonFor(evidence), "no geometry in the file, says its preparation");
  evidence.end.exitStatus = 1;
  EXPECT_EQ(reasonFor(evidence), "cannot be prepared");
}

TEST(ReasonFor, FallsBackOnTheExitStatus) {
  EXPECT_EQ(reasonFor(endedWith(7, "no luck\n")), "exit status 7");
}

TEST(MadeCopy, IsToldByTheTranscript) {
  EXPECT_TRUE(madeCopy("[PREPROCESS] Stripped 3 lines -> /tmp/a.clean.stp\n"));
  EXPECT_FALSE(madeCopy("Reading: a.stp\n"));
}

}  // namespace
}  // namespace plenvorith
