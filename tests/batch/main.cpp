// The tests of this room start their own program as a worker, as the product does.
#include <string_view>

#include <gmock/gmock.h>
#include <unistd.h>

#include "batch/worker/worker.h"

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--worker") {
    return plenvorith::runWorker(STDIN_FILENO, STDOUT_FILENO);
  }
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
