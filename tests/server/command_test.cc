// SPDX-License-Identifier: Apache-2.0
//
// Functions that commands answer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "calls.h"
#include "http_client.h"
#include "observation.h"
#include "support/pki.h"

namespace hcy::test {
namespace {

using std::chrono::steady_clock;
using testing::HasSubstr;
using testing::StartsWith;

class Commands : public testing::Test {
 protected:
  // A command that runs this shell script.
  std::string script(const std::string& text) {
    const auto file = temporary_.file("script" + std::to_string(++scripts_));
    std::ofstream(file) << text;
    return "f=exec sh " + file;
  }
  std::vector<std::string> lines(const std::string& name) const {
    std::ifstream stream(temporary_.file(name));
    std::vector<std::string> all;
    for (std::string line; std::getline(stream, line);) all.push_back(line);
    return all;
  }
  std::string file(const std::string& name) const { return temporary_.file(name); }

  const TestDirectory temporary_;
  int scripts_ = 0;
};

// Answers every call by the same line.
std::string always(const std::string& answer) {
  return "while read -r line; do echo '" + answer + "'; done\n";
}

client::VORTEN_Error errorOfCall(const ServerProcess& server,
                                 const std::vector<VORTEN_Array>& arguments = {}, int nargout = 1) {
  return call(server, "/f", nargout, arguments).error();
}

TEST_F(Commands, GetALineAndAnswerALine) {
  const LocalServer server(
      {"--function", script("while read -r line; do printf '%s\\n' \"$line\" >> " + file("calls") +
                            "; echo '{\"outputs\":[[1,2],\"text\"]}'; done\n")});
  const auto results = outputs(server, "/f", 2, {scalar(3), chars(u"a\nb"), doubles({2, 0}, {})});
  EXPECT_EQ(realPart(results[0]), (std::vector<double>{1, 2}));
  EXPECT_EQ(textOf(results[1]), u"text");
  // One more than is wanted is left out.
  EXPECT_EQ(outputs(server, "/f", 1, {}).size(), 1U);
  EXPECT_EQ(lines("calls"),
            (std::vector<std::string>{
                R"({"function":"f","nargout":2,"inputs":[3,"a\nb",{"$double":[],"$shape":[2,0]}]})",
                R"({"function":"f","nargout":1,"inputs":[]})"}));
}

TEST_F(Commands, TakeAndGiveEveryClass) {
  const LocalServer server(
      {"--function", script("while read -r line; do line=${line#*'\"inputs\":'}; "
                            "printf '%s\\n' '{\"outputs\":'\"$line\"; done\n")});
  int compared = 0;
  for (const auto& entry : std::filesystem::directory_iterator(HCY_GOLDEN_FILES)) {
    const std::string name = entry.path().filename().string();
    if (!name.ends_with(".request.bin")) continue;
    std::ifstream stream(entry.path(), std::ios::binary);
    VORTEN_Params params;
    ASSERT_TRUE(params.ParseFromIstream(&stream));
    params.set_nargout(params.rhs_size());
    const std::string body = params.SerializeAsString();
    const HttpReply echoed = sendRequest(server.url("/echo"), body);
    const HttpReply answered = sendRequest(server.url("/f"), body);
    VORTEN_Result expected, given;
    ASSERT_TRUE(expected.ParseFromString(echoed.body));
    ASSERT_TRUE(given.ParseFromString(answered.body));
    ASSERT_FALSE(given.has_error()) << name << given.error().message();
    ASSERT_EQ(given.lhs_size(), expected.lhs_size()) << name;
    for (int i = 0; i < given.lhs_size(); ++i) {
      EXPECT_EQ(given.lhs(i).type(), expected.lhs(i).type()) << name;
      EXPECT_EQ(dimensionsOf(given.lhs(i)), dimensionsOf(expected.lhs(i))) << name;
      ++compared;
    }
  }
  EXPECT_GT(compared, 15);
}

TEST_F(Commands, RaiseErrors) {
  const LocalServer server(
      {"--function", script(always(R"({"error":{"identifier":"my:error","message":"No luck.",)"
                                   R"("stack":[{"file":"f.sh","name":"f","line":7}]}})"))});
  const auto error = errorOfCall(server);
  EXPECT_EQ(error.identifier(), "my:error");
  EXPECT_EQ(error.message(), "No luck.");
  ASSERT_EQ(error.stack_size(), 1);
  EXPECT_EQ(error.stack(0).line(), 7);
}

TEST_F(Commands, AreStartedAgainWhenTheyDie) {
  // Answers one call, then dies in the next one.
  const std::string answer = "read -r line; echo '{\"outputs\":[1]}'; read -r line; ";
  for (const auto& [end, text] :
       std::vector<std::pair<std::string, std::string>>{{"exit 3", "exit status 3."},
                                                        {"exit 137", "exit status 137 (Killed)."},
                                                        {"kill -9 $$", "Killed"},
                                                        {"exec >&-; sleep 60", "closed"}}) {
    const LocalServer server({"--function", script(answer + end + "\n")});
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(outputs(server, "/f", 1, {}).size(), 1U);
      const auto error = errorOfCall(server);
      EXPECT_EQ(error.identifier(), "halcyon:function:ended");
      EXPECT_THAT(error.message(), HasSubstr(text));
    }
  }
  // One that has died between two calls does not let the second one fail.
  const LocalServer server({"--function", script("read -r line; echo '{\"outputs\":[1]}'\n")});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(outputs(server, "/f", 1, {}).size(), 1U);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

TEST_F(Commands, HoldNoConnectionOpen) {
  const LocalServer server({"--function", script("ls -l /proc/$$/fd | grep -c socket: > " +
                                                 file("sockets") + "; read -r line; exit 3\n")});
  // The second one is started while there are connections.
  for (int i = 0; i < 2; ++i) EXPECT_EQ(errorOfCall(server).identifier(), "halcyon:function:ended");
  EXPECT_EQ(lines("sockets"), (std::vector<std::string>{"0"}));
}

TEST_F(Commands, MayWriteAnything) {
  for (const auto& [answer, text] : std::vector<std::pair<std::string, std::string>>{
           {"garbage", "bad JSON"},
           {"[]", "not an object"},
           {"{}", "neither outputs nor error"},
           {R"({"outputs":[]})", "0 elements"},
           {R"({"outputs":1})", "not a list"},
           {R"({"outputs":[{"$int8":300}]})", ""},
           {R"({"error":5})", "not an object"},
           {R"({"error":{"message":5}})", "not a string"},
           {R"({"error":{"stack":[{"line":99999999999}]}})", "out of range"}}) {
    const LocalServer server({"--function", script(always(answer))});
    for (int i = 0; i < 2; ++i) {
      const auto error = errorOfCall(server);
      EXPECT_EQ(error.identifier(), "halcyon:function:answer") << answer;
      EXPECT_THAT(error.message(), HasSubstr(text));
    }
  }
  const LocalServer twice({"--function", script(always("{\"outputs\":[1]}\n{\"outputs\":[2]}"))});
  EXPECT_THAT(errorOfCall(twice).message(), HasSubstr("more than one line"));
  const LocalServer unasked({"--function", script("echo early; " + always("{\"outputs\":[1]}"))});
  // It is taken for the answer, or comes together with it.
  EXPECT_THAT(errorOfCall(unasked).identifier(), StartsWith("halcyon:function:"));
  EXPECT_EQ(sendRequest(unasked.url("/echo"), "").status, 200);
}

TEST_F(Commands, MayWriteALineWithoutEnd) {
  const LocalServer server({"--function", script("head -c 1000000000 /dev/zero; sleep 60\n")});
  EXPECT_THAT(errorOfCall(server).message(), HasSubstr("64 MiB"));
#ifndef HCY_SANITIZED
  EXPECT_LT(peakMemory(server.pid()), std::size_t{300} << 20);
#endif
}

TEST_F(Commands, HaveATimeToAnswer) {
  const LocalServer server({"--function", script("sleep 60\n"), "--function-timeout", "0.2"});
  EXPECT_THAT(errorOfCall(server).message(), HasSubstr("in time"));
  // One that reads nothing does not block what is written to it.
  EXPECT_THAT(
      errorOfCall(server, {doubles({1, 100000}, std::vector<double>(100000, 1.25))}).message(),
      HasSubstr("in time"));
}

TEST_F(Commands, WorkSideBySide) {
  const LocalServer server(
      {"--function", script("while read -r line; do sleep 0.5; echo '{\"outputs\":[1]}'; done\n"),
       "--workers", "4"});
  const auto begin = steady_clock::now();
  {
    std::vector<std::jthread> clients;
    for (int i = 0; i < 4; ++i) {
      clients.emplace_back([&] { EXPECT_EQ(outputs(server, "/f", 1, {}).size(), 1U); });
    }
  }
  EXPECT_LT(steady_clock::now() - begin, std::chrono::milliseconds(1900));
}

TEST_F(Commands, EndWithTheServer) {
  LocalServer server({"--function",
                      script("echo $$ > " + file("pid") + "; trap '' TERM; sleep 60\n"),
                      "--function-timeout", "60"});
  ASSERT_TRUE(waitUntil([&] { return !lines("pid").empty(); }));
  const pid_t pid = std::stoi(lines("pid")[0]);
  RawConnection waiting(server.port());
  waiting.send("POST /f HTTP/1.1\r\nHost: a\r\nContent-Length: 0\r\n\r\n");
  EXPECT_EQ(server.stop(SIGTERM), 0);
  EXPECT_TRUE(waitUntil([&] { return ::kill(pid, 0) != 0; }));
}

TEST_F(Commands, AreListedAndComeFirst) {
  const LocalServer server({"--function", "echo=exec sh " + file("none"), "--function",
                            script(always("{\"outputs\":[5]}"))});
  EXPECT_THAT(sendRequest(server.url("/"), "", {.method = "GET"}).body, HasSubstr("/f   "));
  EXPECT_EQ(call(server, "/echo", 1, {scalar(1)}).error().identifier(), "halcyon:function:ended");
  EXPECT_EQ(sendRequest(server.url("/f"), "", {.method = "GET"}).status, 405);
  EXPECT_EQ(sendRequest(server.url("/f"), "broken").status, 200);
  for (const char* wrong : {"f", "=x", "f=", "/f=x"}) {
    EXPECT_THROW(LocalServer({"--function", wrong}), std::runtime_error) << wrong;
  }
}

VORTEN_Array cellOf(const std::vector<VORTEN_Array>& elements) {
  VORTEN_Array cell;
  cell.set_type(VORTEN_Array::CELL);
  for (const std::uint64_t extent : {std::uint64_t{1}, std::uint64_t{elements.size()}}) {
    cell.add_dimension(extent);
  }
  for (const VORTEN_Array& element : elements) *cell.mutable_cell()->add_elements() = element;
  return cell;
}

class Workers : public testing::Test {
 protected:
  // What the server hands to a worker that sends these.
  VORTEN_Array nextCall(const std::vector<VORTEN_Array>& sent) const {
    const VORTEN_Result result = call(server_, "/work", 1, sent);
    EXPECT_FALSE(result.has_error()) << result.error().message();
    return result.lhs_size() == 1 ? result.lhs(0) : VORTEN_Array();
  }

  const LocalServer server_{{"--function", "f=@", "--worker-path", "work"}};
};

TEST_F(Workers, GetCallsAndHandOverOutputs) {
  VORTEN_Array next;
  const std::jthread worker([&] {
    next = nextCall({scalar(0)});
    // Waits for a call that does not come.
    RawConnection last(server_.port());
    const std::string body = serializedParams(
        1, {next.cell().elements(0), chars(u"outputs"), chars(u"done"), scalar(2)});
    last.send("POST /work HTTP/1.1\r\nHost: a\r\nContent-Length: " + std::to_string(body.size()) +
              "\r\n\r\n" + body);
    EXPECT_FALSE(last.hasInput());
  });
  const auto given = outputs(server_, "/f", 1, {scalar(5), chars(u"x")});
  EXPECT_EQ(textOf(given[0]), u"done");
  ASSERT_EQ(next.cell().elements_size(), 5);
  EXPECT_EQ(textOf(next.cell().elements(1)), u"f");
  EXPECT_EQ(realPart(next.cell().elements(2)), (std::vector<double>{1}));
  EXPECT_EQ(realPart(next.cell().elements(3)), (std::vector<double>{5}));
  EXPECT_EQ(textOf(next.cell().elements(4)), u"x");
  expectWellFormed(next);
}

TEST_F(Workers, RaiseErrors) {
  const std::jthread worker([&] {
    const VORTEN_Array next = nextCall({scalar(0)});
    RawConnection last(server_.port());
    const std::string body =
        serializedParams(1, {next.cell().elements(0), chars(u"error"), chars(u"a:b"), chars(u"No."),
                             cellOf({chars(u"file"), chars(u"name"), scalar(3)})});
    last.send("POST /work HTTP/1.1\r\nHost: a\r\nContent-Length: " + std::to_string(body.size()) +
              "\r\n\r\n" + body);
    EXPECT_FALSE(last.hasInput());
  });
  const auto error = errorOfCall(server_);
  EXPECT_EQ(error.identifier(), "a:b");
  EXPECT_EQ(error.message(), "No.");
  ASSERT_EQ(error.stack_size(), 1);
  EXPECT_EQ(error.stack(0).line(), 3);
}

TEST(WorkersThatGoAway, KeepNothingForLong) {
  const LocalServer server(
      {"--function", "f=@", "--worker-path", "work", "--function-timeout", "0.3"});
  // Nobody asks for the call, or nobody answers it.
  EXPECT_EQ(errorOfCall(server).identifier(), "halcyon:function:ended");
  {
    const std::jthread worker([&] { call(server, "/work", 1, {scalar(0)}); });
    EXPECT_EQ(errorOfCall(server).identifier(), "halcyon:function:ended");
  }
  const VORTEN_Result none = call(server, "/work", 1, {scalar(0)});
  ASSERT_EQ(none.lhs_size(), 1);
  EXPECT_EQ(dimensionsOf(none.lhs(0)), (Dimensions{1, 0}));
}

TEST_F(Workers, MaySendAnything) {
  EXPECT_EQ(sendRequest(server_.url("/work"), "broken").status, 400);
  for (const std::string& body :
       {std::string(), serializedParams(1, {chars(u"x")}), serializedParams(1, {scalar(1)}),
        serializedParams(1, {doubles({3, 3}, {1})})}) {
    VORTEN_Result result;
    const HttpReply reply = sendRequest(server_.url("/work"), body);
    ASSERT_TRUE(result.ParseFromString(reply.body));
    EXPECT_TRUE(result.has_error()) << body;
  }
  const std::vector<std::vector<VORTEN_Array>> answers = {
      {scalar(1)},
      {chars(u"outputs")},
      {chars(u"error")},
      {chars(u"error"), scalar(1), scalar(2)},
      {chars(u"error"), chars(u"a"), chars(u"b"), scalar(1)}};
  const std::jthread worker([&] {
    std::vector<VORTEN_Array> sent = {scalar(0)};
    for (const auto& answer : answers) {
      sent = {nextCall(sent).cell().elements(0)};
      sent.insert(sent.end(), answer.begin(), answer.end());
    }
    RawConnection last(server_.port());
    const std::string body = serializedParams(1, sent);
    last.send("POST /work HTTP/1.1\r\nHost: a\r\nContent-Length: " + std::to_string(body.size()) +
              "\r\n\r\n" + body);
    EXPECT_FALSE(last.hasInput());
  });
  for (const auto& answer : answers) {
    EXPECT_NE(errorOfCall(server_).identifier(), "") << answer.size();
  }
  EXPECT_THROW(LocalServer({"--function", "f=@"}), std::runtime_error);
}

}  // namespace
}  // namespace hcy::test
