// SPDX-License-Identifier: Apache-2.0
//
// The ways to write a call: one output, a fixed number of them, and a function as an object.

#include <gtest/gtest.h>

#include <array>
#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/local_server.h"

namespace hcyclient {
namespace {

// A function does not outlive its context, and a place in a container is not kept.
template <class C, class = void>
struct GivesFunctions : std::false_type {};
template <class C>
struct GivesFunctions<C, std::void_t<decltype(std::declval<C>().function(""))>> : std::true_type {};
static_assert(GivesFunctions<Context&>::value && !GivesFunctions<Context>::value);

class CppCallForms : public ::testing::Test {
 protected:
  const hcy::test::LocalServer server;
  const Library library;
  Context context{Config(library)};
  const std::string plus = server.url("/math/plus"), echo = server.url("/echo");
};

TEST_F(CppCallForms, giveOneOutput) {
  const Array a = 2.0;
  Array sum = context.call(plus, a, 3.0);
  EXPECT_EQ(sum.scalar(), 5);
  sum = context.call(plus, sum, std::vector<double>{1, 2});
  EXPECT_EQ(sum.toVector<double>(), (std::vector<double>{6, 7}));
  EXPECT_EQ(context.call(plus, {{1.0, 2.0}, a}).toVector<double>(), (std::vector<double>{3, 4}));
  EXPECT_THROW(context.call(echo), FunctionError);
}

TEST_F(CppCallForms, takeEachKindOfInput) {
  Array s = Array::structOf({{"name", "Ada"}, {"list", Array::cellOf({1.0, true})}});
  EXPECT_EQ(context.call(echo, s("name")).toString(), "Ada");
  EXPECT_EQ(context.call(echo, s("list")[1]).className(), "logical");
  EXPECT_EQ(context.call(echo, "text").toString(), "text");
  EXPECT_EQ(context.call(echo, std::string("text")).toString(), "text");
  EXPECT_EQ(context.call(echo, std::move(s))("name").toString(), "Ada");
  EXPECT_EQ(context.call(echo, std::u8string(u8"Z\u00fcrich")).toString(), "Z\xC3\xBCrich");
  EXPECT_EQ(context.call(echo, u8"Z\u00fcrich").toString(), "Z\xC3\xBCrich");
  int number = 7;
  EXPECT_EQ(context.call(echo, number).className(), "int32");
  EXPECT_EQ(context.call(echo, context.call(echo, number)).scalar(), 7);
}

TEST_F(CppCallForms, takeAListOfArraysAsTheInputs) {
  std::vector<Array> inputs;
  inputs.emplace_back(2.0);
  inputs.emplace_back(3.0);
  EXPECT_EQ(context.call(plus, inputs).scalar(), 5);
  EXPECT_EQ(context.call(plus, std::as_const(inputs)).scalar(), 5);
  EXPECT_EQ(context.call(plus, context.feval(echo, inputs, 2)).scalar(), 5);
  EXPECT_EQ((context.feval<2>(echo, inputs)[1].scalar()), 3);
}

TEST_F(CppCallForms, giveAFixedNumberOfOutputs) {
  const auto [u, s, v] = context.feval<3>(server.url("/linalg/svd"), Array({3.0, 0.0}, {2, 1}));
  EXPECT_EQ(u.rows(), 2U);
  EXPECT_DOUBLE_EQ(s.scalar(), 3);
  EXPECT_EQ(v.size(), 1U);
  static_assert(std::is_same_v<decltype(context.feval<2>(echo)), std::array<Array, 2>>);
  EXPECT_TRUE(context.feval<0>(echo, 1.0).empty());
  EXPECT_EQ((context.feval<2>(echo, {{1.0, 2.0}, u})[0].size()), 2U);
  EXPECT_THROW(context.feval<2>(echo, 1.0), FunctionError);
}

TEST_F(CppCallForms, takeEachKindOfString) {
  const std::string longer = plus + "/and/more";
  const std::string_view view = std::string_view(longer).substr(0, plus.size());
  EXPECT_EQ(context.call(view, 1.0, 2.0).scalar(), 3);
  EXPECT_EQ(context.call(plus.c_str(), 1.0, 2.0).scalar(), 3);
  EXPECT_EQ(context.feval(view, {1.0, 2.0})[0].scalar(), 3);
  EXPECT_THROW(context.call(std::string_view("http://a\0b", 10)), UsageError);
  EXPECT_THROW(context.call(std::string("http://a\0b", 10)), UsageError);
  EXPECT_THROW(context.call(static_cast<const char*>(nullptr)), UsageError);
  Array s = Array::structOf({{"name", "Ada"}});
  const std::string_view name = std::string_view("names").substr(0, 4);
  EXPECT_EQ(s(name).toString(), "Ada");
  s(0, name) = "Grace";
  EXPECT_EQ(std::as_const(s)(name).toString(), "Grace");
  EXPECT_TRUE(s.hasField(name));
}

TEST_F(CppCallForms, makeAFunctionAnObject) {
  const auto add = context.function(plus);
  EXPECT_EQ(add(1.0, 2.0).scalar(), 3);
  EXPECT_EQ(add({{1.0, 2.0}, 1.0}).toVector<double>(), (std::vector<double>{2, 3}));
  EXPECT_EQ(add.feval({1.0, 2.0})[0].scalar(), 3);
  std::vector<Array> inputs;
  inputs.emplace_back(1.0);
  inputs.emplace_back(2.0);
  EXPECT_EQ(add.feval(inputs)[0].scalar(), 3);
  EXPECT_EQ(add.feval<1>({1.0, 2.0})[0].scalar(), 3);
  EXPECT_EQ(add.url(), plus);
  const auto svd = context.function(server.url("/linalg/svd"));
  const auto [u, s] = svd.feval<2>(2.0);
  EXPECT_EQ(s.scalar(), 2);
  EXPECT_EQ(u.size(), 1U);
}

}  // namespace
}  // namespace hcyclient
