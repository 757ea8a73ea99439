// SPDX-License-Identifier: Apache-2.0
//
// What a user writes first, in C++20: each line compiles and does what it looks like. What does not
// compile is in refusals.txt.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <complex>
#include <filesystem>
#include <future>
#include <hcy/hcyclient.hpp>
#include <list>
#include <map>
#include <numeric>
#include <optional>
#include <ranges>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "support/local_server.h"

namespace hcyclient {
namespace {

static_assert(std::ranges::contiguous_range<Span<double>> && std::ranges::view<Span<double>> &&
              std::ranges::borrowed_range<Span<const double>>);
static_assert(std::input_iterator<CellIterator> && std::input_iterator<Fields::Iterator>);

double sumOf(std::span<const double> values) {
  return std::accumulate(values.begin(), values.end(), 0.0);
}
Array twice(const Array& array) { return Array(array.scalar() * 2); }

class CppSnippets : public ::testing::Test {
 protected:
  const hcy::test::LocalServer server;
  const Library library;
  Config config{library};
  Context context{config};
  const std::string plus = server.url("/math/plus"), echo = server.url("/echo");
};

TEST_F(CppSnippets, call) {
  const std::vector<double> b = {1, 2};
  Array a = 2.0;
  EXPECT_EQ(context.call(plus, 2.0, 3.0).scalar(), 5);
  EXPECT_EQ(context.call(plus, a, a), Array(4.0));
  EXPECT_EQ(context.call(plus, a, b).toVector<double>(), (std::vector<double>{3, 4}));
  EXPECT_EQ(context.call(plus, a, std::span(b)).size(), 2U);
  EXPECT_EQ(context.call(plus, a, std::array{1.0, 2.0}).size(), 2U);
  EXPECT_EQ(context.call(plus, {a, {1.0, 2.0}}).size(), 2U);
  EXPECT_EQ(context.call(plus, context.call(plus, 1.0, 1.0), 1.0).scalar<int>(), 3);
  EXPECT_EQ(context.call(std::string_view(echo), std::string_view("text")).toString(), "text");
  Array x = context.feval(echo, {a})[0];
  const Array y = context.feval(echo, {a, "b"}, 2).back();
  EXPECT_EQ(x.scalar() + static_cast<double>(y.size()), 3);
  for (const Array& output : context.feval(echo, {1.0, 2.0}, 2)) EXPECT_GT(output.scalar(), 0);
  auto [first, second] = context.feval<2>(echo, 1.0, "two");
  EXPECT_EQ(second.toString(), "two");
  std::tie(first, second) = std::pair(Array(1), Array(2));
  const auto add = context.function(plus);
  EXPECT_EQ(add(add(1.0, 1.0), 1.0).scalar(), 3);
  std::vector<Array> inputs(2);
  inputs[0] = 1.0;
  inputs[1] = Array::row({1.0, 2.0});
  EXPECT_EQ(context.call(plus, inputs).shape(), (Shape{1, 2}));
  EXPECT_EQ(twice(context.call(plus, 1.0, 1.0)).scalar(), 4);
  EXPECT_EQ(twice(3.0).scalar(), 6);
  const std::optional<Array> maybe = context.call(echo, 1.0);
  EXPECT_EQ(maybe->scalar(), 1);
}

TEST_F(CppSnippets, make) {
  EXPECT_EQ(Array(u8"Z\u00fcrich").toString(), "Z\u00fcrich");
  EXPECT_EQ(Array(std::u8string_view(u8"\u00e9")).size(), 1U);
  std::vector<float> values(6);
  std::iota(values.begin(), values.end(), 1.0F);
  EXPECT_EQ(Array(std::span<const float>(values), {2, 3}).at<float>(1, 2), 6);
  EXPECT_EQ(Array(values.data(), {static_cast<int>(values.size()), 1}), Array(values));
  EXPECT_EQ(Array(values.begin(), values.begin() + 2).size(), 2U);
  const std::list<int> squares = {1, 4, 9};
  EXPECT_EQ(Array(squares.begin(), squares.end()), Array({1, 4, 9}));
  EXPECT_EQ(Array::fromRows({{1.0, 2.0}, {3.0, 4.0}}).at<double>(1, 0), 3);
  EXPECT_EQ(Array::fromRows(std::vector<std::array<int, 2>>{{1, 2}}).columns(), 2U);
  EXPECT_EQ(Array::row(values).columns(), 6U);
  EXPECT_EQ(Array::row({true, false}).className(), "logical");
  EXPECT_TRUE(Array(std::complex<double>(0, 1)).isComplex());
  EXPECT_EQ(Array::zeros<std::complex<float>>(2, 2).className(), "single");
  EXPECT_EQ(Array(std::vector<std::string>{"a", "b"})[1].toString(), "b");
  EXPECT_EQ(Array::cellOf({1.0, "a", {1, 2}, Array::cells(1, 1)}).size(), 4U);
  EXPECT_EQ(Array::cellOf(std::vector<double>{1, 2})[1].scalar(), 2);
  EXPECT_EQ(Array::structOf({{"a", 1.0}, {std::string("b"), {1.0, 2.0}}})("b").size(), 2U);
  EXPECT_EQ(
      Array::structOf(std::unordered_map<std::string, std::string>{{"a", "b"}})("a").toString(),
      "b");
  std::vector<Entry<double>> entries;
  entries.push_back({1, 1, 2.0});
  EXPECT_EQ(Array::sparse(3, 3, entries).at<double>(1, 1), 2);
  Array matrix = Array::zeros<double>(3, 3);
  for (int i = 0; i < 3; ++i) matrix.span<double>()[matrix.index(i, i)] = 1;
  std::ranges::fill(matrix.span<double>().subspan(3, 3), 5.0);
  EXPECT_EQ(std::ranges::count(matrix.span<double>(), 5.0), 3);
}

TEST_F(CppSnippets, read) {
  const Array matrix = Array::fromRows<double>({{1, 2}, {3, 4}});
  EXPECT_EQ(sumOf(matrix.span<double>()), 10);
  std::span<const double> span = matrix.span<double>();
  EXPECT_EQ(span.back(), 4);
  EXPECT_EQ(*std::ranges::max_element(matrix.span<double>()), 4);
  double sum = 0;
  for (std::size_t j = 0; j < matrix.columns(); ++j) {
    for (std::size_t i = 0; i < matrix.rows(); ++i) sum += matrix.at<double>(i, j);
  }
  EXPECT_EQ(sum, 10);
  EXPECT_EQ(matrix.convertTo<int>().at<int>(1, 1), 4);
  const std::vector<float> floats = matrix.toVector<float>();
  EXPECT_EQ(floats[1], 3);
  EXPECT_TRUE(matrix.is<double>() && matrix == matrix.copy() && matrix != 1.0);
  const auto [rows, columns] = std::pair(matrix.rows(), matrix.columns());
  EXPECT_EQ(rows * columns, matrix.size());
  EXPECT_EQ(matrix.dimensions()[1], 2U);
  EXPECT_TRUE(std::ranges::equal(matrix.dimensions(), std::array{2, 2}));
  std::ostringstream out;
  out << matrix << '\n' << Array("a");
  EXPECT_EQ(out.str(), "double 2-by-2\n  1  2\n  3  4\nchar 1-by-1 = \"a\"");
}

TEST_F(CppSnippets, nest) {
  Array s = Array::structs({1, 2}, {"name", "list"});
  s("name") = "Ada";
  s(1, "name") = std::string("Grace");
  s("list") = Array::cells(2, 1);
  s("list")[0] = {1.0, 2.0};
  s("list")[1] = Array::structOf({{"deep", true}});
  EXPECT_TRUE(s("list")[1]("deep").scalar<bool>());
  EXPECT_EQ(s("list")[0].at<double>(1), 2);
  EXPECT_EQ(std::as_const(s)("list")[0].toVector<double>()[1], 2);
  EXPECT_EQ(s("name").value_or("nobody"), "Ada");
  EXPECT_EQ(s.value_or("age", 36), 36);
  EXPECT_EQ(s("name").size() + s("list").rows(), 5U);
  EXPECT_TRUE(s.hasField("name") && !s.hasField("age") && s("name").isText());
  const Array list = s("list");
  EXPECT_EQ(std::distance(list.begin(), list.end()), 2);
  std::map<std::string, Array> fields;
  for (auto [name, value] : s.fields()) fields.emplace(name, std::move(value));
  EXPECT_EQ(fields.at("name").toString(), "Ada");
  for (std::size_t i = 0; i < s.size(); ++i) EXPECT_FALSE(s(i, "name").toString().empty());
  s("name") = context.call(server.url("/text/upper"), s("name"));
  EXPECT_EQ(s("name").toString(), "ADA");
  EXPECT_TRUE(s("name") == "ADA" && s("list")[0] == list[0]);
  std::ostringstream out;
  out << s("name");
  EXPECT_EQ(out.str(), "char 1-by-3 = \"ADA\"");
}

TEST_F(CppSnippets, configureAndCallOnThreads) {
  using namespace std::chrono_literals;
  config.setTimeout(2min).setAuthorityFile(std::filesystem::path("ca") / "ca.pem");
  const Config strict = config;
  EXPECT_EQ(strict.timeout(), 120s);
  EXPECT_EQ(std::filesystem::path(strict.authorityFile()).filename(), "ca.pem");
  Pool pool(strict, std::thread::hardware_concurrency() + 1);
  std::vector<std::future<Array>> sums;
  for (int i = 0; i < 5; ++i) sums.push_back(pool.call(plus, 1.0 * i, 1.0));
  EXPECT_EQ(sums.back().get().scalar(), 5);
  EXPECT_EQ(pool.map(echo, std::vector<std::string>{"a", "b"})[1].toString(), "b");
  Array kept = 1.0;
  EXPECT_EQ(pool.call(plus, kept, std::move(kept)).get().scalar(), 2);
  EXPECT_EQ((Retry{3, 10ms}.run([&] { return context.call(plus, 1.0, 1.0); })), Array(2.0));
  try {
    context.call(server.url("/nothing"));
  } catch (const CallError& error) {
    EXPECT_EQ(error.url(), server.url("/nothing"));
  }
}

}  // namespace
}  // namespace hcyclient
