// SPDX-License-Identifier: Apache-2.0
//
// Calls on several threads, and further attempts at calls that a server did not take.

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <future>
#include <hcy/hcyclient.hpp>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "reply_arrays.h"
#include "support/local_server.h"
#include "support/loopback.h"
#include "support/script_server.h"

namespace hcyclient {
namespace {

// A range that can be iterated over once.
struct Numbers {
  std::istream& stream;
  std::istream_iterator<double> begin() const { return std::istream_iterator<double>(stream); }
  static std::istream_iterator<double> end() { return {}; }
};

using hcy::test::Connection;
using std::chrono::milliseconds;

class CppPool : public ::testing::Test {
 protected:
  const hcy::test::LocalServer server;
  const Library library;
  const Config config{library};
  const std::string plus = server.url("/math/plus"), echo = server.url("/echo"),
                    sleep = server.url("/demo/sleep");
};

TEST_F(CppPool, givesFutures) {
  Pool pool(config, 2);
  std::vector<Array> inputs;
  inputs.emplace_back(2.0);
  inputs.emplace_back(3.0);
  std::future<std::vector<Array>> both = pool.feval(echo, inputs, 2);
  std::future<std::vector<Array>> sum = pool.feval(plus, std::move(inputs));
  const Array kept = 1.0;
  std::future<Array> next = pool.call(plus, kept, Array(4.0));
  EXPECT_EQ(both.get()[1].scalar(), 3);
  EXPECT_EQ(sum.get()[0].scalar(), 5);
  EXPECT_EQ(next.get().scalar(), 5);
  EXPECT_EQ(pool.call(echo, "text").get().toString(), "text");
  EXPECT_THROW(pool.call(server.url("/nothing")).get(), HttpError);
  EXPECT_THROW(pool.call("ftp://nowhere").get(), UsageError);
}

TEST_F(CppPool, takesInputsInBraces) {
  Pool pool(config, 2);
  const Array kept = {1.0, 2.0};
  Array given = 3.0;
  std::future<std::vector<Array>> both = pool.feval(echo, {kept, std::move(given)}, 2);
  EXPECT_FALSE(given);
  EXPECT_EQ(both.get()[1].scalar(), 3);
  EXPECT_EQ(kept.size(), 2U);
  EXPECT_EQ(pool.feval(plus, {1.0, 2.0}).get()[0].scalar(), 3);
  EXPECT_EQ(pool.feval(echo, {"text", {1.0, 2.0}}, 2).get()[1].size(), 2U);
  EXPECT_EQ(pool.call(plus, {1.0, 2.0}).get().scalar(), 3);
  EXPECT_EQ(pool.call(plus, {{1.0, 2.0}, kept}).get().toVector<double>(),
            (std::vector<double>{2, 4}));
}

// The container shares its element, and changes while the call waits.
TEST_F(CppPool, copiesElementsOfContainers) {
  Pool pool(config, 1);
  Array cell = Array::cellOf({1.0});
  static_cast<void>(pool.call(sleep, 0.2));
  std::future<Array> one = pool.call(echo, cell[0]);
  std::future<std::vector<Array>> same = pool.feval(echo, {cell[0]});
  Array element = cell[0];
  element.span<double>()[0] = 2;
  EXPECT_EQ(cell[0].scalar(), 2);
  EXPECT_EQ(one.get().scalar(), 1);
  EXPECT_EQ(same.get()[0].scalar(), 1);
}

TEST_F(CppPool, givesAFixedNumberOfOutputs) {
  Pool pool(config, 2);
  auto decomposed = pool.feval<3>(server.url("/linalg/svd"), Array({3.0, 0.0}, {2, 1}));
  static_assert(std::is_same_v<decltype(decomposed), std::future<std::array<Array, 3>>>);
  const auto [u, s, v] = decomposed.get();
  EXPECT_DOUBLE_EQ(s.scalar(), 3);
  EXPECT_EQ((pool.feval<2>(echo, {1.0, {2.0, 3.0}}).get()[1].size()), 2U);
  EXPECT_THROW(pool.feval<2>(echo, 1.0).get(), FunctionError);
}

TEST_F(CppPool, takesAListOfArraysAsTheInputs) {
  Pool pool(config, 2);
  std::vector<Array> inputs;
  inputs.emplace_back(2.0);
  inputs.emplace_back(3.0);
  EXPECT_EQ(pool.call(plus, inputs).get().scalar(), 5);
  EXPECT_EQ((pool.feval<2>(echo, inputs).get()[1].scalar()), 3);
  EXPECT_EQ(inputs[0].scalar(), 2);
  EXPECT_EQ(pool.call(plus, std::move(inputs)).get().scalar(), 5);
}

TEST_F(CppPool, makesAFunctionAnObject) {
  Pool pool(config, 2);
  const auto add = pool.function(plus);
  EXPECT_EQ(add(1.0, 2.0).get().scalar(), 3);
  EXPECT_EQ(add({{1.0, 2.0}, 1.0}).get().toVector<double>(), (std::vector<double>{2, 3}));
  EXPECT_EQ(add.url(), plus);
  const auto same = pool.function(echo);
  EXPECT_EQ((same.feval<2>(1.0, 2.0).get()[1].scalar()), 2);
  EXPECT_EQ(same.feval({1.0, 2.0}, 2).get()[0].scalar(), 1);
  EXPECT_EQ(same.map(std::vector<double>{1, 2})[1].scalar(), 2);
}

TEST_F(CppPool, mapsInOrder) {
  Pool pool(config, 4, {2, {}});
  std::vector<double> numbers;
  for (int i = 0; i < 40; ++i) numbers.push_back(i);
  const std::vector<Array> echoed = pool.map(echo, numbers);
  ASSERT_EQ(echoed.size(), numbers.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) EXPECT_EQ(echoed[i].scalar(), numbers[i]);
  EXPECT_EQ(pool.map(echo, echoed)[39].scalar(), 39);
  EXPECT_TRUE(pool.map(echo, std::vector<double>()).empty());
  EXPECT_EQ(pool.map(echo, {1.0, 2.0})[1].scalar(), 2);
  // The server takes no cells there, and the first failure is told.
  std::vector<Array> texts;
  for (const char* text : {"a", "b"}) texts.push_back(Array::cellOf({text}));
  EXPECT_THROW(pool.map(server.url("/text/upper"), texts), FunctionError);
}

// Elements that exist only while the range is iterated over.
TEST_F(CppPool, keepsTheElementsThatARangeMakes) {
  Pool pool(config, 2);
  std::vector<double> echoed;
  for (const Array& output : pool.map(echo, Array::cellOf({1.0, 2.0, 3.0, 4.0}))) {
    echoed.push_back(output.scalar());
  }
  for (const Array& output : pool.map(echo, std::vector<bool>{true, false, true, false})) {
    echoed.push_back(output.scalar());
  }
  std::istringstream numbers("5 6 7 8");
  for (const Array& output : pool.map(std::string_view(echo), Numbers{numbers})) {
    echoed.push_back(output.scalar());
  }
  EXPECT_EQ(echoed, (std::vector<double>{1, 2, 3, 4, 1, 0, 1, 0, 5, 6, 7, 8}));
}

TEST_F(CppPool, callsOnSeveralThreadsAtOnce) {
  Pool pool(config, 4);
  const auto start = std::chrono::steady_clock::now();
  pool.map(sleep, std::vector<double>(4, 0.3));
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(1100));
}

TEST_F(CppPool, waitsForAllCallsAtItsEnd) {
  std::future<Array> last;
  {
    Pool pool(config, 1);
    static_cast<void>(pool.call(sleep, 0.1));
    last = pool.call(echo, 7.0);
  }
  ASSERT_EQ(last.wait_for(milliseconds(0)), std::future_status::ready);
  EXPECT_EQ(last.get().scalar(), 7);
}

TEST_F(CppPool, dropsCallsThatHaveNotBegun) {
  const hcy::test::ScriptServer stalling(
      {Connection{hcy::test::readRequest(), hcy::test::waitForClose()}});
  Config limited = config;
  limited.setTimeout(std::chrono::seconds(1));
  Pool pool(limited, 1, {8, {}});
  std::future<Array> running = pool.call(stalling.url());
  ASSERT_TRUE(stalling.waitForRequests(1));
  std::future<Array> waiting = pool.call(echo, 1.0);
  pool.abandon();
  EXPECT_THROW(waiting.get(), CallAbandoned);
  EXPECT_THROW(running.get(), TransportError);
  EXPECT_THROW(pool.call(echo, 1.0), UsageError);
  pool.stop();
}

TEST_F(CppPool, letsTheCallerWaitForRoom) {
  Pool pool(config, 1, {1, {}});
  const auto start = std::chrono::steady_clock::now();
  // The first one runs, the second one waits in the queue, and the third one has no room there.
  for (int i = 0; i < 3; ++i) static_cast<void>(pool.call(sleep, 0.3));
  EXPECT_GT(std::chrono::steady_clock::now() - start, milliseconds(200));
  // Whoever waits for room learns that there will be none.
  std::thread stopping([&pool] { pool.abandon(); });
  EXPECT_THROW(
      {
        for (;;) static_cast<void>(pool.call(sleep, 0.1));
      },
      UsageError);
  stopping.join();
}

TEST_F(CppPool, needsAThread) { EXPECT_THROW(Pool(config, 0), UsageError); }

// Answers with status 503 on the first connections, and with the number 2 on the next one.
std::vector<Connection> busyAtFirst(int refusals) {
  const std::string busy = hcy::test::httpReply(503, "Service Unavailable", "");
  std::vector<Connection> connections;
  for (int i = 0; i < refusals; ++i) {
    connections.push_back(
        Connection{hcy::test::readRequest(), hcy::test::send(busy), hcy::test::close()});
  }
  connections.push_back(Connection{hcy::test::replyToEach(
      hcy::test::httpReply(200, "OK", hcy::test::resultOf({test::twos({1}, 1)})))});
  return connections;
}

TEST_F(CppPool, callsAgainIfItIsTold) {
  const hcy::test::ScriptServer busy(busyAtFirst(2));
  Pool pool(config, 1, {0, {3, milliseconds(1)}});
  EXPECT_EQ(pool.call(busy.url()).get().scalar(), 2);
  EXPECT_EQ(busy.requests().size(), 3U);
  // A pause ends with the Pool.
  const hcy::test::UnlistenedPort unlistened;
  Pool patient(config, 1, {0, {2, std::chrono::hours(1)}});
  std::future<Array> refused = patient.call(unlistened.url());
  patient.abandon();
  try {
    refused.get();
    FAIL();
  } catch (const CallError& error) {
    EXPECT_NE(error.describe(), "");
  } catch (const CallAbandoned&) {  // it had not begun
  }
}

TEST_F(CppPool, retriesBareCallsToo) {
  const hcy::test::ScriptServer busy(busyAtFirst(1));
  Context context(config);
  const auto call = [&] { return context.call(busy.url()).scalar(); };
  EXPECT_THROW(Retry{}.run(call), HttpError);
  EXPECT_EQ((Retry{2, milliseconds(1)}.run(call)), 2);
  int calls = 0;
  const auto fail = [&calls](const auto& error) {
    calls = 0;
    const auto attempt = [&calls, &error] {
      ++calls;
      throw error;
    };
    try {
      Retry{3, milliseconds(1)}.run(attempt);
    } catch (const CallError&) {
    }
    return calls;
  };
  EXPECT_EQ(fail(TransportError("Couldn't connect to server")), 3);
  EXPECT_EQ(fail(HttpError(503, "")), 3);
  EXPECT_EQ(fail(TransportError("Timeout was reached")), 1);
  EXPECT_EQ(fail(HttpError(500, "")), 1);
  EXPECT_EQ(fail(FunctionError("", "", {})), 1);
}

TEST(CppRetry, endsIfItsPauseSaysSo) {
  int pauses = 0;
  const auto stop = [&pauses](milliseconds) { return ++pauses < 2; };
  const auto fail = [](const auto& error) { return [&error]() -> int { throw error; }; };
  const Retry retry{5, milliseconds(1)};
  EXPECT_THROW(retry.run(fail(HttpError(503, "")), stop), HttpError);
  EXPECT_EQ(pauses, 2);
  pauses = 0;
  EXPECT_THROW(retry.run(fail(TransportError("Couldn't connect to server")), stop), TransportError);
  EXPECT_EQ(pauses, 2);
}

}  // namespace
}  // namespace hcyclient
