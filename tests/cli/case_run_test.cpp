// A case that is wrong has to fail. The programs here are the shell and the driver itself.

#include "tests/cli/case_run.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/run_program.h"
#include "tests/support/stl_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// A project with the test data and nothing else, whose only program is the shell.
class CaseRunTest : public testing::Test {
 protected:
  CaseRunTest() {
    std::filesystem::create_directories(root_.path() / "tests/data");
    writeFile(root_ / "tests/data/whole.step", "DATA;\n#1=A;\nENDSEC;\n");
    writeFile(root_ / "tests/data/more.entities", "#2=B;\n");
    setting_ = {.root = root_.path(), .programs = {{"sh", "/bin/sh"}, {"unbuilt", ""}}};
  }

  std::vector<std::string> failures(const std::string& sections) const {
    std::vector<std::string> all;
    for (const Case& testCase : parseCases("# About.\n" + sections, commonTexts(setting_))) {
      for (const std::string& failure : failuresOf(testCase, setting_)) {
        all.push_back(failure);
      }
    }
    return all;
  }

  const CaseSetting& setting() const {
    return setting_;
  }

 private:
  TempDir root_;
  CaseSetting setting_;
};

constexpr const char* kRight =
    "== file in\n"
    "old\n"
    "== file gone\n"
    "== run sh -c \"echo out; echo err >&2; echo new > made; echo changed > in; rm gone; exit 3\"\n"
    "== out\n"
    "out\n"
    "== err\n"
    "err\n"
    "== status 3\n"
    "== made made\n"
    "== changed in\n"
    "== removed gone\n"
    "== expect-file made\n"
    "new\n";

/// kRight with one text replaced.
std::string rightBut(const std::string& from, const std::string& to) {
  std::string text = kRight;
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

TEST_F(CaseRunTest, PassesWhatIsRight) {
  EXPECT_THAT(failures(kRight), IsEmpty());
}

TEST_F(CaseRunTest, FailsForOtherOutput) {
  EXPECT_THAT(failures(rightBut("== out\nout\n", "== out\nOut\n")),
              ElementsAre("line 6: out: expected\n    | Out\n  and got\n    | out\n"));
  EXPECT_THAT(failures(rightBut("== out\nout\n", "")),
              ElementsAre("line 5: out: expected\n    (nothing)\n  and got\n    | out\n"));
  EXPECT_THAT(failures(rightBut("== err\nerr\n", "== err\nerr\nerr\n")),
              ElementsAre(StartsWith("line 8: err: expected\n")));
  EXPECT_THAT(failures(rightBut("echo out;", "echo out; echo;")),
              ElementsAre(StartsWith("line 6: out: expected\n")));
  EXPECT_THAT(failures(rightBut("echo out;", "printf out;")),
              ElementsAre(HasSubstr("| out<no line end>\n")));
}

TEST_F(CaseRunTest, FailsForAnotherEnd) {
  EXPECT_THAT(failures(rightBut("== status 3\n", "== status 2\n")),
              ElementsAre("line 10: status: expected 2 and got 3"));
  EXPECT_THAT(failures(rightBut("== status 3\n", "")),
              ElementsAre("line 5: status: expected 0 and got 3"));
  EXPECT_THAT(failures(rightBut("exit 3", "kill -ABRT $$")),
              ElementsAre("line 10: status: expected 3 and got SIGABRT"));
  EXPECT_THAT(failures("== run sh -c \"kill -SEGV $$\"\n== status SIGABRT SIGSEGV\n"), IsEmpty());
}

TEST_F(CaseRunTest, FailsForFilesThatAreNotMadeChangedOrRemoved) {
  EXPECT_THAT(failures(rightBut("echo new > made;", "")),
              ElementsAre("line 11: made: expected made and got (nothing)",
                          "line 14: expect-file: made is no file"));
  EXPECT_THAT(failures(rightBut("echo changed > in;", "echo old > in;")),
              ElementsAre("line 12: changed: expected in and got (nothing)"));
  EXPECT_THAT(failures(rightBut("rm gone;", "")),
              ElementsAre("line 13: removed: expected gone and got (nothing)"));
}

TEST_F(CaseRunTest, FailsForFilesThatNobodyNamed) {
  EXPECT_THAT(failures(rightBut("== made made\n", "")),
              ElementsAre("line 5: made: expected (nothing) and got made"));
  EXPECT_THAT(failures(rightBut("echo new > made;", "echo new > made; mkdir tmp/d; ln -s x l;")),
              ElementsAre("line 11: made: expected made and got l made tmp/d"));
  EXPECT_THAT(failures(rightBut("== changed in\n", "")),
              ElementsAre("line 5: changed: expected (nothing) and got in"));
  EXPECT_THAT(failures(rightBut("== removed gone\n", "")),
              ElementsAre("line 5: removed: expected (nothing) and got gone"));
}

TEST_F(CaseRunTest, FailsForOtherContent) {
  EXPECT_THAT(failures(rightBut("echo new", "printf 'new\\\\nmore\\\\n'")),
              ElementsAre("line 14: expect-file: it differs from line 2 on; it is\nnew\nmore\n"));
  EXPECT_THAT(failures(rightBut("echo new", "printf new")),
              ElementsAre(HasSubstr("it differs from line 1 on")));
}

TEST_F(CaseRunTest, LooksAtEachRunByItself) {
  EXPECT_THAT(failures("== run sh -c \"echo 1 > a\"\n"
                       "== made a\n"
                       "== run sh -c \"echo 2 > a\"\n"
                       "== changed a\n"
                       "== run sh -c \"cat a\"\n"
                       "== out\n2\n"
                       "== made a\n"),
              ElementsAre("line 9: made: expected a and got (nothing)"));
}

TEST_F(CaseRunTest, LooksAtEachRow) {
  EXPECT_THAT(failures("== each text\na\nb\n== run sh -c \"echo {text}\"\n== out\na\n"),
              ElementsAre(HasSubstr("and got\n    | b\n")));
}

TEST_F(CaseRunTest, MakesWhatACaseBeginsWith) {
  EXPECT_THAT(
      failures("== bytes b\n"
               "\"1\\r\\n\" 2 3\n"
               "== bytes repeated 1000\n"
               "\"\\x00\" x\n"
               "== step s whole more\n"
               "#3=C;\n"
               "== step t more\n"
               "== copy c tests/data/more.entities\n"
               "== directory d\n"
               "== file d/f\n"
               "== link l d/f\n"
               "== mode d/f 500\n"
               "== run TMPDIR={sandbox}/d sh -c \"stat -c %a d/f; readlink l; echo $TMPDIR\"\n"
               "== out\n"
               "500\n"
               "d/f\n"
               "{sandbox}/d\n"
               "== check\n"
               "b size 5\n"
               "repeated size 2000\n"
               "== expect-file s\n"
               "DATA;\n#1=A;\n#2=B;\n#3=C;\nENDSEC;\n"
               "== expect-step t more\n"
               "== expect-file c\n"
               "#2=B;\n"),
      IsEmpty());
}

TEST_F(CaseRunTest, GivesProgramsTheEmptyTmpAndNothingElseOfTheEnvironment) {
  EXPECT_THAT(failures("== run A=1 sh -c \"echo $TMPDIR $A $HOME; ls tmp\"\n== out\ntmp 1\n"),
              IsEmpty());
}

TEST_F(CaseRunTest, FailsWhereItCannotBeginAsWritten) {
  EXPECT_THAT(failures("== step s missing\n== run sh\n"),
              ElementsAre("line 2: step: tests/data has no \"missing\" that could stand here"));
  EXPECT_THAT(failures("== step s more whole\n== run sh\n"),
              ElementsAre("line 2: step: tests/data has no \"whole\" that could stand here"));
  EXPECT_THAT(failures("== file d/f\n== run sh\n"), ElementsAre("line 2: file: cannot make d/f"));
  EXPECT_THAT(failures("== copy c missing\n== run sh\n"),
              ElementsAre(StartsWith("line 2: copy: ")));
  EXPECT_THAT(failures("== file f\n== mode f 0x7\n== run sh\n"),
              ElementsAre("line 3: mode: \"0x7\" is no mode of three octal digits"));
  EXPECT_THAT(failures("== run bash\n"), ElementsAre("line 2: run: there is no program \"bash\""));
  EXPECT_THAT(failures("== run A=1\n"), ElementsAre("line 2: run: a run without a program"));
}

TEST_F(CaseRunTest, KnowsFiveWaysToCompareLines) {
  const std::string run =
      "== run sh -c \"echo Reading: a; echo kernel 12; echo '  Read 3 x'; echo Done\"\n";
  for (const char* right :
       {"== out\nReading: a\nkernel 12\n  Read 3 x\nDone\n",
        "== out\nReading: a\nkernel <number>\n<perhaps>no\n<perhaps>  Read <number> x\nDone\n",
        "== out own-lines\nReading: a\n  Read 3 x\nDone\n",
        "== out has-lines\nkernel 12\n  Read 3 x\n", "== out contains\nad 3\nkern\n",
        "== out anything\n"}) {
    EXPECT_THAT(failures(run + right), IsEmpty()) << right;
  }
  for (const char* wrong :
       {"== out\nReading: a\nkernel <number>2\n  Read 3 x\nDone\n",
        "== out\nReading: a\nkernel 12\n  Read x\nDone\n",
        "== out\nReading: a\nkernel 12\n  Read 3 x\n",
        "== out own-lines\nReading: a\nkernel 12\n  Read 3 x\nDone\n",
        "== out own-lines\nReading: a\nDone\n", "== out has-lines\nkernel 12\nDone\n",
        "== out has-lines\nkernel 1\n", "== out contains\nad 3\nkerm\n", "== out has-lines\n",
        "== out contains\n", "== out anything\nReading\n", "== out own\nDone\n"}) {
    EXPECT_THAT(failures(run + wrong), ElementsAre(StartsWith("line 3: out: "))) << wrong;
  }
}

TEST_F(CaseRunTest, ChecksFiles) {
  const std::string start = "== file f\nabc\n== file g\nabc\n== run sh -c true\n== check\n";
  for (const char* right :
       {"f size 4", "f size above 3", "f size below 5", "f size above 0.5 times g",
        "f size below 1.5 times g", "f equals g", "f contains bc", "f lacks bd", "f starts ab"}) {
    EXPECT_THAT(failures(start + right + "\n"), IsEmpty()) << right;
  }
  for (const char* wrong :
       {"f size 3", "f size above 4", "f size below 4", "f size above g", "f contains bd",
        "f lacks bc", "f starts bc", "f equals missing", "missing size 4", "f length 4", "f size",
        "f size 4 5", "f size four", "f size above", "f contains \"\"", "f volume 1", "f is g",
        "f equals g g", "f clean-step 1"}) {
    EXPECT_THAT(failures(start + wrong + "\n"), ElementsAre(StartsWith("line 7: check: ")))
        << wrong;
  }
}

/// A tetrahedron with legs of 6, 1 and 1 and so of volume 1, its normals left at zero.
const std::vector<StlRecord> kTetrahedron = {
    {0, 0, 0, 0, 0, 0, 0, 1, 0, 6, 0, 0},
    {0, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 1},
    {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0},
    {0, 0, 0, 6, 0, 0, 0, 1, 0, 0, 0, 1},
};

TEST_F(CaseRunTest, ChecksTriangles) {
  writeFile(setting().root / "t.stl", stlFile(kTetrahedron));
  const std::string start = "== copy t.stl t.stl\n== run sh -c true\n";
  for (const char* right :
       {"== check\nt.stl triangles 4\nt.stl volume 1\nt.stl volume-of-first-3 0\nt.stl size 284\n",
        "== expect-stl t.stl last\n0 0 0  6 0 0  0 1 0  0 0 1\n",
        "== expect-stl t.stl\n0 0 0  0 0 0  0 1 0  6 0 0\n0 0 0  0 0 0  6 0 0  0 0 1\n"
        "0 0 0  0 0 0  0 0 1  0 1 0\n_ _ _  6 0 0  0 1 0  0 0 1\n"}) {
    EXPECT_THAT(failures(start + right), IsEmpty()) << right;
  }
  for (const char* wrong :
       {"== check\nt.stl triangles 5\n", "== check\nt.stl volume 1.001\n",
        "== check\nt.stl volume-of-first-5 1\n", "== check\nt.stl volume-of-last-1 1\n",
        "== expect-stl t.stl last\n0 0 0  6 0 0  0 1 0  0 0 2\n",
        "== expect-stl t.stl last\n0 0 1  6 0 0  0 1 0  0 0 1\n",
        "== expect-stl t.stl last\n6 0 0  0 1 0  0 0 1\n",
        "== expect-stl t.stl\n0 0 0  6 0 0  0 1 0  0 0 1\n", "== expect-stl t.stl\n",
        "== expect-stl t.stl first\n0 0 0  6 0 0  0 1 0  0 0 1\n"}) {
    EXPECT_THAT(failures(start + wrong), ElementsAre(AnyOf(StartsWith("line 4: check: "),
                                                           StartsWith("line 4: expect-stl: "))))
        << wrong;
  }
}

TEST_F(CaseRunTest, FailsForAnStlFileThatIsCutShort) {
  writeFile(setting().root / "t.stl", stlFile(kTetrahedron).substr(0, 283));
  EXPECT_THAT(failures("== copy t.stl t.stl\n== run sh -c true\n== check\nt.stl triangles 4\n"),
              ElementsAre(HasSubstr("an STL file of 283 bytes for 4 triangles")));
}

TEST_F(CaseRunTest, NamesAProgramThatIsNotBuilt) {
  const auto missing = [&](const std::string& runs) {
    return missingProgram(parseCases("# A.\n" + runs, "missing").at(0), setting());
  };
  EXPECT_EQ(missing("== run sh\n"), "");
  EXPECT_EQ(missing("== run sh\n== run A=1 unbuilt x\n"), "unbuilt");
  EXPECT_EQ(missing("== run unknown\n"), "");  // that fails when it runs
}

/// How the driver ends, given a case file.
Outcome driven(const std::string& text) {
  const TempDir dir;
  writeFile(dir / "a_case.txt", text);
  return runProgram({.program = PLENVORITH_CASE,
                     .arguments = {dir.path(), "sh=/bin/sh", "unbuilt=", "a_case.txt"},
                     .directory = dir.path()});
}

TEST(CaseDriver, TellsHowACaseEnded) {
  EXPECT_EQ(driven("# A.\n== run sh -c true\n").exitStatus, 0);

  const Outcome wrong = driven("# A.\n== each n\n3\n4\n== run sh -c \"exit {n}\"\n== status 4\n");
  EXPECT_EQ(wrong.exitStatus, 1);
  EXPECT_EQ(wrong.err, "a_case.txt: with \"3\": line 6: status: expected 4 and got 3\n");

  const Outcome malformed = driven("# A.\n== run sh\n== uot\n");
  EXPECT_EQ(malformed.exitStatus, 2);
  EXPECT_EQ(malformed.err, "a_case.txt: line 3: there is no section \"uot\"\n");

  const Outcome skipped = driven("# A.\n== run unbuilt\n");
  EXPECT_EQ(skipped.exitStatus, 77);
  EXPECT_EQ(skipped.out, "unbuilt is not built\n");
}

TEST(CaseDriver, FailsWithoutAFile) {
  const TempDir dir;
  const Outcome outcome = runProgram({.program = PLENVORITH_CASE,
                                      .arguments = {dir.path(), "missing.txt"},
                                      .directory = dir.path()});
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_EQ(outcome.err, "missing.txt: no such file\n");
}

}  // namespace
}  // namespace plenvorith::test
