#include "batch/system/signals.h"

#include <array>
#include <csignal>

#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include "tests/support/scoped_signals.h"

namespace plenvorith {
namespace {

bool isReadable(const Descriptor& descriptor) {
  pollfd event{descriptor.get(), POLLIN, 0};
  return poll(&event, 1, 0) == 1;
}

TEST(ListenToSignals, KeepsThemUntilTheyAreTaken) {
  const test::ScopedSignals before;
  const Descriptor listener = listenToSignals({SIGTERM, SIGUSR1});
  EXPECT_FALSE(isReadable(listener));
  EXPECT_EQ(nextSignal(listener.get()), 0);
  kill(getpid(), SIGTERM);
  kill(getpid(), SIGUSR1);
  EXPECT_TRUE(isReadable(listener));
  const int first = nextSignal(listener.get());
  const int second = nextSignal(listener.get());
  EXPECT_THAT((std::array{first, second}), testing::UnorderedElementsAre(SIGTERM, SIGUSR1));
  EXPECT_FALSE(isReadable(listener));
  EXPECT_EQ(nextSignal(listener.get()), 0);
}

TEST(ListenToSignals, LeavesOtherSignalsAlone) {
  const test::ScopedSignals before;
  const Descriptor listener = listenToSignals({SIGTERM});
  sigset_t blocked;
  sigprocmask(SIG_SETMASK, nullptr, &blocked);
  EXPECT_EQ(sigismember(&blocked, SIGTERM), 1);
  EXPECT_EQ(sigismember(&blocked, SIGINT), 0);
}

}  // namespace
}  // namespace plenvorith
