// SPDX-License-Identifier: Apache-2.0
//
// Replies of a server that breaks its own rules: the program says so, whatever it was to show.

#include "replies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "results/exit_status.h"
#include "support/libcurl_text.h"
#include "support/pki.h"

namespace hcy::test {
namespace {

TEST(BrokenReply, fieldsThatJsonCannotHoldAreRefused) {
  const auto structWith = [](const std::string& names) {
    return resultOf({arrayOf(kStruct, {1, 1}, names)});
  };
  const std::string one = bytesField(2, doubleScalar(1));
  const Outcome twice =
      called(structWith(bytesField(1, "a") + bytesField(1, "a") + one + one), "--json");
  EXPECT_EQ(twice.output,
            R"({"kind":"output","message":"two fields of a struct have the same name"})"
            "\n");
  EXPECT_EQ(twice.status, tools::kTransportError);
  const std::string odd = structWith(bytesField(1, "\xFF\x1B[2J") + one);
  EXPECT_EQ(called(odd, "--json").output,
            R"({"kind":"output","message":"a field name is not valid UTF-8"})"
            "\n");
  EXPECT_EQ(called(odd).output, "ans: struct 1-by-1\n  \uFFFD\\u001b[2J: double 1-by-1 = 1\n");
}

TEST(BrokenReply, textsOfErrorsReachTheTerminalAsText) {
  const Outcome outcome =
      called(errorResult("bad\x1B[2J\nsecond", "a\nb", {stackFrame("f\n", "\x9B", -1)}));
  EXPECT_EQ(outcome.status, tools::kFunctionError);
  EXPECT_EQ(outcome.output,
            "hcy: bad\\u001b[2J\n     second\nidentifier: a\\nb\n  in \uFFFD, f\\n, line -1\n");
}

TEST(BrokenReply, textsOfErrorsBecomeJsonOfUtf8) {
  const Outcome outcome =
      called(errorResult("a\xFF\x1B", "b\"c", {stackFrame("f", "\x9B", 2)}), "--json");
  EXPECT_EQ(outcome.status, tools::kFunctionError);
  EXPECT_EQ(outcome.output,
            "{\"kind\":\"function\",\"message\":\"a\uFFFD\\u001b\",\"identifier\":\"b\\\"c\","
            "\"stack\":[{\"file\":\"f\",\"name\":\"\uFFFD\",\"line\":2}]}\n");
}

TEST(BrokenReply, anErrorWithoutAMessageSaysSo) {
  const Outcome outcome = called(errorResult("", "a:b", {stackFrame("f.vt", "f", 1)}));
  EXPECT_EQ(outcome.status, tools::kFunctionError);
  EXPECT_EQ(outcome.output,
            "hcy: the function failed without a message\nidentifier: a:b\n  in f, f.vt, line 1\n");
  EXPECT_EQ(called(errorResult("", "")).output, "hcy: the function failed without a message\n");
  EXPECT_EQ(called(errorResult("message", "")).output, "hcy: message\n");
}

TEST(BrokenReply, aReasonReachesTheTerminalAsText) {
  ScriptServer server(
      {Connection{readRequest(), send(httpReply(500, "No\x1B[2J", "")), waitForClose()}});
  const Outcome outcome = run(HCY_PROGRAM " call " + server.url("/f"));
  EXPECT_EQ(outcome.status, tools::kHttpError);
  EXPECT_EQ(outcome.output, "hcy: HTTP status 500 No\\u001b[2J\n");
}

TEST(BrokenReply, whatCameOfItIsSaved) {
  const std::string body = resultOf({doubleScalar(7)});
  const std::string cut = body.substr(0, body.size() - 3);
  const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size());
  const ScriptServer server({{readRequest(), send(head + "\r\n\r\n" + cut), close()}});
  const std::string file = testing::TempDir() + "cut.bin";
  const Outcome outcome = run(HCY_PROGRAM " call " + server.url("/f") + " --save-reply " + file);
  EXPECT_EQ(outcome.status, tools::kTransportError);
  EXPECT_EQ(outcome.output, "hcy: " + libcurlText(CURLE_PARTIAL_FILE) + "\n     Only the first " +
                                std::to_string(cut.size()) +
                                " bytes of the reply arrived and were saved in " + file + ".\n");
  EXPECT_EQ(contentsOf(file), cut);
  const Outcome shown = run(HCY_PROGRAM " call " + server.url("/f") + " -v");
  EXPECT_THAT(shown.output, testing::HasSubstr("< HTTP 200 OK, " + std::to_string(cut.size()) +
                                               " bytes before it breaks off\n"));
}

}  // namespace
}  // namespace hcy::test
