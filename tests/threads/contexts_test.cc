// SPDX-License-Identifier: Apache-2.0
//
// Contexts on threads of their own, against the local server. Every value tells its thread and
// its call, so that nothing can be taken for another's.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "at_once.h"
#include "support/array_value.h"
#include "support/local_server.h"

namespace hcy::abi {
namespace {

using test::atOnce;
using test::LocalServer;

constexpr int kThreads = 8;
constexpr int kCallsOfEach = 1000;

std::u16string textOf(int thread, int call) {
  const std::string text = std::to_string(thread) + "/" + std::to_string(call);
  return {text.begin(), text.end()};
}

// Arrays of several classes, a container among them.
std::vector<Value> valuesOf(int thread, int call) {
  const double id = thread * 10'000.0 + call;
  const auto small = static_cast<std::int16_t>(-call);
  const auto large = static_cast<std::uint64_t>(thread) << 60 | static_cast<std::uint64_t>(call);
  const Value text = chars({1, textOf(thread, call).size()}, textOf(thread, call));
  return {doubles({1, 3}, {id, -id, 0.1}, {0.2, id, -id}),
          numeric<std::int16_t>(hcyINT16_CLASS, {2, 1}, {small, 7}),
          numeric<std::uint64_t>(hcyUINT64_CLASS, {1, 1}, {large}),
          text,
          sparseDoubles({3, 2}, {1, 2}, {0, 1, 2}, {id, -1}),
          structure({1, 1}, {"text", "cell"}, {text, cell({1, 2}, {doubles({1, 1}, {id}), text})})};
}

// One thread's calls, on one context.
class Caller {
 public:
  Caller(const LocalServer& server, const Context& context, int thread)
      : server_(server), context_(context), thread_(thread) {}

  void call(int number) const {
    switch (number % 4) {
      case 0:
        return echo(number);
      case 1:
        return add(number);
      case 2:
        return raiseAnError(number);
      default:
        return callAFunctionThatIsNotThere();
    }
  }

 private:
  void echo(int number) const {
    const std::vector<Value> values = valuesOf(thread_, number);
    std::vector<OwnedArray> inputs;
    std::vector<const hcyArray*> handles;
    for (const Value& value : values) {
      inputs.push_back(makeArray(value));
      handles.push_back(inputs.back().get());
    }
    Outputs outputs(values.size());
    ASSERT_EQ(context_.feval(server_.url("/echo"), static_cast<std::int32_t>(values.size()),
                             outputs.data(), handles),
              0);
    for (std::size_t i = 0; i < values.size(); ++i) expectArray(outputs[i], values[i]);
  }

  void add(int number) const {
    const OwnedArray a(hcyCreateDoubleScalar(number));
    const OwnedArray b(hcyCreateDoubleScalar(thread_ * 10'000.0));
    Outputs sum(1);
    ASSERT_EQ(context_.feval(server_.url("/math/plus"), 1, sum.data(), {a.get(), b.get()}), 0);
    EXPECT_EQ(hcyGetScalar(sum[0]), thread_ * 10'000.0 + number);
  }

  void raiseAnError(int number) const {
    const std::string message = std::to_string(thread_) + "/" + std::to_string(number);
    const OwnedArray identifier(hcyCreateString("threads:test"));
    const OwnedArray text(hcyCreateString(message.c_str()));
    const OwnedArray depth(hcyCreateDoubleScalar(2));
    ASSERT_EQ(context_.feval(server_.url("/demo/fail"), 0, nullptr,
                             {identifier.get(), text.get(), depth.get()}),
              1);
    EXPECT_EQ(context_.lastFailure(),
              vortenFailure(message, "threads:test",
                            {{"demo/fail_1", "fail_1", 1}, {"demo/fail_2", "fail_2", 2}}));
  }

  void callAFunctionThatIsNotThere() const {
    ASSERT_EQ(context_.feval(server_.url("/not/there"), 0, nullptr), 1);
    EXPECT_EQ(context_.lastFailure(), httpFailure(404, "Not Found\r\n"));
  }

  const LocalServer& server_;
  const Context& context_;
  const int thread_;
};

TEST(ThreadsContexts, eightEachWithAContextOfItsOwn) {
  const LocalServer server;
  const Library library;
  atOnce(kThreads, [&](int thread) {
    const Config config(library);
    const Context context(library, config);
    const Caller caller(server, context, thread);
    for (int i = 0; i < kCallsOfEach && !::testing::Test::HasFailure(); ++i) caller.call(i);
  });
}

TEST(ThreadsContexts, twoMadeFromOneConfigurationThatIsDestroyedAtOnce) {
  const LocalServer server;
  const Library library;
  hcyClientConfig* config = nullptr;
  ASSERT_EQ(library->createConfig(&config), 0);
  hcyClientContext* contexts[2] = {};
  for (auto& context : contexts) ASSERT_EQ(library->createContext(&context, config), 0);
  library->destroyConfig(config);
  atOnce(2, [&](int thread) {
    for (int i = 0; i < 100; ++i) {
      const OwnedArray input(hcyCreateDoubleScalar(thread * 1000 + i));
      const hcyArray* const inputs[] = {input.get()};
      Outputs output(1);
      ASSERT_EQ(library->feval(contexts[thread], server.url("/echo").c_str(), 1, output.data(), 1,
                               inputs),
                0);
      EXPECT_EQ(hcyGetScalar(output[0]), thread * 1000 + i);
    }
    library->destroyContext(contexts[thread]);
  });
}

// A context belongs to no thread: it may move from one to another between its calls.
TEST(ThreadsContexts, oneThatIsHandedFromThreadToThread) {
  const LocalServer server;
  const Library library;
  const Config config(library);
  const Context context(library, config);
  for (int thread = 0; thread < kThreads; ++thread) {
    atOnce(1, [&](int) {
      const Caller caller(server, context, thread);
      for (int i = 0; i < 4; ++i) caller.call(i);
    });
  }
}

}  // namespace
}  // namespace hcy::abi
