#include "prepare/progress.h"

#include <array>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include "tests/support/prepared_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

/// Lets standard output and standard error be a terminal until its text is asked for.
class Terminal {
 public:
  Terminal() {
    std::cout.flush();
    master_ = posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) {
      throw std::runtime_error("no terminal");
    }
    const int slave = open(ptsname(master_), O_RDWR | O_NOCTTY);
    termios settings{};
    (void)tcgetattr(slave, &settings);
    cfmakeraw(&settings);  // line ends come out as they go in
    (void)tcsetattr(slave, TCSANOW, &settings);
    for (int fd : {STDOUT_FILENO, STDERR_FILENO}) {
      before_[static_cast<std::size_t>(fd)] = dup(fd);
      dup2(slave, fd);
    }
    close(slave);
    reader_ = std::thread([this] { readAll(); });
  }
  ~Terminal() {
    (void)text();
    close(master_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  std::string text() {
    if (reader_.joinable()) {
      std::cout.flush();
      for (int fd : {STDOUT_FILENO, STDERR_FILENO}) {
        dup2(before_[static_cast<std::size_t>(fd)], fd);
        close(before_[static_cast<std::size_t>(fd)]);
      }
      reader_.join();  // ends as nothing can be written any more
    }
    return text_;
  }

 private:
  void readAll() {
    std::array<char, 4096> buffer{};
    for (ssize_t count = 0; (count = ::read(master_, buffer.data(), buffer.size())) > 0;) {
      text_.append(buffer.data(), static_cast<std::size_t>(count));
    }
  }

  int master_ = -1;
  std::array<int, 3> before_{};
  std::thread reader_;
  std::string text_;
};

/// A container or a chroot may have no terminals.
class ProgressTest : public testing::Test {
 protected:
  void SetUp() override {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0) {
      GTEST_SKIP() << "no terminal";
    }
    close(master);
  }
};

/// As many as make a file a large one.
std::string blanks() {
  std::string text;
  text.resize(50'000'000, ' ');
  return text;
}

TEST_F(ProgressTest, IsALineThatIsWrittenOverAndWiped) {
  Terminal terminal;
  {
    Progress progress(50'000'001);
    progress.show("Reading", 0);
    progress.show("Reading", 100);
    progress.show("Reading", 5'000'001);
    progress.wipe();
    progress.wipe();
    progress.show("Writing", 60'000'000);
  }
  EXPECT_EQ(terminal.text(),
            "Reading 0 %"
            "\r           \rReading 10 %"
            "\r            \r"
            "Writing 100 %"
            "\r             \r");
}

TEST_F(ProgressTest, NeverGoesBackInAStep) {
  Terminal terminal;
  {
    Progress progress(100'000'000);
    progress.show("Reading", 30'000'000);
    progress.show("Writing", 20'000'000);
    progress.show("Writing", 10'000'000);
    progress.show("Writing", 21'000'000);
  }
  EXPECT_EQ(terminal.text(),
            "Reading 30 %"
            "\r            \rWriting 20 %"
            "\r            \rWriting 21 %"
            "\r            \r");
}

TEST_F(ProgressTest, OfSmallFilesIsNotShown) {
  Terminal terminal;
  {
    Progress progress(50'000'000);
    progress.show("Reading", 5'000'000);
  }
  EXPECT_EQ(terminal.text(), "");
}

TEST_F(ProgressTest, IsWipedBeforeAnythingElseIsPrinted) {
  const test::TempDir directory;
  const std::string input =
      test::writeFile(directory / "in.stp", blanks() + test::stepFile("#1=A();\n"));
  Terminal terminal;
  EXPECT_EQ(prepareFile(input, directory / "out.stp"), 3);
  const std::string text = terminal.text();
  EXPECT_THAT(text, testing::StartsWith("Preparing: " + input + "\nReading 0 %\r           \r"));
  EXPECT_THAT(text, testing::HasSubstr("Reading 100 %\r             \r  Read 1 entities\n"));
  EXPECT_THAT(text, testing::HasSubstr("Writing 100 %\r             \r  Tessellated repr"));
}

TEST_F(ProgressTest, IsWipedBeforeAnError) {
  const test::TempDir directory;
  const std::string input =
      test::writeFile(directory / "in.stp", "ISO-10303-21;" + blanks() + "DATA;#1=A(");
  Terminal terminal;
  EXPECT_EQ(prepareFile(input, directory / "out.stp"), 1);
  EXPECT_THAT(terminal.text(), testing::EndsWith("Reading 100 %\r             \rError: " + input +
                                                 ": an instance never ends\n"));
}

}  // namespace
}  // namespace plenvorith
