// SPDX-License-Identifier: Apache-2.0
//
// Replies of a server that breaks its own rules: the program says so, whatever it was to show.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <string>

#include "examples/outcome.h"
#include "exit_status.h"
#include "support/script_server.h"
#include "support/script_steps.h"
#include "support/wire_bytes.h"

namespace hcy::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// What a call prints whose reply has this body.
Outcome called(const std::string& body, const std::string& options = "") {
  ScriptServer server(
      {Connection{readRequest(), send(httpReply(200, "OK", body)), waitForClose()}});
  return run(HCY_PROGRAM " call " + server.url("/f") + " " + options);
}

std::string dimensions(std::initializer_list<std::uint64_t> sizes) {
  std::string packed;
  for (const std::uint64_t size : sizes) packed += varint(size);
  return bytesField(2, packed);
}

// Arrays that say they have many elements, and have none.
const std::string kDouble = numberField(1, 9) + dimensions({2147483647, 1}) + bytesField(25, "");
const std::string kTooLargeToCount =
    numberField(1, 9) + dimensions({1U << 31U, 1U << 31U}) + bytesField(25, "");
const std::string kCell = numberField(1, 13) + dimensions({1, 1000000}) + bytesField(28, "");
const std::string kStruct =
    numberField(1, 12) + dimensions({1U << 31U, 1U << 31U}) + bytesField(29, "");
const std::string kSparse = numberField(1, 14) + dimensions({2, 2000000000}) + bytesField(30, "");

const std::string kLargerThanReply =
    "hcy: an output says that it is larger than a reply of 67108864 bytes (--max-reply) can be\n";

TEST(BrokenReply, anArrayThatIsLargerThanTheReplyIsRefused) {
  for (const std::string& array : {kDouble, kTooLargeToCount, kStruct, kSparse}) {
    for (const std::string options : {"", "--json"}) {
      const Outcome outcome = called(resultOf({array}), options);
      EXPECT_EQ(outcome.status, tools::kTransportError);
      EXPECT_EQ(outcome.output, kLargerThanReply);
    }
  }
  EXPECT_THAT(called(resultOf({kCell})).output, HasSubstr("did not come"));
}

TEST(BrokenReply, manyArraysThatTogetherAreLargerThanTheReplyAreRefused) {
  std::string cells;
  const std::string large = numberField(1, 9) + dimensions({4000000, 1}) + bytesField(25, "");
  for (int i = 0; i < 1000; ++i) cells += bytesField(1, large);
  const std::string cell = numberField(1, 13) + dimensions({1, 1000}) + bytesField(28, cells);
  const Outcome outcome = called(resultOf({cell}));
  EXPECT_EQ(outcome.output, kLargerThanReply);
}

TEST(BrokenReply, fewerElementsThanTheDimensionsSayAreMadeUpWithZeros) {
  const std::string array = numberField(1, 9) + dimensions({1, 3}) + bytesField(25, "");
  EXPECT_EQ(called(resultOf({array}), "--json").output, "[0,0,0]\n");
}

TEST(BrokenReply, anArrayWithoutDimensionsIsShown) {
  const std::string array = numberField(1, 9);
  EXPECT_EQ(called(resultOf({array})).output, "ans: double 0-by-0\n");
  EXPECT_EQ(called(resultOf({array}), "--json").output, "[]\n");
}

TEST(BrokenReply, fieldsThatJsonCannotHoldAreRefused) {
  const auto structWith = [](const std::string& names) {
    return resultOf({numberField(1, 12) + dimensions({1, 1}) + bytesField(29, names)});
  };
  const std::string one = bytesField(2, doubleScalar(1));
  const Outcome twice =
      called(structWith(bytesField(1, "a") + bytesField(1, "a") + one + one), "--json");
  EXPECT_EQ(twice.output, "hcy: two fields of a struct have the same name\n");
  EXPECT_EQ(twice.status, tools::kTransportError);
  const std::string odd = structWith(bytesField(1, "\xFF\x1B[2J") + one);
  EXPECT_EQ(called(odd, "--json").output, "hcy: the name of a field is not UTF-8\n");
  EXPECT_EQ(called(odd).output, "ans: struct 1-by-1\n  \uFFFD\\u001b[2J: double 1-by-1 = 1\n");
}

TEST(BrokenReply, textsOfErrorsReachTheTerminalAsText) {
  const Outcome outcome =
      called(errorResult("bad\x1B[2J\nsecond", "a\nb", {stackFrame("f\n", "\x9B", -1)}));
  EXPECT_EQ(outcome.status, tools::kFunctionError);
  EXPECT_EQ(outcome.output,
            "hcy: bad\\u001b[2J\n     second\nidentifier: a\\nb\n  in \uFFFD, f\\n, line -1\n");
}

TEST(BrokenReply, aReasonReachesTheTerminalAsText) {
  ScriptServer server(
      {Connection{readRequest(), send(httpReply(500, "No\x1B[2J", "")), waitForClose()}});
  const Outcome outcome = run(HCY_PROGRAM " call " + server.url("/f"));
  EXPECT_EQ(outcome.status, tools::kHttpError);
  EXPECT_EQ(outcome.output, "hcy: HTTP status 500 No\\u001b[2J\n");
}

}  // namespace
}  // namespace hcy::test
