// SPDX-License-Identifier: Apache-2.0
//
// What a call gives: a vector of arrays that checks its indices, and lets nobody look into outputs
// that are gone.

#include <gtest/gtest.h>

#include <hcy/hcyclient.hpp>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/local_server.h"

namespace hcyclient {
namespace {

// A view of an output that is gone at the end of the expression does not compile:
// `for (double d : context.feval(url)[0].span<double>())`.
#define HCY_COMPILES(name, expression) \
  template <class T, class = void>     \
  struct name : std::false_type {};    \
  template <class T>                   \
  struct name<T, std::void_t<decltype(std::declval<T>() expression)>> : std::true_type {}
HCY_COMPILES(IndexedSpan, [0].template span<double>());
HCY_COMPILES(SpanAt, .at(0).template span<double>());
HCY_COMPILES(FirstSpan, .front().template span<double>());
HCY_COMPILES(LastSpan, .back().template span<double>());
HCY_COMPILES(IndexedImaginary, [0].template imaginary<double>());
HCY_COMPILES(IndexedRows, [0].rowIndices());
HCY_COMPILES(IndexedStarts, [0].columnStarts());
HCY_COMPILES(IndexedCopy, [0].template toVector<double>());
#undef HCY_COMPILES

static_assert(IndexedSpan<Outputs&>::value && IndexedSpan<const Outputs&>::value);
static_assert(!IndexedSpan<Outputs>::value && !IndexedSpan<const Outputs>::value);
static_assert(SpanAt<Outputs&>::value && !SpanAt<Outputs>::value);
static_assert(FirstSpan<Outputs&>::value && !FirstSpan<Outputs>::value);
static_assert(LastSpan<Outputs&>::value && !LastSpan<Outputs>::value);
static_assert(IndexedImaginary<Outputs&>::value && !IndexedImaginary<Outputs>::value);
static_assert(IndexedRows<Outputs&>::value && !IndexedRows<Outputs>::value);
static_assert(IndexedStarts<Outputs&>::value && !IndexedStarts<Outputs>::value);
static_assert(IndexedCopy<Outputs>::value);
static_assert(std::is_same_v<decltype(std::declval<Outputs>()[0]), Array>);
static_assert(std::is_nothrow_move_constructible_v<Outputs> &&
              std::is_nothrow_move_assignable_v<Outputs>);

class CppOutputs : public ::testing::Test {
 protected:
  // The numbers from 0 on.
  Outputs call(int count) {
    std::vector<Array> inputs;
    for (int i = 0; i < count; ++i) inputs.emplace_back(static_cast<double>(i));
    return context.feval(server.url("/echo"), inputs, count);
  }

  const hcy::test::LocalServer server;
  const Library library;
  Context context{Config(library)};
};

TEST_F(CppOutputs, areNotThereBeyondThoseThatWereAskedFor) {
  Outputs outputs = call(1);
  const Outputs& seen = outputs;
  EXPECT_EQ(outputs[0].scalar(), 0);
  EXPECT_THROW(outputs[1], UsageError);
  EXPECT_THROW(outputs[5], UsageError);
  EXPECT_THROW(seen[1], UsageError);
  EXPECT_THROW(outputs.at(1), UsageError);
  EXPECT_THROW(seen.at(1), UsageError);
  EXPECT_THROW(call(1)[1], UsageError);
  EXPECT_THROW(call(1).at(1), UsageError);
  EXPECT_THROW(call(0).front(), UsageError);
  EXPECT_THROW(call(0).back(), UsageError);
  const Outputs none = call(0);
  EXPECT_THROW(none.front(), UsageError);
  EXPECT_THROW(none.back(), UsageError);
  try {
    outputs[5];
    FAIL();
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "output 5 does not exist: the call returned 1");
  }
}

TEST_F(CppOutputs, areMovedOutOfWhatIsGone) {
  const Array third = call(3)[2];
  EXPECT_EQ(third.scalar(), 2);
  EXPECT_EQ(call(3).at(1).scalar(), 1);
  EXPECT_EQ(call(3).back().scalar(), 2);
  EXPECT_EQ(call(3).front().scalar(), 0);
  Outputs outputs = call(2);
  const Array moved = std::move(outputs[1]);
  EXPECT_EQ(moved.scalar(), 1);
  EXPECT_FALSE(outputs[1]);
  EXPECT_EQ(outputs.back().get(), nullptr);
  EXPECT_EQ(outputs.front().scalar(), 0);
}

TEST_F(CppOutputs, areAVector) {
  const std::vector<Array> all = call(3);
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[2].scalar(), 2);
  const std::vector<Array>& kept = call(2);
  EXPECT_EQ(kept[1].scalar(), 1);
  std::vector<Array> assigned;
  assigned = call(2);
  EXPECT_EQ(assigned[1].scalar(), 1);
  double sum = 0;
  for (const Array& array : call(4)) sum += array.scalar();
  EXPECT_EQ(sum, 6);
  // From one call to the next.
  const auto again = context.feval(server.url("/echo"), call(2), 2);
  EXPECT_EQ(again[1].scalar(), 1);
  EXPECT_EQ(again.size(), 2U);
  EXPECT_FALSE(again.empty());
  EXPECT_EQ(again.end() - again.begin(), 2);
}

TEST_F(CppOutputs, goIntoCells) {
  Array cell = Array::cells({2, 1});
  cell[0] = call(2)[1];
  EXPECT_EQ(cell[0].scalar(), 1);
  EXPECT_EQ(Array::cellOf({call(1)[0]})[0].scalar(), 0);
}

}  // namespace
}  // namespace hcyclient
