// SPDX-License-Identifier: Apache-2.0
//
// Faults while a request of many megabytes is still being sent.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::Connection;
using test::readRequestHead;
using test::ScriptServer;
using test::send;

class CallsLargeRequest : public CallTest {
 protected:
  CallsLargeRequest() : large_(hcyCreateDoubleMatrix(2048, 2048, hcyREAL)) {}

  Failure failureOfLarge(const std::string& url) {
    EXPECT_EQ(context().feval(url, 0, nullptr, {large_.get()}), 1);
    EXPECT_EQ(hcyGetNumberOfElements(large_.get()), std::size_t{2048} * 2048);
    EXPECT_NE(hcyGetPr(large_.get()), nullptr);
    return context().lastFailure();
  }

 private:
  OwnedArray large_;  // 32 MiB
};

TEST_F(CallsLargeRequest, isAnsweredBeforeItsEnd) {
  const ScriptServer server(
      {Connection{readRequestHead(), send(test::httpReply(413, "Content Too Large", "")),
                  test::waitForClose()},
       answering()});
  EXPECT_EQ(failureOfLarge(server.url()), httpFailure(413, "Content Too Large\r\n"));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

// Whether sending or receiving fails first is chance; that the process survives is not.
TEST_F(CallsLargeRequest, isResetOnItsWay) {
  const ScriptServer server({Connection{readRequestHead(), test::reset()}, answering()});
  const std::set<std::string> possible{"Failed sending data to the peer",
                                       "Failure when receiving data from the peer"};
  EXPECT_EQ(possible.count(failureOfLarge(server.url()).text), 1U);
  EXPECT_EQ(context().lastFailure().kind, HCY_GENERIC_ERROR);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsLargeRequest, isNeverReadAndTimesOut) {
  library->setTimeOut(config.get(), 1);
  const ScriptServer server({Connection{readRequestHead(), test::stall()}, answering()});
  EXPECT_EQ(failureOfLarge(server.url()), kTimedOut);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

}  // namespace
}  // namespace hcy::abi
