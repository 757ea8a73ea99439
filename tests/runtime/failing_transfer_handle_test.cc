// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "support/client.h"
#include "support/recorded_curl.h"

namespace hcy::abi {
namespace {

using test::recordedCurl;

TEST(FailingTransferHandle, isAFailureOfCreateContext) {
  const Library library;
  const Config config(library);
  recordedCurl() = {};
  recordedCurl().easyInitFails = true;
  hcyClientContext* place = nullptr;
  EXPECT_EQ(library->createContext(&place, config.get()), 1);
  recordedCurl().easyInitFails = false;
  ASSERT_NE(place, nullptr);
  library->destroyContext(place);
  EXPECT_EQ(recordedCurl().handles, 0);
}

}  // namespace
}  // namespace hcy::abi
