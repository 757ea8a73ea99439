// SPDX-License-Identifier: Apache-2.0
//
// Error records through the runtime table.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "support/call_test.h"
#include "support/libcurl_text.h"

namespace hcy::abi {
namespace {

using test::Connection;
using test::errorResult;
using test::httpReply;
using test::readRequest;
using test::ScriptServer;
using test::send;
using test::stackFrame;

// Programs in other languages lay out the records by these numbers.
static_assert(sizeof(hcyErrorInfo) == 48);
static_assert(offsetof(hcyErrorInfo, kind) == 0);
static_assert(offsetof(hcyErrorInfo, message) == 8);
static_assert(offsetof(hcyErrorInfo, details.http.statusCode) == 16);
static_assert(offsetof(hcyErrorInfo, details.http.statusMessage) == 24);
static_assert(offsetof(hcyErrorInfo, details.vorten.message) == 16);
static_assert(offsetof(hcyErrorInfo, details.vorten.identifier) == 24);
static_assert(offsetof(hcyErrorInfo, details.vorten.stack) == 32);
static_assert(offsetof(hcyErrorInfo, details.vorten.stackDepth) == 40);
static_assert(offsetof(hcyErrorInfo, details.generic.details) == 16);
static_assert(sizeof(hcyErrorStackFrame) == 24);
static_assert(offsetof(hcyErrorStackFrame, file) == 0);
static_assert(offsetof(hcyErrorStackFrame, name) == 8);
static_assert(offsetof(hcyErrorStackFrame, line) == 16);

const Failure kNone{};

// Serves the bodies one after another on one connection, each with status 200.
ScriptServer serving(const std::vector<std::string>& bodies) {
  Connection connection{};
  for (const std::string& body : bodies) {
    connection.steps.push_back(readRequest());
    connection.steps.push_back(send(httpReply(200, "OK", body)));
  }
  return ScriptServer({connection});
}

class CallsErrorRecord : public CallTest {
 protected:
  Failure failureOfResult(const std::string& body) {
    const ScriptServer server = serving({body});
    return failureOf(server.url());
  }
};

TEST_F(CallsErrorRecord, isKind0WithEmptyTextsAndStatus0BeforeAnyFailure) {
  EXPECT_EQ(context().lastFailure(), kNone);
}

TEST_F(CallsErrorRecord, staysSoAfterASuccess) {
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(context().lastFailure(), kNone);
}

TEST_F(CallsErrorRecord, ofAServerErrorHasItsMessageAndIdentifier) {
  EXPECT_EQ(failureOfResult(errorResult("Sizes differ.", "halcyon:argument:size")),
            vortenFailure("Sizes differ.", "halcyon:argument:size"));
}

TEST_F(CallsErrorRecord, ofAServerErrorWithoutAnyFieldHasEmptyTexts) {
  EXPECT_EQ(failureOfResult(test::bytesField(2, "")), vortenFailure("", ""));
}

TEST_F(CallsErrorRecord, hasThreeFramesInTheServersOrder) {
  EXPECT_EQ(
      failureOfResult(
          errorResult("m", "i",
                      {stackFrame("inner.v", "inner", 7), stackFrame("outer.v", "outer", 12),
                       stackFrame("main.v", "main", -1)})),
      vortenFailure("m", "i",
                    {{"inner.v", "inner", 7}, {"outer.v", "outer", 12}, {"main.v", "main", -1}}));
}

TEST_F(CallsErrorRecord, ofFramesWithAbsentFieldsHasEmptyTextsAndLine0) {
  EXPECT_EQ(failureOfResult(errorResult(
                "m", "i",
                {"", test::bytesField(1, "f"), test::bytesField(2, "n"), test::numberField(3, 3)})),
            vortenFailure("m", "i", {{}, {"f", "", 0}, {"", "n", 0}, {"", "", 3}}));
}

TEST_F(CallsErrorRecord, withoutFramesHasNoStackAndGivingItBackDoesNothing) {
  failureOfResult(errorResult("m", "i"));
  ErrorRecord record(library, context().get());
  EXPECT_EQ(record->details.vorten.stack, nullptr);
  EXPECT_EQ(record->details.vorten.stackDepth, 0U);
  library->destroyLastErrorInfo(record.get());
  EXPECT_EQ(record->kind, HCY_VORTEN_ERROR);
  EXPECT_STREQ(record->details.vorten.message, "m");
  EXPECT_EQ(record->details.vorten.stackDepth, 0U);
}

TEST_F(CallsErrorRecord, givenBackTwiceLosesItsStackOnceAndKeepsAllElse) {
  failureOfResult(errorResult("m", "i", {stackFrame("f", "n", 1)}));
  ErrorRecord record(library, context().get());
  ASSERT_NE(record->details.vorten.stack, nullptr);
  for (int i = 0; i < 2; ++i) {
    library->destroyLastErrorInfo(record.get());
    EXPECT_EQ(record->kind, HCY_VORTEN_ERROR);
    EXPECT_STREQ(record->details.vorten.message, "m");
    EXPECT_STREQ(record->details.vorten.identifier, "i");
    EXPECT_EQ(record->details.vorten.stack, nullptr);
    EXPECT_EQ(record->details.vorten.stackDepth, 1U);
  }
}

TEST_F(CallsErrorRecord, canBeTakenTwiceEachWithAStackOfItsOwn) {
  failureOfResult(errorResult("m", "i", {stackFrame("f", "n", 1)}));
  ErrorRecord one(library, context().get());
  ErrorRecord two(library, context().get());
  EXPECT_NE(one->details.vorten.stack, two->details.vorten.stack);
  library->destroyLastErrorInfo(one.get());
  EXPECT_STREQ(two->details.vorten.stack[0].file, "f");
  EXPECT_EQ(one->details.vorten.message, two->details.vorten.message);
}

TEST_F(CallsErrorRecord, ofKind0IsLeftUntouchedWhenGivenBack) {
  const ScriptServer server({Connection{readRequest(), send(httpReply(500, "No", ""))}});
  failureOf(server.url());
  ErrorRecord record(library, context().get());
  library->destroyLastErrorInfo(record.get());
  EXPECT_EQ(record->kind, HCY_HTTP_ERROR);
  EXPECT_STREQ(record->message, "A non-200 HTTP response was received");
  EXPECT_EQ(record->details.http.statusCode, 500U);
  EXPECT_STREQ(record->details.http.statusMessage, "No\r\n");
}

TEST_F(CallsErrorRecord, ofKind2IsLeftUntouchedWhenGivenBack) {
  failureOfResult("");
  ErrorRecord record(library, context().get());
  const std::string details = record->details.generic.details;
  library->destroyLastErrorInfo(record.get());
  EXPECT_EQ(record->kind, HCY_GENERIC_ERROR);
  EXPECT_STREQ(record->message, "A generic error was thrown");
  EXPECT_EQ(record->details.generic.details, details);
}

TEST_F(CallsErrorRecord, ofAFailureStaysAfterASuccess) {
  const ScriptServer server = serving({errorResult("m", "i"), answer()});
  const Failure failure = failureOf(server.url());
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(context().lastFailure(), failure);
}

TEST_F(CallsErrorRecord, itsTextsStayInPlaceAcrossASuccess) {
  const ScriptServer server = serving({errorResult("m", "i", {stackFrame("f", "n", 1)}), answer()});
  failureOf(server.url());
  ErrorRecord record(library, context().get());
  const char* const text = record->details.vorten.message;
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_STREQ(text, "m");
  EXPECT_STREQ(record->details.vorten.stack[0].name, "n");
}

// Each kind has two failures, so that what an earlier one left would show.
TEST_F(CallsErrorRecord, followsEverySequenceOfTwoKinds) {
  const auto replying = [](const std::string& reply) {
    return std::vector{Connection{test::replyToEach(reply)}};
  };
  const test::UnlistenedPort port;
  const ScriptServer missing(replying(httpReply(404, "Not Found", "")));
  const ScriptServer busy(replying(httpReply(503, "Busy", "")));
  const ScriptServer one(replying(httpReply(200, "OK", errorResult("m", "i"))));
  const ScriptServer other(
      replying(httpReply(200, "OK", errorResult("n", "j", {stackFrame("f", "g", 1)}))));
  const struct {
    std::string firstUrl, secondUrl;
    Failure first, second;
  } kinds[] = {
      {missing.url(), busy.url(), httpFailure(404, "Not Found\r\n"), httpFailure(503, "Busy\r\n")},
      {one.url(), other.url(), vortenFailure("m", "i"), vortenFailure("n", "j", {{"f", "g", 1}})},
      {port.url(), "halcyon://127.0.0.1/", genericFailure(test::libcurlText(CURLE_COULDNT_CONNECT)),
       genericFailure("Unsupported protocol")}};
  for (const auto& before : kinds) {
    for (const auto& after : kinds) {
      EXPECT_EQ(failureOf(before.firstUrl), before.first);
      EXPECT_EQ(failureOf(after.secondUrl), after.second);
    }
  }
}

TEST_F(CallsErrorRecord, ofASecondServerErrorHoldsNothingOfTheFirst) {
  const ScriptServer server = serving({errorResult("first", "one", {stackFrame("f", "n", 1)}),
                                       test::bytesField(2, test::bytesField(1, "second"))});
  failureOf(server.url());
  EXPECT_EQ(failureOf(server.url()), vortenFailure("second", ""));
}

TEST_F(CallsErrorRecord, holdsA100000Frames) {
  std::vector<std::string> frames;
  for (int i = 0; i < 100'000; ++i) frames.push_back(stackFrame("deep.v", std::to_string(i), i));
  const Failure failure = failureOfResult(errorResult("m", "i", frames));
  ASSERT_EQ(failure.stack.size(), 100'000U);
  for (int i = 0; i < 100'000; ++i) {
    ASSERT_EQ(failure.stack[static_cast<std::size_t>(i)], (Frame{"deep.v", std::to_string(i), i}));
  }
}

TEST_F(CallsErrorRecord, aTextWithANulEndsThereForWhoeverReadsIt) {
  const std::string text("before\0behind", 13);
  failureOfResult(errorResult(text, text));
  ErrorRecord record(library, context().get());
  EXPECT_STREQ(record->details.vorten.message, "before");
  EXPECT_EQ(std::string(record->details.vorten.message, text.size()), text);
}

TEST_F(CallsErrorRecord, aTextThatIsNotAsciiIsHandedOnAsItCame) {
  const std::string text = "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8C\x8A";
  EXPECT_EQ(failureOfResult(errorResult(text, text, {stackFrame(text, text, 1)})),
            vortenFailure(text, text, {{text, text, 1}}));
}

TEST_F(CallsErrorRecord, aTextThatIsNotUtf8IsHandedOnAsItCame) {
  const std::string text = "caf\xE9 \xFF\xC3(\xED\xA0\x80";
  EXPECT_EQ(failureOfResult(errorResult(text, text, {stackFrame(text, text, 1)})),
            vortenFailure(text, text, {{text, text, 1}}));
}

}  // namespace
}  // namespace hcy::abi
