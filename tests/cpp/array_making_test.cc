// SPDX-License-Identifier: Apache-2.0
//
// Arrays from what a program has its values in: ranges, pointers, iterators, rows, maps.

#include <gtest/gtest.h>

#include <array>
#include <complex>
#include <hcy/hcyclient.hpp>
#include <iterator>
#include <list>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {
namespace {

// A range that can be iterated over once.
struct Numbers {
  std::istream& stream;
  std::istream_iterator<double> begin() const { return std::istream_iterator<double>(stream); }
  static std::istream_iterator<double> end() { return {}; }
};

// What has data() and size() but is no range, as a matrix of another library.
struct Matrix {
  const double* data() const;
  std::size_t size() const;
};
static_assert(!std::is_constructible_v<Array, Matrix>);
static_assert(!std::is_constructible_v<Array, const char*, const char*>);
static_assert(std::is_same_v<Span<double>::reverse_iterator::value_type, double>);

TEST(CppArrayMaking, takesContiguousRanges) {
  const std::vector<double> column = {1, 2, 3};
  EXPECT_EQ(Array(std::array<double, 3>{1, 2, 3}), Array(column));
  const double plain[] = {1, 2, 3};
  EXPECT_EQ(Array(plain), Array(column));
  EXPECT_EQ(Array(Array(column).toVector<double>()), Array(column));
  Array array = column;
  EXPECT_EQ(Array(array.span<double>()), array);
  EXPECT_EQ(Array(array.span<double>().first(2)), Array({1.0, 2.0}));
  EXPECT_EQ(Array(std::array<int, 4>{1, 2, 3, 4}, {2, 2}), Array({1, 2, 3, 4}, {2, 2}));
  EXPECT_EQ(Array(std::vector<std::complex<float>>{{1, 2}}).at<std::complex<float>>(0).imag(), 2);
  EXPECT_EQ(Array(std::vector<bool>{true, false}), Array({true, false}));
  EXPECT_EQ(Array(std::vector<bool>{true, false}, {1, 2}), Array::row({true, false}));
  std::vector<bool> flags = {true, false};
  const Array flag = flags[0];
  EXPECT_EQ(flag, Array(true));
  EXPECT_THROW(Array(column, {2, 2}), UsageError);
  EXPECT_THROW(Array(column, Shape{}), UsageError);
  EXPECT_EQ(Shape(std::size_t{2}), (Shape{0, 0}));
  EXPECT_THROW(Array(column, {100000, 100000}), UsageError);
  EXPECT_TRUE(Array(std::array<double, 0>{}).isEmpty());
}

TEST(CppArrayMaking, takesAPointerAndAShape) {
  const double values[] = {1, 2, 3, 4, 5, 6};
  const int rows = 2, columns = 3;
  const Array matrix(&values[0], {rows, columns});
  EXPECT_EQ(matrix.at<double>(1, 2), 6);
  EXPECT_TRUE(Array(static_cast<const double*>(nullptr), {0, 3}).isEmpty());
  EXPECT_THROW(Array(static_cast<const double*>(nullptr), {1, 3}), UsageError);
  EXPECT_THROW(Array(&values[0], {-1, 3}), UsageError);
}

TEST(CppArrayMaking, takesTheDimensionsAsArguments) {
  const std::vector<double> values = {1, 2, 3, 4, 5, 6};
  const int rows = 2;
  const Array matrix(values, {2, 3});
  EXPECT_EQ(Array(values, rows, 3L), matrix);
  EXPECT_EQ(Array(values.data(), rows, 3), matrix);
  EXPECT_EQ(Array({1.0, 2.0, 3.0, 4.0, 5.0, 6.0}, rows, 3), matrix);
  EXPECT_EQ(Array(values, 1, 2, 3).shape(), (Shape{1, 2, 3}));
  EXPECT_EQ(Array(std::vector<bool>{true, false}, 1, 2), Array::row({true, false}));
  EXPECT_THROW(Array(values, 2, 2), UsageError);
  EXPECT_THROW(Array(values, -1, 2), UsageError);
  Array resized = 1.0;
  resized.resize(rows, 3);
  EXPECT_EQ(resized.shape(), matrix.shape());
}

// What looks like rows and a shape alike, in braces, is refused; this is what stays.
TEST(CppArrayMaking, takesListsInBraces) {
  EXPECT_EQ(Array({1, 2}, {2, 1}).shape(), (Shape{2, 1}));
  const Array column = {{1.0, 2.0}};
  EXPECT_EQ(column.shape(), (Shape{2, 1}));
  const Array shaped = {{1.0, 2.0}, {1, 2}};
  EXPECT_EQ(shaped.shape(), (Shape{1, 2}));
  const std::vector<int> values = {1, 2};
  const Array listed = {values, {1, 2}};
  EXPECT_EQ(listed.shape(), (Shape{1, 2}));
}

TEST(CppArrayMaking, takesAShapeFromARange) {
  const Array matrix = Array::zeros<double>(2, 3);
  const std::vector<int> sizes = {2, 3};
  EXPECT_EQ(Array::zeros<double>(sizes), matrix);
  EXPECT_EQ(Array::zeros<double>(std::array<short, 2>{2, 3}), matrix);
  EXPECT_EQ(Array::zeros<double>(matrix.dimensions()), matrix);
  EXPECT_EQ(Array(std::vector<double>(6), sizes), matrix);
  EXPECT_EQ(Array::cells(sizes).shape(), matrix.shape());
  EXPECT_EQ(matrix.index(std::vector<int>{1, 2}), 5U);
  EXPECT_THROW(Array::zeros<double>(std::vector<int>{2, -3}), UsageError);
  static_assert(!std::is_constructible_v<Shape, std::string>);
  static_assert(!std::is_constructible_v<Shape, std::vector<bool>>);
}

// A type of a program that has elements and makes its Array itself.
struct Samples {
  std::vector<std::vector<double>> rows;
  auto begin() const { return rows.begin(); }
  auto end() const { return rows.end(); }
  operator Array() const { return Array::fromRows(rows); }
};

TEST(CppArrayMaking, takesWhatConvertsItself) {
  const Samples samples{{{1, 2}, {3, 4}}};
  const Array matrix = samples;
  EXPECT_EQ(matrix, Array::fromRows<double>({{1, 2}, {3, 4}}));
  EXPECT_EQ(Array(samples), matrix);  // not a list that the compiler refuses
}

TEST(CppArrayMaking, takesIterators) {
  const std::list<float> list = {1, 2};
  EXPECT_EQ(Array(list.begin(), list.end()), Array({1.0F, 2.0F}));
  std::istringstream words("1 2 3");
  EXPECT_EQ(Array(std::istream_iterator<int>(words), std::istream_iterator<int>()),
            Array({1, 2, 3}));
  const std::vector<double> values = {1, 2, 3};
  EXPECT_EQ(Array(values.begin() + 1, values.end()), Array({2.0, 3.0}));
}

TEST(CppArrayMaking, takesRows) {
  const std::vector<std::vector<double>> rows = {{1, 2, 3}, {4, 5, 6}};
  const Array matrix = Array::fromRows(rows);
  EXPECT_EQ(matrix, Array::fromRows<double>({{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(matrix.shape(), (Shape{2, 3}));
  EXPECT_EQ(Array::fromRows(std::vector<std::vector<double>>()).shape(), (Shape{0, 0}));
  EXPECT_EQ(Array::fromRows(std::array<std::vector<bool>, 1>{{{true}}}), Array(true));
  EXPECT_THROW(Array::fromRows(std::vector<std::vector<int>>{{1, 2}, {3}}), UsageError);
  const Array complex = Array::fromRows<std::complex<double>>({{{1, 2}, {3, 4}}});
  EXPECT_EQ(complex.at<std::complex<double>>(0, 1), (std::complex<double>(3, 4)));
  EXPECT_EQ(Array::row({1.0, 2.0}).shape(), (Shape{1, 2}));
  EXPECT_EQ(Array::row(std::vector<double>{1, 2}), Array::row({1.0, 2.0}));
}

TEST(CppArrayMaking, takesSizesOfAnyIntegerType) {
  const int m = 2;
  const long n = 3;
  EXPECT_EQ(Array::zeros<double>(m, n).shape(), (Shape{2, 3}));
  EXPECT_EQ(Array::zeros<double>(m, n, 4U).shape(), (Shape{2, 3, 4}));
  EXPECT_EQ(Array::zeros<double>({m, n, 4U}).shape(), (Shape{2, 3, 4}));
  EXPECT_EQ(Array::cells(m, n).size(), 6U);
  EXPECT_EQ(Array::sparse<double>(m, n, 1).columns(), 3U);
  const Shape shape = std::vector<std::size_t>{2, 3};
  EXPECT_EQ(shape, (Shape{m, n}));
  // One dimension in braces is no number of dimensions.
  EXPECT_EQ(Shape{m}.size(), 1U);
  EXPECT_EQ(Shape{n}[0], 3U);
  EXPECT_EQ(Array::cells({4}).shape(), (Shape{4, 1}));
  EXPECT_EQ(Array({1.0, 2.0}, {2U}).shape(), (Shape{2, 1}));
  EXPECT_THROW(Shape{-1}, UsageError);
  EXPECT_THROW(Array::zeros<double>(-1, 2), UsageError);
  EXPECT_THROW(Array::cells({2, -1}), UsageError);
}

TEST(CppArrayMaking, takesContainersAtRunTime) {
  std::vector<Array> elements;
  elements.emplace_back(1.0);
  elements.emplace_back("text");
  EXPECT_EQ(Array::cellOf(elements), Array::cellOf({1.0, "text"}));
  std::istringstream numbers("1 2 3");
  EXPECT_EQ(Array::cellOf(Numbers{numbers}), Array::cellOf({1.0, 2.0, 3.0}));
  EXPECT_EQ(Array::cellOf(std::list<std::string>{"a", "b"}),
            Array(std::vector<std::string>{"a", "b"}));
  std::map<std::string, Array> fields;
  fields.emplace("name", "Ada");
  fields.emplace("born", 1815.0);
  EXPECT_EQ(Array::structOf(fields), Array::structOf({{"born", 1815.0}, {"name", "Ada"}}));
  const std::vector<std::pair<std::string_view, int>> pairs = {{"a", 1}, {"b", 2}};
  EXPECT_EQ(Array::structOf(pairs)("b").scalar(), 2);
  const std::vector<std::pair<const char*, int>> twice = {{"a", 1}, {"a", 2}};
  EXPECT_THROW(Array::structOf(twice), UsageError);
  EXPECT_EQ(Array::structOf(std::map<std::string, double>()).fieldNames().size(), 0U);
}

TEST(CppArrayMaking, writesAListIntoAPlace) {
  Array cell = Array::cells(1, 1);
  cell[0] = {1.0, 2.0};
  EXPECT_EQ(cell[0].size(), 2U);
}

TEST(CppSpan, hasTheMembersOfARange) {
  Array array = {1.0, 2.0, 3.0, 4.0};
  const Span<double> span = array.span<double>();
  EXPECT_EQ(span.front(), 1);
  EXPECT_EQ(span.back(), 4);
  EXPECT_EQ(span.first(2).back(), 2);
  EXPECT_EQ(span.last(2).front(), 3);
  EXPECT_EQ(span.subspan(1).size(), 3U);
  EXPECT_EQ(span.subspan(1, 2).back(), 3);
  EXPECT_EQ(span.size_bytes(), 32U);
  EXPECT_EQ(std::vector<double>(span.rbegin(), span.rend()), (std::vector<double>{4, 3, 2, 1}));
}

}  // namespace
}  // namespace hcyclient
