#include <iostream>

#include "prepare/preparation.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: plenvorith-prepare INPUT OUTPUT" << std::endl;
    return 2;
  }
  return plenvorith::prepareFile(argv[1], argv[2]);
}
