#include "batch/records/job.h"

#include <string>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

std::string allBytes() {
  std::string bytes;
  for (int i = 1; i < 256; ++i) {
    bytes += static_cast<char>(i);
  }
  return bytes;
}

Job oddJob() {
  Job job;
  job.id = 7;
  job.input = "/in/" + allBytes();
  job.outFolder = "/run/1/out";
  job.temporaryFolder = "/run/1/tmp";
  job.outputName = "a.stp.stl";
  job.names = true;
  job.transcript = "/t/\xff.txt";
  job.settings.to = "stp";
  job.settings.deflection = "2.5e-1";
  job.settings.split = true;
  job.settings.parts = true;
  job.settings.prepare = true;
  job.settings.program = "/bin/x";
  job.settings.timeLimit = std::chrono::seconds(90);
  job.settings.memoryLimit = std::int64_t{1} << 40;
  return job;
}

TEST(JobLine, IsAsciiAndGivesAllBack) {
  const Job job = oddJob();
  const std::string line = lineFrom(job);
  EXPECT_EQ(
      line.find_first_not_of("!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
                             "abcdefghijklmnopqrstuvwxyz{|}~ "),
      std::string::npos);
  const auto back = jobFrom(line);
  ASSERT_TRUE(back.has_value());
  EXPECT_TRUE(*back == job);
}

TEST(ResultLine, GivesAllBack) {
  JobResult result;
  result.id = 9;
  result.isConverted = true;
  result.reason = "why";
  result.lastLine = allBytes();
  result.exitStatus = 0;
  result.signal = 11;
  result.size = 5;
  result.mtime = 1234567890123456789;
  result.hash = std::string("\0\xff", 2);
  result.triangles = 12;
  result.bounds = Bounds{{-1, 0.1, 2}, {3, 4, 1e300}};
  result.seconds = 0.25;
  result.cpuSeconds = 0.125;
  result.peakMemory = 4096;
  result.host = "here";
  result.header = {"schema", allBytes(), "stamp"};
  result.changed = 5;
  result.inode = 6;
  result.started = 7;
  result.isTried = false;
  result.outputs = {{"\xff.stl", 684}, {"\xff.stl_2", 84}};
  const std::string line = lineFrom(result);
  EXPECT_EQ(line.find('\n'), std::string::npos);
  const auto back = resultFrom(line, {{9, "\xff.stl"}});
  ASSERT_TRUE(back.has_value());
  EXPECT_TRUE(*back == result);
}

TEST(ResultLine, TellsItsProtocol) {
  EXPECT_THAT(lineFrom(JobResult()), testing::HasSubstr("\"protocol\":1,"));
}

TEST(Lines, PassOverUnknownFields) {
  EXPECT_EQ(jobFrom(R"({"id":3,"input":"a","colour":["red"],"protocol":2})")->input, "a");
  EXPECT_EQ(resultFrom(R"({"id":3,"converted":false,"parts":{},"reason":"b"})", {{3, "a"}})->reason,
            "b");
}

TEST(NamesLine, KeepsEveryByte) {
  EXPECT_EQ(
      lineFrom(std::vector<ShapeName>{{1, {"a\xff", "\n"}, "\""}, {3, {}, ""}}),
      R"([{"name":"\"","number":1,"path":["a\u00ff","\n"]},{"name":"","number":3,"path":[]}])");
}

TEST(ResultLine, KeepsWhatIsMissingMissing) {
  const auto back = resultFrom(lineFrom(JobResult()), {{0, "a"}});
  ASSERT_TRUE(back.has_value());
  EXPECT_FALSE(back->exitStatus.has_value() || back->signal.has_value() ||
               back->bounds.has_value() || back->isConverted);
  EXPECT_THAT(back->outputs, testing::IsEmpty());
}

TEST(ResultLine, LeavesOutNumbersThatCannotBe) {
  const auto back = resultFrom(
      R"({"id":0,"converted":false,"size":0.5,"seconds":1e300,"cpuSeconds":-1,"exitStatus":-1,)"
      R"("signal":4294967297,"bounds":[0,0,0,1,1,1e999]})",
      {{0, "a"}});
  ASSERT_FALSE(back.has_value());  // 1e999 is no JSON to the library
  const auto other = resultFrom(
      R"({"id":0,"converted":false,"size":0.5,"seconds":1e300,"cpuSeconds":-1,"exitStatus":-1,)"
      R"("signal":4294967297,"bounds":[0,0,0,1,1,"x"]})",
      {{0, "a"}});
  ASSERT_TRUE(other.has_value());
  EXPECT_EQ(other->size, 0);
  EXPECT_EQ(other->seconds, 0);
  EXPECT_EQ(other->cpuSeconds, 0);
  EXPECT_FALSE(other->exitStatus || other->signal || other->bounds);
}

TEST(ResultLine, RejectsIdsThatWereNotGivenOut) {
  for (const char* const id : {"1", "-1", "1e300", "\"0\"", "null"}) {
    EXPECT_FALSE(resultFrom(std::string(R"({"id":)") + id + R"(,"converted":false})", {{0, "a"}}))
        << id;
  }
}

TEST(ResultLine, RejectsOutputsThatCannotBeThoseOfTheJob) {
  for (const char* const path : {"../.bashrc", "/etc/passwd", "b.stl", "a.st", "", ".", "..",
                                 "a.stl/../../x", "a.stl/x", "a.stl\\u0000x"}) {
    const std::string line = std::string(R"({"id":0,"converted":true,"outputs":[)") +
                             R"({"path":"a.stl","size":1},{"path":")" + path + R"(","size":1}]})";
    EXPECT_FALSE(resultFrom(line, {{0, "a.stl"}})) << path;
  }
  for (const char* const outputs :
       {"[]", "[{}]", "[1]", "{}", "\"a.stl\"", R"([{"path":"a.stl","size":-1}])",
        R"([{"path":"a.stl"}])", R"([{"path":["a.stl"],"size":1}])"}) {
    EXPECT_FALSE(resultFrom(std::string(R"({"id":0,"converted":true,"outputs":)") + outputs + "}",
                            {{0, "a.stl"}}))
        << outputs;
  }
}

TEST(ResultLine, TakesTheStlFileThatStandsInForAStepFile) {
  const auto isTaken = [](const std::string& path, const std::string& name) {
    return resultFrom(
               R"({"id":0,"converted":true,"outputs":[{"path":")" + path + R"(","size":1}]})",
               {{0, name}})
        .has_value();
  };
  EXPECT_TRUE(isTaken("a.stp.stl", "a.stp.stp"));
  EXPECT_FALSE(isTaken("a.stp.stl_1", "a.stp.stp"));
  EXPECT_FALSE(isTaken("a.stp.stp", "a.stp.stl"));
  EXPECT_FALSE(isTaken("a.stl", "a.stp.stp"));
}

TEST(Lines, RejectsOtherTexts) {
  for (const char* line : {"", "{", "[]", "1", "{}", "{\"ids\":1}", "motd: welcome", "\xff"}) {
    EXPECT_FALSE(jobFrom(line).has_value()) << line;
    EXPECT_FALSE(resultFrom(line, {{0, "a"}}).has_value()) << line;
  }
  EXPECT_FALSE(resultFrom(lineFrom(Job()), {{0, "a"}}).has_value());
}

TEST(Lines, KeepDefaultsForValuesOfOtherKinds) {
  const auto result = resultFrom(R"({"id":0,"converted":1,"reason":3,"bounds":[1,2]})", {{0, "a"}});
  ASSERT_TRUE(result.has_value());
  EXPECT_FALSE(result->isConverted);
  EXPECT_EQ(result->reason, "");
  EXPECT_FALSE(result->bounds.has_value());
}

}  // namespace
}  // namespace plenvorith
