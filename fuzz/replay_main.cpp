// Runs a fuzz target on files, and on all files of directories, without a fuzzing engine.

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "fuzz/fuzz_target.h"
#include "tests/support/temp_dir.h"

int main(int argc, char** argv) {
  std::size_t count = 0;
  const auto replay = [&count](const std::filesystem::path& path) {
    const std::string text = plenvorith::test::readFile(path);
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    std::cout << path.string() << std::endl;
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    ++count;
  };
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      replay(argv[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      replay(entry.path());
    }
  }
  if (count == 0) {
    std::cerr << "no inputs" << std::endl;
    return 1;
  }
  return 0;
}
