#include <cstdlib>
#include <iostream>
#include <new>
#include <string_view>

#include "prepare/preparation.h"
#include "prepare/temporary_file.h"

namespace {

/// There may be no memory for anything but this.
void endWithoutMemory() {
  std::cerr << "Error: out of memory" << std::endl;
  plenvorith::TemporaryFile::removeNow();
  std::_Exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: plenvorith-prepare INPUT OUTPUT" << std::endl;
    return 2;
  }
  if (std::string_view(argv[2]).ends_with(".stl")) {
    std::cerr << "Error: what is written is a STEP file, not an STL file: " << argv[2] << std::endl;
    return 2;
  }
  std::set_new_handler(endWithoutMemory);
  return plenvorith::prepareFile(argv[1], argv[2]);
}
