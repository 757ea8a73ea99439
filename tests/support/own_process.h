// SPDX-License-Identifier: Apache-2.0
//
// Tests whose bodies run in processes of their own, in which nothing has used the library before.

#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

namespace hcy::test {

class OwnProcess : public ::testing::Test {
 protected:
  OwnProcess() { ::testing::GTEST_FLAG(death_test_style) = "threadsafe"; }
};

}  // namespace hcy::test

// A test of a suite that is an OwnProcess; what its body expects fails the test.
#define HCY_TEST_IN_OWN_PROCESS(suite, name)                                \
  void name();                                                              \
  TEST_F(suite, name) {                                                     \
    EXPECT_EXIT((name(), std::exit(::testing::Test::HasFailure() ? 1 : 0)), \
                ::testing::ExitedWithCode(0), "");                          \
  }                                                                         \
  void name()
