// SPDX-License-Identifier: Apache-2.0
//
// Initialisations that fail, and what they leave behind.

#include <gtest/gtest.h>

#include <cstddef>

#include "hcy/hcyclient.h"
#include "support/own_process.h"
#include "support/recorded_curl.h"

namespace hcy {
namespace {

using test::recordedCurl;

using FailingInitialization = test::OwnProcess;

void failByCurl() {
  recordedCurl().globalInitFails = true;
  EXPECT_EQ(hcyInitializeEx(0x10001), nullptr);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "Global initialization of QXHttpClient failed");
  recordedCurl().globalInitFails = false;
}

HCY_TEST_IN_OWN_PROCESS(FailingInitialization, asksLibcurlForAllOnce) {
  ASSERT_NE(hcyInitializeEx(0x10001), nullptr);
  ASSERT_NE(hcyInitializeEx(0x10000), nullptr);
  EXPECT_EQ(recordedCurl().count("global_init 3"), 1U);
  hcyTerminate();
  hcyTerminate();
  EXPECT_EQ(recordedCurl().count("global_cleanup"), 1U);
  EXPECT_EQ(recordedCurl().calls.size(), 2U);
}

HCY_TEST_IN_OWN_PROCESS(FailingInitialization, anInvalidVersionDoesNotReachLibcurl) {
  EXPECT_EQ(hcyInitializeEx(0x10002), nullptr);
  hcyTerminate();
  EXPECT_TRUE(recordedCurl().calls.empty());
}

HCY_TEST_IN_OWN_PROCESS(FailingInitialization, ofLibcurlFailsItAndNothingIsCleanedUp) {
  failByCurl();
  EXPECT_EQ(recordedCurl().count("global_cleanup"), 0U);
  hcyTerminate();
  EXPECT_EQ(recordedCurl().count("global_cleanup"), 0U);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "Global initialization of QXHttpClient failed");
}

HCY_TEST_IN_OWN_PROCESS(FailingInitialization, ofLibcurlLeavesItPossibleLater) {
  failByCurl();
  EXPECT_NE(hcyInitializeEx(0x10001), nullptr);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "Global initialization of QXHttpClient failed");
  hcyTerminate();
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
}

HCY_TEST_IN_OWN_PROCESS(FailingInitialization, eachFailureReplacesTheMessageOfTheOneBefore) {
  failByCurl();
  EXPECT_EQ(hcyInitializeEx(0xFFFF), nullptr);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "Invalid version number.");
  failByCurl();
}

}  // namespace
}  // namespace hcy
