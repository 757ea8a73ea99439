// SPDX-License-Identifier: Apache-2.0
//
// One allocation after another that fails.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "memory/dependency_leaks.h"
#include "support/failing_memory.h"

namespace hcy::abi {

// Where memory runs out.
struct Shortage {
  std::size_t working;
  test::Exhaustion exhaustion;
};

inline std::string described(const Shortage& shortage) {
  const bool isOne = shortage.exhaustion == test::Exhaustion::OneAllocation;
  return "allocation " + std::to_string(shortage.working + 1) + (isOne ? "" : " and all after it") +
         " failed";
}

inline std::string lastCallers() {
  std::string text = "the allocation that failed was asked for by\n";
  for (const std::string& caller : test::FailingAllocation::callers()) text += caller + '\n';
  return text;
}

// Attempts something with one allocation after another failing, and then with each and all behind
// it failing, until none is left to fail; an attempt gives whether one did. After each, all that it
// allocated has been given back. Ends at the first attempt that fails the test. Gives the number of
// failures.
template <class Attempt>
std::size_t failEachAllocation(Attempt attempt) {
  constexpr std::size_t tooMany = 100'000;
  std::size_t failures = 0;
  for (const auto exhaustion : {test::Exhaustion::OneAllocation, test::Exhaustion::FromThenOn}) {
    for (std::size_t working = 0;; ++working) {
      if (working == tooMany) ADD_FAILURE() << "it never succeeds";
      const Shortage shortage{working, exhaustion};
      SCOPED_TRACE(described(shortage));
      // What is set up once and kept is there by then.
      if (failures == 0) attempt({SIZE_MAX, exhaustion});
      test::BlockWatch watch;
      const bool failed = attempt(shortage);
      if (failed && watch.count() != 0 && isLeakOfDependency()) watch.giveUp();
      EXPECT_EQ(watch.list(), "");  // that nothing is left
      if (testing::Test::HasFailure()) {
        ADD_FAILURE() << lastCallers();
        return failures;
      }
      if (!failed) break;
      ++failures;
    }
  }
  return failures;
}

}  // namespace hcy::abi
