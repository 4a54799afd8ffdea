#include <iostream>
#include <string_view>

#include "prepare/preparation.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: plenvorith-prepare INPUT OUTPUT" << std::endl;
    return 2;
  }
  if (std::string_view(argv[2]).ends_with(".stl")) {
    std::cerr << "Error: what is written is a STEP file, not an STL file: " << argv[2] << std::endl;
    return 2;
  }
  return plenvorith::prepareFile(argv[1], argv[2]);
}
