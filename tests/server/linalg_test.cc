// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "calls.h"

namespace hcy::test {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

constexpr double kTolerance = 1e-12;

auto near(const std::vector<double>& values) {
  return Pointwise(testing::DoubleNear(kTolerance), values);
}

// a is m-by-k, b is k-by-n.
std::vector<double> product(const VORTEN_Array& a, const VORTEN_Array& b) {
  const std::size_t m = a.dimension(0), k = a.dimension(1), n = b.dimension(1);
  const auto left = realPart(a), right = realPart(b);
  std::vector<double> result(m * n);
  for (std::size_t j = 0; j < n; ++j) {
    for (std::size_t l = 0; l < k; ++l) {
      for (std::size_t i = 0; i < m; ++i) result[i + j * m] += left[i + l * m] * right[l + j * k];
    }
  }
  return result;
}

VORTEN_Array transposed(const VORTEN_Array& a) {
  const std::size_t m = a.dimension(0), n = a.dimension(1);
  const auto values = realPart(a);
  std::vector<double> result(m * n);
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < n; ++j) result[j + i * n] = values[i + j * m];
  }
  return doubles({n, m}, result);
}

const VORTEN_Array kTall = doubles({3, 2}, {1, 2, 3, 4, 5, 6.5});

TEST(Solve, FindsTheSolution) {
  const LocalServer server;
  const auto x = outputs(server, "/linalg/solve", 1,
                         {doubles({2, 2}, {2, 1, 1, 3}), doubles({2, 2}, {3, 5, 1, 0})})[0];
  expectWellFormed(x);
  EXPECT_EQ(dimensionsOf(x), (Dimensions{2, 2}));
  EXPECT_THAT(realPart(x), near({0.8, 1.4, 0.6, -0.2}));
}

TEST(Solve, ExchangesRows) {
  const LocalServer server;
  const auto x = outputs(server, "/linalg/solve", 1,
                         {doubles({2, 2}, {0, 1, 1, 0}), doubles({2, 1}, {7, 8})})[0];
  EXPECT_THAT(realPart(x), near({8, 7}));
}

TEST(Solve, SolvesNothing) {
  const LocalServer server;
  const auto x = outputs(server, "/linalg/solve", 1, {doubles({0, 0}, {}), doubles({0, 2}, {})})[0];
  EXPECT_EQ(dimensionsOf(x), (Dimensions{0, 2}));
}

TEST(Solve, NamesTheShapesThatDoNotFit) {
  const LocalServer server;
  const auto result =
      call(server, "/linalg/solve", 1, {doubles({2, 2}, {1, 0, 0, 1}), doubles({1, 2}, {1, 1})});
  EXPECT_EQ(result.error().message(), "A is 2-by-2, but B is 1-by-2.");
}

TEST(Solve, RefusesWrongArguments) {
  const LocalServer server;
  const auto error = [&server](const VORTEN_Array& a, const VORTEN_Array& b) {
    return errorOf(server, "/linalg/solve", 1, {a, b});
  };
  const auto b = doubles({2, 1}, {1, 1});
  EXPECT_EQ(error(doubles({2, 2}, {1, 2, 2, 4}), b), "halcyon:matrix:singular");
  EXPECT_EQ(error(doubles({2, 2}, {0, 0, 0, 0}), b), "halcyon:matrix:singular");
  EXPECT_EQ(error(doubles({2, 2}, {1, 1, 1, 1 + 1e-16}), b), "halcyon:matrix:singular");
  EXPECT_EQ(error(kTall, b), "halcyon:argument:size");
  EXPECT_EQ(error(doubles({3, 3}, std::vector<double>(9, 1)), b), "halcyon:argument:size");
  EXPECT_EQ(error(doubles({2, 2, 2}, std::vector<double>(8, 1)), b), "halcyon:argument:size");
  EXPECT_EQ(error(complexDoubles({1, 1}, {1}, {1}), scalar(1)), "halcyon:argument:value");
  EXPECT_EQ(error(scalar(std::numeric_limits<double>::infinity()), scalar(1)),
            "halcyon:argument:value");
  EXPECT_EQ(error(scalar(1), chars(u"a")), "halcyon:argument:class");
  EXPECT_EQ(errorOf(server, "/linalg/solve", 1, {scalar(1)}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/linalg/solve", 2, {scalar(1), scalar(1)}), "halcyon:argument:count");
}

TEST(Svd, GivesTheSingularValues) {
  const LocalServer server;
  const auto values = outputs(server, "/linalg/svd", 1, {doubles({2, 2}, {3, 4, 0, 5})})[0];
  expectWellFormed(values);
  EXPECT_EQ(dimensionsOf(values), (Dimensions{2, 1}));
  EXPECT_THAT(realPart(values), near({3 * std::sqrt(5.0), std::sqrt(5.0)}));
  outputs(server, "/linalg/svd", 0, {kTall});
}

void expectFactors(const LocalServer& server, const VORTEN_Array& a) {
  const auto factors = outputs(server, "/linalg/svd", 3, {a});
  for (const VORTEN_Array& factor : factors) expectWellFormed(factor);
  const std::uint64_t m = a.dimension(0), n = a.dimension(1), k = std::min(m, n);
  EXPECT_EQ(dimensionsOf(factors[0]), (Dimensions{m, k}));
  EXPECT_EQ(dimensionsOf(factors[1]), (Dimensions{k, k}));
  EXPECT_EQ(dimensionsOf(factors[2]), (Dimensions{n, k}));
  const auto us = doubles({m, k}, product(factors[0], factors[1]));
  EXPECT_THAT(product(us, transposed(factors[2])), near(realPart(a)));
  std::vector<double> identity(k * k);
  for (std::size_t i = 0; i < k; ++i) identity[i * (k + 1)] = 1;
  EXPECT_THAT(product(transposed(factors[0]), factors[0]), near(identity));
  EXPECT_THAT(product(transposed(factors[2]), factors[2]), near(identity));
}

TEST(Svd, GivesFactors) {
  const LocalServer server;
  expectFactors(server, kTall);
  expectFactors(server, transposed(kTall));
  std::vector<double> values(40 * 30);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = std::sin(static_cast<double>(i * i));
  expectFactors(server, doubles({40, 30}, values));
}

TEST(Svd, GivesTwoFactors) {
  const LocalServer server;
  const auto two = outputs(server, "/linalg/svd", 2, {kTall});
  const auto three = outputs(server, "/linalg/svd", 3, {kTall});
  EXPECT_EQ(realPart(two[0]), realPart(three[0]));
  EXPECT_EQ(realPart(two[1]), realPart(three[1]));
}

TEST(Svd, DecomposesEmptyMatrices) {
  const LocalServer server;
  const auto factors = outputs(server, "/linalg/svd", 3, {doubles({0, 3}, {})});
  EXPECT_EQ(dimensionsOf(factors[0]), (Dimensions{0, 0}));
  EXPECT_EQ(dimensionsOf(factors[1]), (Dimensions{0, 0}));
  EXPECT_EQ(dimensionsOf(factors[2]), (Dimensions{3, 0}));
  EXPECT_EQ(dimensionsOf(outputs(server, "/linalg/svd", 1, {doubles({0, 3}, {})})[0]),
            (Dimensions{0, 1}));
}

TEST(Svd, RefusesWrongArguments) {
  const LocalServer server;
  const auto error = [&server](const VORTEN_Array& a) {
    return errorOf(server, "/linalg/svd", 1, {a});
  };
  EXPECT_EQ(error(scalar(std::nan(""))), "halcyon:argument:value");
  EXPECT_EQ(error(complexDoubles({1, 1}, {1}, {1})), "halcyon:argument:value");
  EXPECT_EQ(error(doubles({1, 1, 2}, {1, 2})), "halcyon:argument:size");
  EXPECT_EQ(error(chars(u"a")), "halcyon:argument:class");
  EXPECT_EQ(errorOf(server, "/linalg/svd", 1, {}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/linalg/svd", 4, {kTall}), "halcyon:argument:count");
}

}  // namespace
}  // namespace hcy::test
