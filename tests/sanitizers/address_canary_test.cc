// SPDX-License-Identifier: Apache-2.0
//
// AddressSanitizer and UndefinedBehaviorSanitizer report what they are there to report.

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace {

int readBehindTheEnd() {
  const auto block = std::make_unique<int[]>(4);
  const volatile int* const end = block.get() + 4;
  return *end;
}

int overflow() {
  volatile int largest = std::numeric_limits<int>::max();
  return largest + 1;
}

void leak() {
  auto* volatile block = new int[100];
  block = nullptr;
  static_cast<void>(block);
}

TEST(SanitizerCanary, aReadBehindABlockIsReported) {
  EXPECT_DEATH(readBehindTheEnd(), "heap-buffer-overflow");
}

TEST(SanitizerCanary, aSignedOverflowIsReported) {
  EXPECT_DEATH(overflow(), "signed integer overflow");
}

TEST(SanitizerCanary, aLeakIsReported) {
  EXPECT_EXIT(
      {
        leak();
        std::exit(0);
      },
      [](int status) { return status != 0; }, "LeakSanitizer");
}

}  // namespace
