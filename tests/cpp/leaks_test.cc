// SPDX-License-Identifier: Apache-2.0
//
// Whatever is thrown in or through the C++ API, nothing leaks: every allocation fails in turn, and
// blocks of memory are watched in the whole program.

#include <gtest/gtest.h>

#include <hcy/hcyclient.hpp>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "memory/sweep.h"
#include "support/failing_memory.h"
#include "support/local_server.h"

namespace hcyclient {
namespace {

using hcy::test::BlockWatch;
using hcy::test::FailingAllocation;
using hcy::test::LocalServer;

// Long enough to lie in memory of its own.
const std::string kLong = "a text that is longer than what fits into a string itself";

template <class Work>
void expectNothingHeldAfter(const Work& work) {
  work();  // what is made once for the whole program
  const BlockWatch watch;
  work();
  EXPECT_EQ(watch.list(), "");
}

// Does the work with one allocation after another failing. Which exception that is is told
// elsewhere.
template <class Work>
void failEachAllocation(const Work& work) {
  const auto attempt = [&work](const hcy::abi::Shortage& shortage) {
    const FailingAllocation failing(shortage.working, shortage.exhaustion);
    try {
      work();
    } catch (const std::exception&) {
      return failing.hasFailed();
    }
    return failing.hasFailed();
  };
  EXPECT_GT(hcy::abi::failEachAllocation(attempt), 0U);
}

// That the watch sees what it is for.
TEST(CppLeaks, wouldBeSeen) {
  const BlockWatch watch;
  hcyArray* const array = hcyCreateDoubleScalar(1.0);
  EXPECT_GT(watch.count(), 0U);
  hcyDestroyArray(array);
  EXPECT_EQ(watch.count(), 0U);
}

TEST(CppLeaks, areNotMadeByArrays) {
  failEachAllocation([] {
    Array array({1.0, 2.0, 3.0, 4.0}, {2, 2, 1});
    array.resize({4, 1, 1});
    array.toVector<std::complex<double>>();
    array.convertTo<int>().toVector<double>();
    Array::fromRows(std::vector<std::vector<double>>{{1, 2}, {3, 4}});
    array.index({3, 0, 0});
    Array text = std::string_view(kLong);
    EXPECT_EQ(text.toString(), kLong);
    Array::sparse<double>(3, 3, {{0, 0, 1.0}, {2, 2, 1.0}}).entries<double>();
  });
}

TEST(CppLeaks, areNotMadeByContainers) {
  failEachAllocation([] {
    Array s = Array::structOf({{kLong, Array::cells({2, 1})}, {"b", kLong}, {"c", {1.0, 2.0}}});
    s(kLong)[1] = Array::cellOf({1.0, kLong});
    s(kLong)[1][0] = kLong;
    s.addField("a field that is added, with a name that is longer than a string itself");
    s.fieldNames();
    const Array cell = std::vector<std::string>{kLong, "short"};
    cell.toVector<std::string>();
    for (const Array& element : cell) element.value_or(kLong);
    for (auto [name, value] : s.copy().fields()) static_cast<void>(value == cell);
    format(s);
    Array::structOf(std::vector<std::pair<std::string, std::string>>{{kLong, kLong}});
  });
}

TEST(CppLeaks, areNotMadeByErrorsOfUse) {
  expectNothingHeldAfter([] {
    EXPECT_THROW(Array::cellOf({1.0, kLong, "\xFF"}), UsageError);
    EXPECT_THROW(Array::structOf({{"a", 1.0}, {"b", Array()}}), UsageError);
    EXPECT_THROW(Array::sparse<double>(2, 2, {{0, 0, 1.0}, {2, 2, 1.0}}), UsageError);
    EXPECT_THROW(Array({1.0, 2.0}, {3, 3}), UsageError);
    EXPECT_THROW((Array::cellOf({Array::cells({1, 1})})[0][1] = 1.0), UsageError);
  });
}

TEST(CppLeaks, areNotMadeBySizesThatAreRefused) {
  expectNothingHeldAfter([] {
    const std::size_t tooMany = std::size_t{1} << 31;
    EXPECT_THROW(Array::cellOf({kLong, Array::zeros<double>(tooMany, 1)}), UsageError);
    EXPECT_THROW(Array::structOf({{kLong, 1.0}, {"b", Array::cells({tooMany})}}), UsageError);
    EXPECT_THROW(Array::sparse<double>(1, 1, tooMany), UsageError);
    EXPECT_THROW(Array::structOf({{kLong, 1.0}, {kLong, 2.0}}), UsageError);
  });
}

TEST(CppLeaks, areNotMadeByCalls) {
  const LocalServer server;
  const std::string echo = server.url("/echo"), fail = server.url("/demo/fail");
  const std::string nothing = server.url("/nothing"), nowhere = "http://127.0.0.2:1/";
  const Library library;
  failEachAllocation([&] {
    Context context{Config(library)};
    std::vector<Array> many(12);
    for (Array& input : many) input = Array(1.0);
    context.feval(echo, many, 12);
    context.feval(echo, {kLong, 2.0, {1.0, 2.0}}, 3);
    context.call(std::string_view(echo), kLong, std::vector<double>{1.0});
    context.feval<2>(echo, kLong, kLong);
    context.function(echo)(kLong);
  });
  failEachAllocation([&] { Context(Config(library)).feval(fail, {kLong, kLong, 3.0}, 0); });
  failEachAllocation([&] { Context(Config(library)).feval(nothing, {kLong}, 1); });
  failEachAllocation([&] { Context(Config(library)).feval(nowhere, {kLong}, 1); });
  // More outputs than arrive.
  failEachAllocation([&] {
    Context(Config(library)).feval(server.url("/math/plus"), {1.0, 2.0}, 9);
  });
}

template <class Read>
void expectIncomplete(Read read) {
  try {
    read();
  } catch (const IncompleteReply&) {
    return;
  }
  throw std::logic_error("it was read");
}

// Dimensions that are too large stay set, which leaves an array with fewer elements than they say.
Array withTooFewElements(Array array) {
  const std::size_t shape[] = {std::size_t{1} << 31, 1};
  EXPECT_EQ(hcySetDimensions(array.get(), shape, 2), 1);
  return array;
}

TEST(CppLeaks, areNotMadeByIncompleteArrays) {
  failEachAllocation([] {
    Array cell = withTooFewElements(
        Array::cellOf({withTooFewElements(std::vector<std::complex<double>>(2)), kLong}));
    expectIncomplete([&] { cell[0].get(); });
    expectIncomplete([&] { cell[2].get(); });
    expectIncomplete([&] { cell[2] = kLong; });
    expectIncomplete([&] { cell.toVector<std::string>(); });
    expectIncomplete([&] { cell.resize({3, 1}); });
    cell[0] = kLong;
  });
}

// The library itself would only leave the setting as it was.
TEST(CppSettings, areNotForgottenForLackOfMemory) {
  const Library library;
  Config config(library);
  const std::string file = kLong;
  const FailingAllocation failing(0);
  EXPECT_THROW(config.setAuthorityFile(file), std::bad_alloc);
  EXPECT_TRUE(failing.hasFailed());
}

TEST(CppLeaks, areNotMadeBySettings) {
  const Library library;
  failEachAllocation([&] {
    Config config(library);
    config.setAuthorityFile(kLong.c_str()).setPrivateKeyPassPhrase(kLong.c_str());
    const Config copy = config;
    Context context(copy);
    Context moved = std::move(context);
  });
}

}  // namespace
}  // namespace hcyclient
