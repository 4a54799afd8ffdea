#include "tests/cli/expect_run.h"

#include "tests/cli/transcript.h"

namespace plenvorith::test {

Outcome runIn(const Sandbox& sandbox, const std::vector<std::string>& arguments, Command command) {
  command.program = PLENVORITH_PROGRAM;
  command.arguments = arguments;
  command.directory = sandbox.path();
  if (command.environment.empty()) {
    command.environment = {"TMPDIR=tmp"};
  }
  return runProgram(command);
}

void expectRun(const Sandbox& sandbox, const std::vector<std::string>& arguments,
               const Expected& expected, const Command& command) {
  SCOPED_TRACE(testing::PrintToString(arguments));
  const DirectoryContent before = sandbox.content();
  const Outcome outcome = runIn(sandbox, arguments, command);
  const Changes changes = changesBetween(before, sandbox.content());

  EXPECT_THAT(outcome.out, expected.out);
  EXPECT_THAT(outcome.err, expected.err);
  EXPECT_EQ(outcome.exitStatus, expected.exitStatus);
  EXPECT_EQ(outcome.signal, expected.signal);
  EXPECT_FALSE(outcome.timedOut);
  EXPECT_EQ(changes.made, expected.made);
  EXPECT_EQ(changes.changed, expected.overwritten);
  EXPECT_THAT(changes.removed, testing::IsEmpty());
}

testing::Matcher<std::string> ownLines(std::string_view lines) {
  return testing::ResultOf("the program's own lines", keepOwnLines,
                           testing::Eq(std::string(lines)));
}

}  // namespace plenvorith::test
