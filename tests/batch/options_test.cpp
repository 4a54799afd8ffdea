#include "batch/options.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;
using namespace std::chrono_literals;

struct Parsed {
  ParsedOptions parsed;
  std::string out, err;
};

Parsed parse(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "plenvorith-batch");
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    pointers.push_back(argument.data());
  }
  pointers.push_back(nullptr);
  Parsed result;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  result.parsed = parseOptions(static_cast<int>(arguments.size()), pointers.data());
  result.out = testing::internal::GetCapturedStdout();
  result.err = testing::internal::GetCapturedStderr();
  return result;
}

/// The options of a command line that is right.
Options optionsOf(const std::vector<std::string>& arguments) {
  const Parsed result = parse(arguments);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.parsed.exitStatus, std::nullopt);
  return result.parsed.options;
}

/// What is printed about one that is wrong.
std::string problemOf(const std::vector<std::string>& arguments) {
  const Parsed result = parse(arguments);
  EXPECT_THAT(result.parsed.exitStatus, Optional(2));
  EXPECT_EQ(result.out, "");
  return result.err;
}

TEST(ParseOptions, HaveDefaults) {
  const Options options = optionsOf({"in", "-o", "out"});
  EXPECT_THAT(options.inputs, ElementsAre("in"));
  EXPECT_EQ(options.output, "out");
  EXPECT_EQ(options.settings.to, "stl");
  EXPECT_EQ(options.settings.deflection, "0.1");
  EXPECT_FALSE(options.settings.split);
  EXPECT_EQ(options.settings.program, "");
  EXPECT_EQ(options.settings.timeLimit, 1h);
  EXPECT_EQ(options.settings.memoryLimit, 0);
  EXPECT_EQ(options.memoryFree, 1073741824);
  EXPECT_GE(options.jobs, 1);
  EXPECT_EQ(options.listing, std::nullopt);
  EXPECT_THAT(options.include, IsEmpty());
  EXPECT_FALSE(options.resume || options.prune || options.dryRun || options.bar ||
               options.followLinks || options.worker);
}

TEST(ParseOptions, TellEachExitStatus) {
  const std::string help = parse({"--help"}).out;
  const std::string statuses = help.substr(help.find("Exit status:"));
  for (const char* const status : {" 0 ", " 1 ", " 2 ", "129", "130", "143"}) {
    EXPECT_THAT(statuses, HasSubstr(status));
  }
}

TEST(ParseOptions, RejectAFileForTheOutputFolder) {
  EXPECT_EQ(problemOf({"in", "-o", "part.stl"}),
            "plenvorith-batch: -o is a folder, not a file like part.stl\n");
  EXPECT_EQ(problemOf({"in", "-o", "x/part.stp"}),
            "plenvorith-batch: -o is a folder, not a file like x/part.stp\n");
  EXPECT_EQ(optionsOf({"in", "-o", "stl"}).output, "stl");
}

TEST(ParseOptions, StandInAnyOrderAndForm) {
  const Options options = optionsOf({"a", "-oDIR", "--to=stp", "b", "--deflection", "2.5e-1",
                                     "--split", "--as-is", "--jobs=3", "--time-limit=5m", "c"});
  EXPECT_THAT(options.inputs, ElementsAre("a", "b", "c"));
  EXPECT_EQ(options.output, "DIR");
  EXPECT_EQ(options.settings.to, "stp");
  EXPECT_EQ(options.settings.deflection, "2.5e-1");
  EXPECT_TRUE(options.settings.split && !options.settings.prepare);
  EXPECT_EQ(options.jobs, 3);
  EXPECT_EQ(options.settings.timeLimit, 5min);
}

TEST(ParseOptions, PrepareUnlessTheyAreToTakeFilesAsTheyAre) {
  EXPECT_TRUE(optionsOf({"in", "-o", "out"}).settings.prepare);
  EXPECT_TRUE(optionsOf({"in", "-o", "out", "--prepare"}).settings.prepare);
  EXPECT_FALSE(optionsOf({"in", "-o", "out", "--as-is"}).settings.prepare);
  EXPECT_EQ(problemOf({"in", "-o", "out", "--as-is", "--prepare"}),
            "plenvorith-batch: --prepare and --as-is exclude each other\n");
}

TEST(ParseOptions, ListPartsOfSplitMeshesOnly) {
  EXPECT_FALSE(optionsOf({"in", "-o", "out", "--split"}).settings.parts);
  EXPECT_TRUE(optionsOf({"in", "-o", "out", "--split", "--parts"}).settings.parts);
  const std::string problem =
      "plenvorith-batch: --parts goes with --split to stl, without --program\n";
  EXPECT_EQ(problemOf({"in", "-o", "out", "--parts"}), problem);
  EXPECT_EQ(problemOf({"in", "-o", "out", "--parts", "--split", "--to", "stp"}), problem);
  EXPECT_EQ(problemOf({"in", "-o", "out", "--parts", "--split", "--program", "x"}), problem);
}

TEST(ParseOptions, TakeTheLastOfEqualOptions) {
  EXPECT_EQ(optionsOf({"in", "-o", "x", "--output", "y"}).output, "y");
}

TEST(ParseOptions, CollectGlobsOneForEachOption) {
  const Options options =
      optionsOf({"--include", "*.stp", "in", "--include=a*", "--exclude", "old", "-o", "out"});
  EXPECT_THAT(options.include, ElementsAre("*.stp", "a*"));
  EXPECT_THAT(options.exclude, ElementsAre("old"));
  EXPECT_THAT(options.inputs, ElementsAre("in"));
}

TEST(ParseOptions, TakeOddNamesForInputs) {
  const std::vector<std::string> names = {
      "two words", "[1,2].stp", "{}", "a=b", "new\nline", "%%", "", "\xff.stp", "'quote\".stp"};
  std::vector<std::string> arguments = {"-o", "out"};
  arguments.insert(arguments.end(), names.begin(), names.end());
  EXPECT_EQ(optionsOf(arguments).inputs, names);
}

TEST(ParseOptions, TakeAllBehindTwoDashesForInputs) {
  EXPECT_THAT(optionsOf({"-o", "out", "--", "-a.stp", "--resume", "--"}).inputs,
              ElementsAre("-a.stp", "--resume", "--"));
}

TEST(ParseOptions, NeedNoInputToExportOrPrune) {
  EXPECT_EQ(optionsOf({"-o", "out", "--export", "log.csv"}).exportPath, "log.csv");
  EXPECT_TRUE(optionsOf({"-o", "out", "--prune"}).prune);
  EXPECT_THAT(optionsOf({"-o", "out", "--files-from", "-"}).listing, Optional(std::string("-")));
}

TEST(ParseOptions, PrintHelpAndVersion) {
  const Parsed help = parse({"--help"});
  EXPECT_THAT(help.parsed.exitStatus, Optional(0));
  EXPECT_THAT(help.out,
              testing::StartsWith("usage: plenvorith-batch [OPTION]... INPUT... -o DIR\n"));
  const Parsed version = parse({"--version", "--bar"});
  EXPECT_THAT(version.parsed.exitStatus, Optional(0));
  EXPECT_THAT(version.out, HasSubstr("(Open CASCADE "));
}

TEST(ParseOptions, RejectsWhatDoesNotFit) {
  EXPECT_EQ(problemOf({"-o", "out"}), "plenvorith-batch: no INPUT (--help explains)\n");
  EXPECT_EQ(problemOf({"-o", "out", "--prune", "--dry-run"}),
            "plenvorith-batch: no INPUT (--help explains)\n");
  EXPECT_EQ(problemOf({"in"}), "plenvorith-batch: no output folder: -o DIR is missing\n");
  EXPECT_EQ(problemOf({"in", "-o", "out", "--to", "obj"}),
            "plenvorith-batch: --to is stl or stp, not obj\n");
  EXPECT_EQ(problemOf({"in", "-o", "out", "--deflection", "0,1"}),
            "plenvorith-batch: --deflection is a number above 0, not 0,1\n");
  EXPECT_EQ(problemOf({"in", "-o", "out", "--jobs", "0x"}),
            "plenvorith-batch: --jobs is a number above 0, as in 4, 50%, +1 or -1, not 0x\n");
  EXPECT_EQ(problemOf({"in", "-o", "out", "--time-limit", ""}),
            "plenvorith-batch: --time-limit is a number and s, m or h, not \n");
  EXPECT_EQ(problemOf({"in", "-o", "out", "--memory-limit", "much"}),
            "plenvorith-batch: --memory-limit is a number of bytes and k, M or G, not much\n");
  EXPECT_EQ(problemOf({"in", "-o", "out", "--export", "log.xml"}),
            "plenvorith-batch: --export is a file that ends in .csv or .json, not log.xml\n");
  EXPECT_THAT(problemOf({"in", "-o", "out", "--quickly"}), HasSubstr("--quickly"));
  EXPECT_THAT(problemOf({"in", "-o"}), HasSubstr("--output"));
}

TEST(JobsFrom, UnderstandsNumbersSharesAndDifferences) {
  EXPECT_EQ(jobsFrom("1", 4), 1);
  EXPECT_EQ(jobsFrom("64", 4), 64);
  EXPECT_EQ(jobsFrom("50%", 4), 2);
  EXPECT_EQ(jobsFrom("10%", 4), 1);
  EXPECT_EQ(jobsFrom("+2", 4), 6);
  EXPECT_EQ(jobsFrom("-1", 4), 3);
  EXPECT_EQ(jobsFrom("-9", 4), 1);
  EXPECT_EQ(jobsFrom("+0", 4), 4);
}

TEST(JobsFrom, RejectsOtherTexts) {
  for (const char* text : {"", "0", "0x", "0%", "+", "-", "%", "two", "1.5", "+5%", " 1", "1 ",
                           "99999999999999999999"}) {
    EXPECT_EQ(jobsFrom(text, 4), std::nullopt) << text;
  }
}

TEST(DurationFrom, UnderstandsSecondsMinutesAndHours) {
  EXPECT_EQ(durationFrom("90"), 90s);
  EXPECT_EQ(durationFrom("90s"), 90s);
  EXPECT_EQ(durationFrom("5m"), 300s);
  EXPECT_EQ(durationFrom("2h"), 7200s);
  EXPECT_EQ(durationFrom("0"), 0s);
  for (const char* text : {"", "m", "soon", "1d", "-1", "1.5h", "99999999999999999999h"}) {
    EXPECT_EQ(durationFrom(text), std::nullopt) << text;
  }
}

TEST(BytesFrom, UnderstandsPowersOf1024) {
  EXPECT_EQ(bytesFrom("1000"), 1000);
  EXPECT_EQ(bytesFrom("64k"), 65536);
  EXPECT_EQ(bytesFrom("512M"), 536870912);
  EXPECT_EQ(bytesFrom("2G"), 2147483648);
  EXPECT_EQ(bytesFrom("1t"), 1099511627776);
  EXPECT_EQ(bytesFrom("0"), 0);
  for (const char* text : {"", "k", "much", "-1", "1.5G", "99999999999T"}) {
    EXPECT_EQ(bytesFrom(text), std::nullopt) << text;
  }
}

TEST(IsDeflection, TakesDecimalNumbersAboveZero) {
  for (const char* text : {"0.1", ".5", "1", "2.5e-1", "1E3", "0.0001"}) {
    EXPECT_TRUE(isDeflection(text)) << text;
  }
  for (const char* text :
       {"", "0", "0.0", "-1", "0,1", "nan", "inf", "0x1", "1e-400", " 1", "1mm"}) {
    EXPECT_FALSE(isDeflection(text)) << text;
  }
}

}  // namespace
}  // namespace plenvorith
