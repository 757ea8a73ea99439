// SPDX-License-Identifier: Apache-2.0
//
// Configurations, contexts, records and calls while memory runs out.

#include "support/failing_memory.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "runtime/reply_call.h"
#include "support/recorded_curl.h"

namespace hcy::abi {
namespace {

using test::FailingAllocation;
using test::recordedCurl;

class FailingMemory : public ReplyCall {
 protected:
  FailingMemory() { recordedCurl() = {}; }
};

TEST_F(FailingMemory, withoutTheHandleOfAConfigurationThePlaceIsNotWritten) {
  hcyClientConfig* const untouched = config.get();
  hcyClientConfig* place = untouched;
  const FailingAllocation failing(0);
  EXPECT_EQ(library->createConfig(&place), 1);
  EXPECT_EQ(place, untouched);
}

TEST_F(FailingMemory, withoutTheSettingsOfAConfigurationAHalfMadeHandleIsLeft) {
  hcyClientConfig* place = nullptr;
  {
    const FailingAllocation failing(1);
    EXPECT_EQ(library->createConfig(&place), 1);
  }
  ASSERT_NE(place, nullptr);
  hcyClientContext* half = nullptr;
  EXPECT_EQ(library->createContext(&half, place), 1);
  if (half != nullptr) library->destroyContext(half);
  library->destroyConfig(place);
}

TEST_F(FailingMemory, withoutAContextThePlaceIsNotWritten) {
  hcyClientContext* const untouched = context.get();
  hcyClientContext* place = untouched;
  const FailingAllocation failing(0);
  EXPECT_EQ(library->createContext(&place, config.get()), 1);
  EXPECT_EQ(place, untouched);
}

// A context without client answers every call with a failure and is destroyed like any other.
TEST_F(FailingMemory, withoutAClientAHalfMadeContextIsLeft) {
  bool failed = true;
  for (std::size_t working = 1; failed; ++working) {
    ASSERT_LT(working, 100U);
    hcyClientContext* place = nullptr;
    int status = 1;
    {
      const FailingAllocation failing(working);
      status = library->createContext(&place, config.get());
      failed = failing.hasFailed();
    }
    EXPECT_EQ(status == 1, failed) << working;
    ASSERT_NE(place, nullptr);
    if (failed) {
      EXPECT_EQ(library->feval(place, "http://127.0.0.1:1/", 0, nullptr, 0, nullptr), 1);
    }
    library->destroyContext(place);
  }
  EXPECT_EQ(recordedCurl().handles, 0);
}

TEST_F(FailingMemory, withoutATransferHandleCreateContextReturns1) {
  recordedCurl().easyInitFails = true;
  hcyClientContext* place = nullptr;
  EXPECT_EQ(library->createContext(&place, config.get()), 1);
  recordedCurl().easyInitFails = false;
  ASSERT_NE(place, nullptr);
  library->destroyContext(place);
}

TEST_F(FailingMemory, withoutATextsCopyASettingStaysAsItWas) {
  library->setCAFile(config.get(), "ca.pem");
  library->setPrivateKeyPasswd(config.get(), "secret");
  const std::string text(100, 'x');
  for (const auto set : {library->setCAFile, library->setPrivateKeyPasswd}) {
    const FailingAllocation failing(0);
    set(config.get(), text.c_str());
    EXPECT_TRUE(failing.hasFailed());
  }
  EXPECT_STREQ(library->getCAFile(config.get()), "ca.pem");
  EXPECT_STREQ(library->getPrivateKeyPasswd(config.get()), "secret");
}

TEST_F(FailingMemory, withoutAStackARecordStillHasItsDepth) {
  const std::string body =
      test::errorResult("m", "i", {test::stackFrame("f", "n", 1), test::stackFrame("g", "o", 2)});
  EXPECT_EQ(feval(body, 0, nullptr), 1);
  hcyErrorInfo info{};
  {
    const FailingAllocation failing(0);
    library->getLastErrorInfo(context.get(), &info);
    EXPECT_TRUE(failing.hasFailed());
  }
  EXPECT_EQ(info.kind, HCY_VORTEN_ERROR);
  EXPECT_STREQ(info.details.vorten.message, "m");
  EXPECT_EQ(info.details.vorten.stack, nullptr);
  EXPECT_EQ(info.details.vorten.stackDepth, 2U);
  library->destroyLastErrorInfo(&info);
  EXPECT_EQ(context.lastFailure().stack.size(), 2U);
}

// Whatever allocation of ours fails, the call says so, the inputs are as before, and the next call
// succeeds. No length is declared, and each context is new: none has memory to spare.
TEST_F(FailingMemory, aCallSurvivesEveryAllocationThatFails) {
  VORTEN_Result result;
  *result.add_lhs() = containerOf(VORTEN_Array::CELL, {doubleArray(1), doubleArray(2)});
  *result.add_lhs() = doubleArray(3);
  const test::ScriptServer server(
      {test::Connection{test::replyToEach("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" +
                                          chunk(result.SerializeAsString()) + chunk(""))}});
  std::set<std::string> texts;
  bool failed = true;
  for (std::size_t working = 0; failed; ++working) {
    ASSERT_LT(working, 1000U);
    const OwnedArray number(hcyCreateDoubleScalar(1));
    const OwnedArray cell(hcyCreateCellMatrix(1, 3));  // makes its elements when it is sent
    const std::vector<const hcyArray*> inputs{number.get(), cell.get(), number.get()};
    const std::string url = server.url();
    const Context fresh(library, config);
    Outputs outputs(2);
    recordedCurl().calls.clear();  // so that its growth takes the same memory each time
    recordedCurl().calls.shrink_to_fit();
    int status = 1;
    {
      const FailingAllocation failing(working);
      status = library->feval(fresh.get(), url.c_str(), 2, outputs.data(), 3, inputs.data());
      failed = failing.hasFailed();
    }
    EXPECT_EQ(status == 1, failed) << working;
    if (status == 1) {
      EXPECT_EQ(fresh.lastFailure().kind, HCY_GENERIC_ERROR) << working;
      texts.insert(fresh.lastFailure().text);
      EXPECT_EQ(outputs[0], nullptr) << working;
    }
    EXPECT_EQ(hcyGetScalar(number.get()), 1.0);
    Outputs again(2);
    EXPECT_EQ(fresh.feval(url, 2, again.data(), inputs), 0) << working;
    EXPECT_EQ(hcyGetScalar(again[1]), 3.0) << working;
  }
  EXPECT_EQ(texts, (std::set<std::string>{"std::bad_alloc", kOverTheLimit.text}));
}

}  // namespace
}  // namespace hcy::abi
