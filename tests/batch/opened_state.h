#pragma once

#include <string>

#include <gtest/gtest.h>

#include "batch/state/state.h"

namespace plenvorith::test {

/// The state at `path`; its folder is there.
inline State openedState(const std::string& path, StateUse use = StateUse::Write) {
  std::string problem;
  State state = openState(path, problem, use);
  EXPECT_NE(state, nullptr) << problem;
  return state;
}

}  // namespace plenvorith::test
