// SPDX-License-Identifier: Apache-2.0
//
// ThreadSanitizer reports what it is there to report.

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

namespace {

int shared = 0;

void race() {
  std::thread other([] { ++shared; });
  ++shared;
  other.join();
}

TEST(SanitizerCanary, aDataRaceIsReported) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        race();
        std::exit(0);
      },
      [](int status) { return status != 0; }, "data race");
}

}  // namespace
