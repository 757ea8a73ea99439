// SPDX-License-Identifier: Apache-2.0
//
// Initialisations that fail, and what they leave behind.

#include <gtest/gtest.h>

#include <cstdlib>

#include "hcy/hcyclient.h"
#include "support/failing_memory.h"
#include "support/recorded_curl.h"

namespace hcy {
namespace {

using test::FailingAllocation;
using test::recordedCurl;

class FailingInitialization : public ::testing::Test {
 protected:
  FailingInitialization() {
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    recordedCurl() = {};
  }
};

// A test whose body runs in a process of its own; what it expects fails the test.
#define HCY_TEST_IN_OWN_PROCESS(name)                                       \
  void name();                                                              \
  TEST_F(FailingInitialization, name) {                                     \
    EXPECT_EXIT((name(), std::exit(::testing::Test::HasFailure() ? 1 : 0)), \
                ::testing::ExitedWithCode(0), "");                          \
  }                                                                         \
  void name()

void failByCurl() {
  recordedCurl().globalInitFails = true;
  EXPECT_EQ(hcyInitializeEx(0x10001), nullptr);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "Global initialization of QXHttpClient failed");
  recordedCurl().globalInitFails = false;
}

HCY_TEST_IN_OWN_PROCESS(asksLibcurlForAllOnce) {
  ASSERT_NE(hcyInitializeEx(0x10001), nullptr);
  ASSERT_NE(hcyInitializeEx(0x10000), nullptr);
  EXPECT_EQ(recordedCurl().count("global_init 3"), 1U);
  hcyTerminate();
  hcyTerminate();
  EXPECT_EQ(recordedCurl().count("global_cleanup"), 1U);
  EXPECT_EQ(recordedCurl().calls.size(), 2U);
}

HCY_TEST_IN_OWN_PROCESS(anInvalidVersionDoesNotReachLibcurl) {
  EXPECT_EQ(hcyInitializeEx(0x10002), nullptr);
  hcyTerminate();
  EXPECT_TRUE(recordedCurl().calls.empty());
}

HCY_TEST_IN_OWN_PROCESS(ofLibcurlFailsItAndNothingIsCleanedUp) {
  failByCurl();
  EXPECT_EQ(recordedCurl().count("global_cleanup"), 0U);
  hcyTerminate();
  EXPECT_EQ(recordedCurl().count("global_cleanup"), 0U);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "Global initialization of QXHttpClient failed");
}

HCY_TEST_IN_OWN_PROCESS(ofLibcurlLeavesItPossibleLater) {
  failByCurl();
  EXPECT_NE(hcyInitializeEx(0x10001), nullptr);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "Global initialization of QXHttpClient failed");
  hcyTerminate();
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
}

HCY_TEST_IN_OWN_PROCESS(eachFailureReplacesTheMessageOfTheOneBefore) {
  failByCurl();
  EXPECT_EQ(hcyInitializeEx(0xFFFF), nullptr);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "Invalid version number.");
  failByCurl();
}

HCY_TEST_IN_OWN_PROCESS(withoutMemoryForTheTableHasTheTextOfThat) {
  {
    const FailingAllocation failing(0);
    EXPECT_EQ(hcyInitializeEx(0x10001), nullptr);
    EXPECT_TRUE(failing.hasFailed());
  }
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "std::bad_alloc");
  EXPECT_EQ(recordedCurl().count("global_init 3"), recordedCurl().count("global_cleanup"));
  EXPECT_NE(hcyInitializeEx(0x10001), nullptr);
}

HCY_TEST_IN_OWN_PROCESS(withoutMemoryForTheMessageStillHasOne) {
  for (std::size_t working = 0; working < 4; ++working) {
    const FailingAllocation failing(working);
    EXPECT_EQ(hcyInitializeEx(0x10002), nullptr);
    EXPECT_STRNE(hcyGetInitializationErrorMessage(), "");
  }
}

}  // namespace
}  // namespace hcy
