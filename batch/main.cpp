#include <string>
#include <vector>

#include <unistd.h>

#include "batch/driver.h"
#include "batch/options.h"
#include "batch/system/descriptor.h"
#include "batch/worker/worker.h"

int main(int argc, char** argv) {
  plenvorith::openStandardStreams();
  const plenvorith::ParsedOptions parsed = plenvorith::parseOptions(argc, argv);
  if (parsed.exitStatus) {
    return *parsed.exitStatus;
  }
  if (parsed.options.worker) {
    return plenvorith::runWorker(STDIN_FILENO, STDOUT_FILENO);
  }
  return plenvorith::runDriver(parsed.options, std::vector<std::string>(argv + 1, argv + argc));
}
