// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>

#include "calls.h"

namespace hcy::test {
namespace {

struct Points {
  std::vector<double> x, y;
};

// Lines of y,x behind comments and one line of names.
Points readNorris() {
  std::ifstream file(HCY_NORRIS_DATA);
  Points points;
  for (std::string line; std::getline(file, line);) {
    double x, y;
    char comma;
    if (std::istringstream(line) >> y >> comma >> x) {
      points.x.push_back(x);
      points.y.push_back(y);
    }
  }
  return points;
}

VORTEN_Array column(const std::vector<double>& values) {
  return doubles({values.size(), 1}, values);
}

// Agreement in `digits` decimal digits.
void expectDigits(const VORTEN_Array& array, const std::vector<double>& certified, int digits) {
  const auto values = realPart(array);
  ASSERT_EQ(values.size(), certified.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_LE(std::abs(values[i] - certified[i]), std::abs(certified[i]) * std::pow(10, -digits))
        << values[i] << " and " << certified[i];
  }
}

TEST(LinearFit, AgreesWithTheCertifiedValues) {
  const LocalServer server;
  const Points points = readNorris();
  ASSERT_EQ(points.x.size(), 36U);
  const auto fit = outputs(server, "/stats/linear_fit", 2, {column(points.x), column(points.y)});
  for (const VORTEN_Array& output : fit) expectWellFormed(output);
  EXPECT_EQ(dimensionsOf(fit[0]), (Dimensions{2, 1}));
  expectDigits(fit[0], {-0.262323073774029, 1.00211681802045}, 13);
  EXPECT_EQ(dimensionsOf(fit[1]), (Dimensions{1, 1}));
  EXPECT_EQ(dimensionsOf(field(fit[1], 0, "standardErrors")), (Dimensions{2, 1}));
  expectDigits(field(fit[1], 0, "standardErrors"), {0.232818234301152, 0.429796848199937E-03}, 13);
  expectDigits(field(fit[1], 0, "residualStandardDeviation"), {0.884796396144373}, 13);
  expectDigits(field(fit[1], 0, "rSquared"), {0.999993745883712}, 14);
  expectDigits(field(fit[1], 0, "degreesOfFreedom"), {34}, 15);
}

TEST(LinearFit, KeepsItsDigitsFarFromZero) {
  const LocalServer server;
  std::vector<double> x, y;
  for (int i = 0; i < 10; ++i) {
    x.push_back(1e9 + i);
    y.push_back(1e9 + 2 * i + (i % 2));
  }
  // Of i and 2 i + (i mod 2): the slope is 2 + (25 - 22.5) / 82.5.
  const auto fit = outputs(server, "/stats/linear_fit", 1, {column(x), column(y)});
  EXPECT_NEAR(realPart(fit[0])[1], 2 + 2.5 / 82.5, 1e-14);
}

TEST(LinearFit, TakesRowsAndColumns) {
  const LocalServer server;
  const auto fit = outputs(server, "/stats/linear_fit", 2,
                           {doubles({1, 3}, {1, 2, 3}), doubles({3, 1}, {5, 7, 9})});
  EXPECT_EQ(realPart(fit[0]), (std::vector<double>{3, 2}));
  EXPECT_EQ(realPart(field(fit[1], 0, "rSquared")), (std::vector<double>{1}));
  EXPECT_EQ(realPart(field(fit[1], 0, "standardErrors")), (std::vector<double>{0, 0}));
  const auto level = outputs(server, "/stats/linear_fit", 2,
                             {doubles({1, 3}, {1, 2, 3}), doubles({1, 3}, {5, 5, 5})});
  EXPECT_EQ(realPart(level[0]), (std::vector<double>{5, 0}));
  EXPECT_EQ(realPart(field(level[1], 0, "rSquared")), (std::vector<double>{1}));
}

TEST(LinearFit, RefusesWrongArguments) {
  const LocalServer server;
  const auto error = [&server](const VORTEN_Array& x, const VORTEN_Array& y) {
    return errorOf(server, "/stats/linear_fit", 1, {x, y});
  };
  const auto three = column({1, 2, 3});
  EXPECT_EQ(error(column({1, 2}), column({1, 2})), "halcyon:argument:size");
  EXPECT_EQ(error(three, column({1, 2, 3, 4})), "halcyon:argument:size");
  EXPECT_EQ(error(doubles({2, 2}, {1, 2, 3, 4}), column({1, 2, 3, 4})), "halcyon:argument:size");
  EXPECT_EQ(error(column({2, 2, 2}), three), "halcyon:argument:value");
  EXPECT_EQ(error(three, column({1, 2, std::nan("")})), "halcyon:argument:value");
  EXPECT_EQ(error(column({1, 2, HUGE_VAL}), three), "halcyon:argument:value");
  EXPECT_EQ(error(three, chars(u"abc")), "halcyon:argument:class");
  EXPECT_EQ(errorOf(server, "/stats/linear_fit", 1, {three}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/stats/linear_fit", 3, {three, three}), "halcyon:argument:count");
}

void expectDescription(const VORTEN_Array& structs, int element,
                       const std::vector<double>& values) {
  const char* names[] = {"count", "mean", "standardDeviation", "minimum", "median", "maximum"};
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto held = realPart(field(structs, element, names[i]));
    ASSERT_EQ(held.size(), 1U);
    if (std::isnan(values[i])) {
      EXPECT_TRUE(std::isnan(held[0])) << names[i];
    } else {
      EXPECT_DOUBLE_EQ(held[0], values[i]) << names[i];
    }
  }
}

TEST(Describe, DescribesEachColumn) {
  const LocalServer server;
  const double nan = std::nan("");
  const auto structs =
      outputs(server, "/stats/describe", 1,
              {doubles({4, 3}, {4, 1, 3, 2, 1e9, 1e9 + 2, 1e9, 1e9, 1, nan, 2, 3})})[0];
  expectWellFormed(structs);
  EXPECT_EQ(dimensionsOf(structs), (Dimensions{1, 3}));
  expectDescription(structs, 0, {4, 2.5, std::sqrt(5.0 / 3), 1, 2.5, 4});
  expectDescription(structs, 1, {4, 1e9 + 0.5, 1, 1e9, 1e9, 1e9 + 2});
  expectDescription(structs, 2, {4, nan, nan, nan, nan, nan});
}

TEST(Describe, DescribesFewElements) {
  const LocalServer server;
  const auto one = outputs(server, "/stats/describe", 1, {scalar(7)})[0];
  expectDescription(one, 0, {1, 7, 0, 7, 7, 7});
  const auto three = outputs(server, "/stats/describe", 1, {doubles({3, 1}, {9, 1, 5})})[0];
  expectDescription(three, 0, {3, 5, 4, 1, 5, 9});
  const auto six = outputs(server, "/stats/describe", 1, {doubles({6, 1}, {1, 2, 3, 6, 5, 4})})[0];
  EXPECT_EQ(realPart(field(six, 0, "median")), (std::vector<double>{3.5}));
  const auto none = outputs(server, "/stats/describe", 1, {doubles({3, 0}, {})})[0];
  expectWellFormed(none);
  EXPECT_EQ(dimensionsOf(none), (Dimensions{1, 0}));
  EXPECT_EQ(none.struct_().field_names_size(), 6);
}

TEST(Describe, RefusesWrongArguments) {
  const LocalServer server;
  const auto error = [&server](const VORTEN_Array& a) {
    return errorOf(server, "/stats/describe", 1, {a});
  };
  EXPECT_EQ(error(doubles({0, 2}, {})), "halcyon:argument:size");
  EXPECT_EQ(error(doubles({1, 1, 2}, {1, 2})), "halcyon:argument:size");
  EXPECT_EQ(error(complexDoubles({1, 1}, {1}, {1})), "halcyon:argument:value");
  EXPECT_EQ(error(chars(u"a")), "halcyon:argument:class");
  EXPECT_EQ(errorOf(server, "/stats/describe", 1, {}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/stats/describe", 2, {scalar(1)}), "halcyon:argument:count");
}

}  // namespace
}  // namespace hcy::test
