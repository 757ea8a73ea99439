// SPDX-License-Identifier: Apache-2.0
//
// The other classes, shapes of all sorts, and containers in containers.

#include <cstdint>

#include "arrays.h"

namespace hcy::abi {
namespace {

using namespace std::string_view_literals;

Value number(double value) { return doubles({1, 1}, {value}); }

std::vector<Value> sparse() {
  return {sparseDoubles({3, 4}, {0, 2, 1}, {0, 2, 2, 3, 3}, {1.5, -2, 0.25}),
          sparseDoubles({2, 2}, {1, 0}, {0, 1, 2}, {3, 4}, {-3, -4}),
          sparseDoubles({3, 4}, {}, {0, 0, 0, 0, 0}, {}),
          // room for more than is stored
          sparseDoubles({2, 1}, {1, 0}, {0, 1}, {7, 0})};
}

// 0-by-0 of every class; and other shapes without elements.
std::vector<Value> empty() {
  std::vector<Value> arrays;
  for (hcyClassID classId = hcyUINT8_CLASS; classId <= hcyDOUBLE_CLASS; ++classId) {
    arrays.push_back({.classId = classId});
  }
  arrays.push_back(logicals({0, 0}, ""));
  arrays.push_back(chars({0, 0}, u""));
  arrays.push_back(structure({0, 0}, {}, {}));
  arrays.push_back(cell({0, 0}, {}));
  arrays.push_back(sparseDoubles({0, 0}, {}, {0}, {}));
  arrays.push_back(sparseLogicals({0, 0}, {}, {0}, ""));
  arrays.push_back({.classId = hcyINT8_CLASS, .dimensions = {0, 3}});
  arrays.push_back(cell({3, 0}, {}));
  arrays.push_back(structure({1, 0}, {"a", "b"}, {}));
  arrays.push_back(structure({1, 2}, {}, {}));
  return arrays;
}

std::vector<Value> manyDimensions() {
  return {doubles({2, 3, 2}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}),
          numeric<std::int16_t>(hcyINT16_CLASS, {2, 1, 1, 2}, {1, 2, 3, 4}, {-1, -2, -3, -4}),
          logicals({1, 2, 2}, "1001"),
          chars({1, 2, 2}, u"abcd"),
          cell({1, 1, 2}, {number(1), number(2)}),
          structure({1, 1, 2}, {"a", "b"}, {number(1), number(2), number(3), number(4)}),
          doubles({2, 0, 5}, {})};
}

std::vector<Value> nested() {
  const Value leaves =
      cell({1, 2}, {numeric<std::int8_t>(hcyINT8_CLASS, {1, 2}, {-1, 2}), chars({1, 3}, u"end")});
  const Value points = structure({1, 2}, {"x", "y"}, {number(1), number(2), number(3), number(4)});
  return {cell({1, 2}, {structure({1, 1}, {"deep", "text"}, {leaves, chars({1, 1}, u"t")}),
                        logicals({1, 1}, "1")}),
          structure({1, 1}, {"outer"}, {cell({1, 1}, {points})})};
}

std::vector<Value> partlySet() {
  return {cell({1, 3}, {neverSet(), number(5), neverSet()}),
          structure({1, 2}, {"a", "b"}, {neverSet(), number(6), chars({1, 1}, u"c"), neverSet()}),
          cell({1, 1}, {cell({1, 1}, {neverSet()})})};
}

}  // namespace

std::vector<GoldenArrays> goldenOtherArrays() {
  return {
      {"logical", {logicals({2, 2}, "1011"), logicals({1, 1}, "0")}},
      {"char",
       {chars({1, 6}, u"h\u00E9llo!"), chars({1, 4}, u"\U0001F600\0\uFFFF"sv),
        chars({2, 3}, u"axbycz")}},
      {"struct",
       {structure({1, 2}, {"name", "na\xC3\xAFve"},
                  {chars({1, 2}, u"ab"), number(1), chars({1, 1}, u"c"), logicals({1, 1}, "1")})}},
      {"cell",
       {cell({2, 2}, {number(1), chars({1, 2}, u"ab"),
                      numeric<std::uint16_t>(hcyUINT16_CLASS, {1, 1}, {65535}, {1}),
                      sparseLogicals({1, 2}, {0}, {0, 0, 1}, "1")})}},
      {"sparse_double", sparse()},
      {"sparse_logical",
       {sparseLogicals({3, 2}, {0, 2, 1}, {0, 2, 3}, "111"),
        sparseLogicals({2, 1}, {1}, {0, 1}, "1")}},
      {"empty", empty()},
      {"many_dimensions", manyDimensions()},
      {"nested", nested()},
      {"partly_set", partlySet()},
      {"nothing", {}}};
}

}  // namespace hcy::abi
