#include "common/block_reader.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include "tests/support/memory_file.h"
#include "tests/support/step_text.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::MemoryFile;
using test::pick;
using test::TempDir;

constexpr std::size_t kBlock = std::size_t{1} << 17U;

/// Bytes that differ from one place to another.
std::string bytes(std::size_t size) {
  std::mt19937 random(1);
  std::string text(size, '\0');
  for (char& c : text) {
    c = static_cast<char>(random() & 0xFFU);
  }
  return text;
}

/// All that is left of the file.
std::string restOf(BlockReader& file) {
  std::string text;
  std::string_view block;
  while (file.next(block)) {
    text += block;
  }
  return text;
}

TEST(BlockReader, HandsOutTheFileInBlocks) {
  MemoryFile memory;
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, kBlock - 1, kBlock, kBlock + 1, 5 * kBlock / 2}) {
    const std::string content = bytes(size);
    BlockReader file(memory.write(content));
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(file.sizeHint(), size);
    EXPECT_TRUE(restOf(file) == content) << size;
    EXPECT_FALSE(file.hasFailed());
  }
}

TEST(BlockReader, ReadsIntoOtherMemory) {
  MemoryFile memory;
  const std::string content = bytes(3 * kBlock);
  BlockReader file(memory.write(content));
  std::string_view block;
  ASSERT_TRUE(file.next(block));
  std::string read(block);
  // Of memory of just this size, so that a sanitizer sees what is written behind its end.
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, 2 * kBlock - 11}) {
    std::vector<char> room(size);
    ASSERT_EQ(file.readInto(room), size);
    read.append(room.begin(), room.end());
  }
  std::vector<char> room(100);
  EXPECT_EQ(file.readInto(room), 10U);
  read.append(room.begin(), room.begin() + 10);
  EXPECT_EQ(file.readInto(room), 0U);
  EXPECT_TRUE(read == content);
  EXPECT_FALSE(file.hasFailed());
  BlockReader missing("/nowhere/at/all");
  EXPECT_EQ(missing.readInto(room), 0U);
}

TEST(BlockReader, IsAtItsEndForGood) {
  MemoryFile memory;
  BlockReader file(memory.write("abc"));
  std::string_view block;
  EXPECT_TRUE(file.next(block));
  EXPECT_FALSE(file.next(block));
  EXPECT_EQ(block, "");
  memory.write("abcdef");
  EXPECT_FALSE(file.next(block));
}

TEST(BlockReader, PutsWhatIsKeptInFront) {
  MemoryFile memory;
  const std::string content = bytes(3 * kBlock);
  BlockReader file(memory.write(content));
  std::string_view block;
  ASSERT_TRUE(file.next(block));
  ASSERT_TRUE(file.next(block, 10));
  EXPECT_TRUE(block == std::string_view(content).substr(kBlock - 10, kBlock));
  ASSERT_TRUE(file.next(block, 1));
  EXPECT_TRUE(block == std::string_view(content).substr(2 * kBlock - 11, kBlock));
}

TEST(BlockReader, GivesWhatIsKeptAtTheEnd) {
  MemoryFile memory;
  BlockReader file(memory.write("abcdef"));
  std::string_view block;
  ASSERT_TRUE(file.next(block));
  EXPECT_FALSE(file.next(block, 2));
  EXPECT_EQ(block, "ef");
  EXPECT_FALSE(file.next(block, 2));
  EXPECT_EQ(block, "ef");
}

TEST(BlockReader, GrowsToHoldWhatIsKept) {
  MemoryFile memory;
  const std::string content = bytes(9 * kBlock + 7);
  BlockReader file(memory.write(content));
  std::string_view block;
  std::size_t before = 0;
  while (file.next(block, before)) {
    ASSERT_GT(block.size(), before);
    ASSERT_TRUE(block == std::string_view(content).substr(0, block.size()));
    before = block.size();
  }
  EXPECT_EQ(before, content.size());
  EXPECT_EQ(block.size(), content.size());
}

TEST(BlockReader, LosesNothingWhateverIsKept) {
  MemoryFile memory;
  std::mt19937 random(2);
  const std::string content = bytes(2'000'000);
  for (int i = 0; i < 20; ++i) {
    BlockReader file(memory.write(content));
    std::string_view block;
    std::size_t end = 0;  // of the block, in the file
    std::size_t kept = 0;
    while (file.next(block, kept)) {
      end += block.size() - kept;
      ASSERT_TRUE(block == std::string_view(content).substr(end - block.size(), block.size()));
      kept = pick(random, 3) == 0 ? block.size() : pick(random, block.size());
    }
    EXPECT_EQ(end, content.size());
  }
}

TEST(BlockReader, GoesToAnyPlace) {
  MemoryFile memory;
  const std::string content = bytes(2 * kBlock);
  BlockReader file(memory.write(content));
  for (const std::size_t place : {std::size_t{0}, kBlock + 3, std::size_t{17}, 2 * kBlock}) {
    ASSERT_TRUE(file.seek(place));
    EXPECT_TRUE(restOf(file) == content.substr(place)) << place;
  }
  ASSERT_TRUE(file.seek(0));
  EXPECT_EQ(file.sizeHint(), content.size());
  EXPECT_TRUE(restOf(file) == content);
}

TEST(BlockReader, HandsOutLittleAtANewPlaceAndMoreBehindIt) {
  MemoryFile memory;
  const std::string content = bytes(2 * kBlock);
  BlockReader file(memory.write(content));
  ASSERT_TRUE(file.seek(5));
  std::string_view block;
  ASSERT_TRUE(file.next(block));
  EXPECT_TRUE(block == content.substr(5, 4096));
  ASSERT_TRUE(file.next(block));
  EXPECT_TRUE(block == content.substr(5 + 4096, kBlock));
}

TEST(BlockReader, RejectsAPlaceThatNoFileHas) {
  MemoryFile memory;
  BlockReader file(memory.write("abc"));
  EXPECT_FALSE(file.seek(~std::uint64_t{0}));
  EXPECT_EQ(restOf(file), "abc");
}

TEST(BlockReader, ReadsAPipeThatHasNoPlaces) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  ASSERT_EQ(::write(ends[1], "abc", 3), 3);
  close(ends[1]);
  BlockReader file("/proc/self/fd/" + std::to_string(ends[0]));
  EXPECT_FALSE(file.seek(0));
  EXPECT_EQ(file.sizeHint(), 0U);
  EXPECT_EQ(restOf(file), "abc");
  EXPECT_FALSE(file.hasFailed());
  close(ends[0]);
}

TEST(BlockReader, GoesOnWhereASignalInterruptedIt) {
  struct sigaction before {};
  struct sigaction interrupting {};
  interrupting.sa_handler = [](int) {};
  sigaction(SIGUSR1, &interrupting, &before);
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::thread writer([&ends, reader = pthread_self()] {
    for (const char* part : {"a", "b", "c"}) {
      EXPECT_EQ(::write(ends[1], part, 1), 1);
      // Most of these come while the reader waits for more.
      for (int i = 0; i < 10; ++i) {
        pthread_kill(reader, SIGUSR1);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    }
    close(ends[1]);
  });
  BlockReader file("/proc/self/fd/" + std::to_string(ends[0]));
  EXPECT_EQ(restOf(file), "abc");
  EXPECT_FALSE(file.hasFailed());
  writer.join();
  close(ends[0]);
  sigaction(SIGUSR1, &before, nullptr);
}

TEST(BlockReader, HasNothingForAMissingFile) {
  const TempDir dir;
  BlockReader file(dir / "missing.stp");
  std::string_view block = "before";
  EXPECT_FALSE(file.isOpen());
  EXPECT_FALSE(file.next(block));
  EXPECT_EQ(block, "");
  EXPECT_FALSE(file.seek(0));
  EXPECT_EQ(file.sizeHint(), 0U);
  EXPECT_FALSE(file.hasFailed());
}

TEST(BlockReader, FailsToReadADirectory) {
  const TempDir dir;
  BlockReader file(dir.path());
  EXPECT_TRUE(file.isOpen());
  EXPECT_EQ(restOf(file), "");
  EXPECT_TRUE(file.hasFailed());
}

/// Memory of this process with a page behind it that cannot be read: read as a file, it ends in an
/// input/output error.
class FailingMemory {
 public:
  explicit FailingMemory(const std::string& content)
      : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
        size_((content.size() + page_ - 1) / page_ * page_),
        start_(mmap(nullptr, size_ + page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1,
                    0)) {
    std::memcpy(static_cast<char*>(start_) + size_ - content.size(), content.data(),
                content.size());
    munmap(static_cast<char*>(start_) + size_, page_);
    place = reinterpret_cast<std::uintptr_t>(start_) + size_ - content.size();
  }
  ~FailingMemory() {
    munmap(start_, size_);
  }
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

  std::uint64_t place = 0;  ///< of the content, in "/proc/self/mem"

 private:
  std::size_t page_;
  std::size_t size_;
  void* start_;
};

TEST(BlockReader, HandsOutAllThatIsInFrontOfAReadError) {
  const std::string content = bytes(3 * kBlock / 2 + 5);
  const FailingMemory memory(content);
  BlockReader file("/proc/self/mem");
  if (!file.isOpen() || !file.seek(memory.place)) {
    GTEST_SKIP() << "the memory of a process is no file here";
  }
  EXPECT_TRUE(restOf(file) == content);
  EXPECT_TRUE(file.hasFailed());
  ASSERT_TRUE(file.seek(memory.place));
  EXPECT_FALSE(file.hasFailed());
}

}  // namespace
}  // namespace plenvorith
