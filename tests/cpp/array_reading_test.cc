// SPDX-License-Identifier: Apache-2.0
//
// Elements as values of C++: one by one, converted where nothing is lost, or with a fallback.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "refusal.h"

namespace hcyclient {
namespace {

TEST(CppArrayReading, findsAnElementByItsSubscripts) {
  const Array matrix = Array::fromRows<double>({{1, 2, 3}, {4, 5, 6}});
  EXPECT_EQ(matrix.at<double>(1, 2), 6);
  EXPECT_EQ(matrix.at<double>(1), 4);
  const int i = 0, j = 1;
  EXPECT_EQ(matrix.at<int>(i, j), 2);
  EXPECT_EQ(matrix.index(i, j), 2U);
  EXPECT_EQ(matrix.index({i, j}), 2U);
  EXPECT_EQ(Array::cellOf({matrix})[0].index({i, j}), 2U);
  EXPECT_EQ(matrix.index({std::size_t{1}, std::size_t{2}}), 5U);
  EXPECT_EQ(matrix.index(Shape{1, 2}), 5U);
  EXPECT_THROW(matrix.at<double>(2, 0), UsageError);
  EXPECT_THROW(matrix.at<double>(0, 3), UsageError);
  EXPECT_THROW(matrix.at<double>(6), UsageError);
  EXPECT_THROW(matrix.at<double>(0, 0, 0), UsageError);
  EXPECT_EQ(refusalOf([&] { matrix.at<double>(-1, 0); }), "negative size or index: -1");
  const Array deep = Array({1, 2, 3, 4}, {1, 2, 1, 2});
  EXPECT_EQ(deep.at<int>(0, 1, 0, 1), 4);
  const Array deepest = Array::zeros<double>(1, 1, 1, 1, 1, 1, 1, 1, 2);
  EXPECT_EQ(deepest.index({0, 0, 0, 0, 0, 0, 0, 0, 1}), 1U);
}

TEST(CppArrayReading, findsElementsOfEachKind) {
  EXPECT_EQ(Array({true, false}).at<bool>(0), true);
  EXPECT_EQ(Array(u"ab").at<char16_t>(0, 1), u'b');
  EXPECT_EQ(Array(std::complex<double>(1, 2)).at<std::complex<double>>(0),
            (std::complex<double>(1, 2)));
  EXPECT_THROW(Array(std::complex<double>(1, 2)).at<double>(0), UsageError);
  EXPECT_EQ(Array(std::complex<double>(1, 0)).at<double>(0), 1);
  EXPECT_EQ(Array(2).at<std::complex<float>>(0), (std::complex<float>(2, 0)));
  EXPECT_THROW(Array("a").at<double>(0), UsageError);
  EXPECT_THROW(Array(1.0).at<char16_t>(0), UsageError);
  EXPECT_THROW(Array::cells(1, 1).at<double>(0), UsageError);
}

TEST(CppArrayReading, findsElementsOfSparseArrays) {
  const Array matrix = Array::sparse<double>(3, 3, {{0, 0, 1.5}, {2, 1, -2.5}});
  EXPECT_EQ(matrix.at<double>(0, 0), 1.5);
  EXPECT_EQ(matrix.at<double>(2, 1), -2.5);
  EXPECT_EQ(matrix.at<double>(1, 1), 0);
  EXPECT_EQ(matrix.at<double>(2, 2), 0);
  EXPECT_THROW(matrix.at<double>(3, 0), UsageError);
  const Array flags = Array::sparse<bool>(2, 2, {{1, 1, true}});
  EXPECT_TRUE(flags.at<bool>(1, 1));
  EXPECT_EQ(flags.at<int>(0, 1), 0);
}

TEST(CppArrayReading, takesTheOneElementAndLosesNothing) {
  EXPECT_EQ(Array(3.0).scalar<int>(), 3);
  EXPECT_EQ(Array(std::uint8_t{200}).scalar<std::size_t>(), 200U);
  EXPECT_EQ(Array(true).scalar<double>(), 1);
  EXPECT_TRUE(Array(1.0).scalar<bool>());
  EXPECT_EQ(Array(0.5F).scalar<double>(), 0.5);
  EXPECT_TRUE(std::isnan(Array(std::nan("")).scalar<float>()));
  EXPECT_EQ(refusalOf([] { Array(2.5).scalar<int>(); }),
            "element 0 of the 1-by-1 double array cannot be represented exactly as int32");
  EXPECT_THROW(Array(-1.0).scalar<unsigned>(), UsageError);
  EXPECT_THROW(Array(-1).scalar<unsigned>(), UsageError);
  EXPECT_THROW(Array(300).scalar<std::uint8_t>(), UsageError);
  EXPECT_THROW(Array(std::nan("")).scalar<int>(), UsageError);
  EXPECT_THROW(Array(2.0).scalar<bool>(), UsageError);
  EXPECT_THROW(Array(0.1).scalar<float>(), UsageError);
  EXPECT_THROW(Array({1.0, 2.0}).scalar<double>(), UsageError);
  EXPECT_THROW(Array::zeros<double>(0, 0).scalar<double>(), UsageError);
  EXPECT_THROW(Array("5").scalar<int>(), UsageError);
}

TEST(CppArrayReading, knowsTheEndsOfTheIntegers) {
  const double two63 = 9223372036854775808.0;
  EXPECT_THROW(Array(two63).scalar<std::int64_t>(), UsageError);
  EXPECT_EQ(Array(-two63).scalar<std::int64_t>(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Array(two63).scalar<std::uint64_t>(), std::uint64_t{1} << 63);
  EXPECT_THROW(Array(2 * two63).scalar<std::uint64_t>(), UsageError);
  EXPECT_THROW(Array(std::numeric_limits<std::int64_t>::max()).scalar<double>(), UsageError);
  EXPECT_THROW(Array(std::numeric_limits<std::uint64_t>::max()).scalar<double>(), UsageError);
  EXPECT_THROW(Array(std::numeric_limits<std::uint64_t>::max()).scalar<std::int64_t>(), UsageError);
  EXPECT_EQ(Array(std::int64_t{1} << 53).scalar<double>(), 9007199254740992.0);
  EXPECT_THROW(Array((std::int64_t{1} << 53) + 1).scalar<double>(), UsageError);
  EXPECT_EQ(Array(255.0).scalar<std::uint8_t>(), 255);
  EXPECT_THROW(Array(256.0).scalar<std::uint8_t>(), UsageError);
  EXPECT_EQ(Array(-128.0).scalar<std::int8_t>(), -128);
}

TEST(CppArrayReading, hasAFallback) {
  Array options = Array::structs({1, 1}, {"steps", "name", "unset"});
  options("steps") = 5;
  options("name") = "fast";
  EXPECT_EQ(options.value_or("steps", 1.0), 5);
  EXPECT_EQ(options.value_or("tolerance", 1e-6), 1e-6);
  EXPECT_EQ(options.value_or("unset", 7), 7);
  EXPECT_EQ(options.value_or("name", "none"), "fast");
  EXPECT_EQ(options.value_or("title", "none"), "none");
  EXPECT_THROW(options.value_or("name", 1.0), UsageError);
  EXPECT_THROW(options.value_or("steps", "none"), UsageError);
  EXPECT_EQ(options("unset").value_or(2.0), 2);
  EXPECT_EQ(options("steps").value_or(2.0), 5);
  EXPECT_EQ(options("unset").value_or("none"), "none");
  EXPECT_EQ(options("name").value_or("none"), "fast");
  EXPECT_EQ(Array::structs({0, 0}, {"a"}).value_or("a", 3.0), 3);
  EXPECT_EQ(Array::structs({0, 0}, {"a"}).value_or("a", "x"), "x");
  EXPECT_THROW(Array(1.0).value_or("a", 3.0), UsageError);
  EXPECT_THROW(Array(1.0).value_or("a", "x"), UsageError);
}

TEST(CppArrayReading, hasAListAsAFallback) {
  Array options = Array::structs({1, 1}, {"limits", "names", "unset", "sub"});
  options("limits") = {1, 2};
  options("names") = std::vector<std::string>{"a", "b"};
  options("sub") = Array::structOf({{"limits", {3.0}}});
  const std::vector<double> numbers = {7, 8};
  const std::vector<std::string> texts = {"c"};
  EXPECT_EQ(options.value_or("limits", numbers), (std::vector<double>{1, 2}));
  EXPECT_EQ(options.value_or("unset", numbers), numbers);
  EXPECT_EQ(options.value_or("none", numbers), numbers);
  EXPECT_EQ(options.value_or("names", texts), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(options.value_or("none", texts), texts);
  EXPECT_EQ(options("limits").value_or(numbers), (std::vector<double>{1, 2}));
  EXPECT_EQ(options("unset").value_or(numbers), numbers);
  EXPECT_EQ(options("sub").value_or("limits", numbers), std::vector<double>{3});
  EXPECT_THROW(options.value_or("names", numbers), UsageError);
  EXPECT_THROW(Array(1.0).value_or("limits", numbers), UsageError);
}

TEST(CppArrayReading, hasAnArrayAsAFallback) {
  Array options = Array::structs({1, 1}, {"limits", "unset"});
  options("limits") = {1.0, 2.0};
  EXPECT_EQ(options.value_or("limits", Array(3.0)), Array({1.0, 2.0}));
  EXPECT_EQ(options.value_or("unset", Array(3.0)), Array(3.0));
  EXPECT_EQ(options.value_or("none", Array(3.0)), Array(3.0));
  EXPECT_EQ(options("unset").value_or(Array(3.0)), Array(3.0));
  EXPECT_EQ(Array::zeros<double>(0, 0).value_or(Array(3.0)), Array(3.0));
  const Array kept = 4.0;
  Array copy = kept.value_or(Array(3.0));
  copy.span<double>()[0] = 5;
  EXPECT_EQ(kept.scalar(), 4);
  EXPECT_THROW(Array(1.0).value_or("limits", Array(3.0)), UsageError);
}

template <class T>
class CppArrayOfEachNumber : public ::testing::Test {};
using Numbers =
    ::testing::Types<std::uint8_t, std::int8_t, std::uint16_t, std::int16_t, std::uint32_t,
                     std::int32_t, std::uint64_t, std::int64_t, float, double, bool>;
TYPED_TEST_SUITE(CppArrayOfEachNumber, Numbers, );

TYPED_TEST(CppArrayOfEachNumber, becomesAnyOther) {
  const std::vector<TypeParam> values = {TypeParam(0), TypeParam(1), TypeParam(1)};
  const Array array(values, {1, 3});
  EXPECT_EQ(array.toVector<double>(), (std::vector<double>{0, 1, 1}));
  EXPECT_EQ(array.toVector<int>(), (std::vector<int>{0, 1, 1}));
  EXPECT_EQ(array.toVector<bool>(), (std::vector<bool>{false, true, true}));
  EXPECT_EQ(array.toVector<std::complex<double>>()[1], (std::complex<double>(1, 0)));
  EXPECT_EQ(array.convertTo<float>(), Array({0.0F, 1.0F, 1.0F}, {1, 3}));
  EXPECT_EQ(array.convertTo<std::uint64_t>().shape(), (Shape{1, 3}));
  EXPECT_EQ(array.convertTo<TypeParam>(), array);
  EXPECT_EQ(Array({0.0, 1.0, 1.0}, {1, 3}).convertTo<TypeParam>(), array);
  EXPECT_EQ(array, array.copy());
}

TEST(CppArrayReading, convertsOnlyWhatKeepsItsValue) {
  EXPECT_EQ(refusalOf([] {
              Array({1.0, 2.5}).toVector<int>();
            }),
            "element 1 of the 2-by-1 double array cannot be represented exactly as int32");
  EXPECT_THROW(Array({1.0, 2.5}).convertTo<int>(), UsageError);
  EXPECT_THROW(Array("text").toVector<double>(), UsageError);
  EXPECT_THROW(Array("text").convertTo<double>(), UsageError);
  EXPECT_THROW(Array(1.0).convertTo<char16_t>(), UsageError);
  EXPECT_THROW(Array(1.0).toVector<char16_t>(), UsageError);
  EXPECT_EQ(Array("text").convertTo<char16_t>(), Array("text"));
  EXPECT_THROW(Array::cells(1, 1).toVector<double>(), UsageError);
}

TEST(CppArrayReading, convertsComplexNumbers) {
  const Array complex({std::complex<float>(1, 2), std::complex<float>(3, 0)}, {1, 2});
  EXPECT_EQ(complex.toVector<std::complex<double>>()[0], (std::complex<double>(1, 2)));
  EXPECT_EQ(complex.toVector<double>(), (std::vector<double>{1, 3}));
  EXPECT_THROW(complex.convertTo<double>(), UsageError);
  EXPECT_THROW(complex.convertTo<float>(), UsageError);
  const Array wide = complex.convertTo<std::complex<double>>();
  EXPECT_TRUE(wide.is<double>() && wide.isComplex());
  EXPECT_EQ(wide.imaginary<double>()[0], 2);
  EXPECT_TRUE(Array(1.0).convertTo<std::complex<double>>().isComplex());
  EXPECT_EQ(Array(std::complex<double>(4, 0)).convertTo<int>().scalar(), 4);
  EXPECT_THROW(Array(std::complex<double>(0.1, 0)).convertTo<std::complex<float>>(), UsageError);
  EXPECT_THROW(Array(std::complex<double>(0, 0.1)).convertTo<std::complex<float>>(), UsageError);
}

TEST(CppArrayReading, convertsSparseArraysByTheirEntries) {
  const Array matrix = Array::sparse<double>(3, 3, {{0, 0, 1.0}, {2, 1, -2.0}});
  EXPECT_EQ(matrix.toVector<int>(), (std::vector<int>{1, -2}));
  EXPECT_EQ(matrix.convertTo<double>(), matrix);
  EXPECT_THROW(matrix.convertTo<int>(), UsageError);
}

TEST(CppArrayReading, comparesClassShapeAndElements) {
  EXPECT_EQ(Array(1.0), Array(1.0));
  EXPECT_NE(Array(1.0), Array(1));
  EXPECT_NE(Array(1.0), Array(2.0));
  EXPECT_NE(Array({1.0, 2.0}), Array::row({1.0, 2.0}));
  EXPECT_EQ(Array("text"), Array("text"));
  EXPECT_NE(Array("text"), Array("test"));
  EXPECT_EQ(Array(), Array());
  EXPECT_NE(Array(), Array(1.0));
  EXPECT_NE(Array(1.0), Array());
  EXPECT_NE(Array(std::nan("")), Array(std::nan("")));
  EXPECT_TRUE(Array(2.0) == 2.0 && Array("a") == "a");
}

TEST(CppArrayReading, comparesComplexNumbers) {
  const Array number = std::complex<double>(1, 2);
  EXPECT_EQ(number, Array(std::complex<double>(1, 2)));
  EXPECT_NE(number, Array(std::complex<double>(1, 3)));
  EXPECT_NE(number, Array(1.0));
  EXPECT_NE(Array(1.0), number);
  EXPECT_EQ(Array(1.0), Array(std::complex<double>(1, 0)));
  EXPECT_EQ(Array(std::complex<double>(1, 0)), Array(1.0));
}

TEST(CppArrayReading, comparesEntriesOfSparseArrays) {
  const auto entry = [](std::size_t row, std::size_t column, double value) {
    return Array::sparse<double>(2, 2, {{row, column, value}});
  };
  EXPECT_EQ(entry(0, 0, 1), entry(0, 0, 1));
  EXPECT_NE(entry(0, 0, 1), entry(1, 0, 1));
  EXPECT_NE(entry(0, 0, 1), entry(0, 1, 1));
  EXPECT_NE(entry(0, 0, 1), entry(0, 0, 2));
}

TEST(CppArrayReading, comparesContainers) {
  const auto make = [](double number, const char* name) {
    return Array::structOf({{"list", Array::cellOf({number, "a"})}, {name, true}});
  };
  EXPECT_EQ(make(1, "x"), make(1, "x"));
  EXPECT_NE(make(1, "x"), make(2, "x"));
  EXPECT_NE(make(1, "x"), make(1, "y"));
  EXPECT_EQ(Array::structs({3, 1}, {}), Array::structs({3, 1}, {}));
  Array s = make(1, "x");
  EXPECT_TRUE(s("x") == Array(true) && s("x") == true && s("list")[0] == s("list")[0]);
  EXPECT_TRUE(s("x") != Array(false) && s("list")[0] != s("list")[1]);
}

TEST(CppArrayReading, comparesSparseArrays) {
  const auto make = [](std::size_t row, double value) {
    return Array::sparse<double>(3, 3, {{row, 1, value}, {0, 2, 0.0}, {2, 2, 4.0}});
  };
  EXPECT_EQ(make(1, 2), make(1, 2));
  EXPECT_NE(make(1, 2), make(2, 2));
  EXPECT_NE(make(1, 2), make(1, 3));
  EXPECT_EQ(make(1, 0), make(2, 0));
  EXPECT_NE(make(1, 2), Array::zeros<double>(3, 3));
  EXPECT_EQ(Array::sparse<bool>(2, 2, {{0, 0, true}}), Array::sparse<bool>(2, 2, {{0, 0, true}}));
}

TEST(CppArrayReading, goesThroughCells) {
  const Array words = std::vector<std::string>{"a", "bc"};
  std::string all;
  for (const Array& word : words) all += word.toString() + " ";
  EXPECT_EQ(all, "a bc ");
  Array s = Array::structOf({{"words", words}});
  for (Array word : s("words").get()) all += word.toString();
  EXPECT_EQ(all, "a bc abc");
  for (const Array& none : Array::cells(0, 0)) ADD_FAILURE() << none;
  EXPECT_THROW(Array(1.0).begin(), UsageError);
  CellIterator position = words.begin();
  position++;
  EXPECT_EQ((*position).toString(), "bc");
  EXPECT_TRUE(CellIterator() == CellIterator());
}

TEST(CppArrayReading, goesThroughFields) {
  Array s = Array::structOf({{"a", 1.0}, {"b", "text"}});
  std::string all;
  for (auto [name, value] : s.fields()) all += std::string(name) + value.className().data() + " ";
  EXPECT_EQ(all, "adouble bchar ");
  for (const auto& [name, value] : s.copy().fields()) all += name;
  EXPECT_EQ(all, "adouble bchar ab");
  Array outer = Array::structOf({{"inner", s}});
  for (auto [name, value] : outer("inner").fields()) all += name;
  EXPECT_EQ(all, "adouble bchar abab");
  Array many = Array::structs({2, 1}, {"x"});
  many(1, "x") = 5.0;
  for (auto [name, value] : many.fields(1)) EXPECT_EQ(value.scalar(), 5);
  EXPECT_THROW(many.fields(2), UsageError);
  EXPECT_THROW(Array(1.0).fields(), UsageError);
  const Fields fields = s.fields();
  Fields::Iterator position = fields.begin();
  position++;
  EXPECT_EQ((*position).name, "b");
  EXPECT_TRUE(Fields::Iterator() == Fields::Iterator());
}

// A place has every reader that an array has.
TEST(CppArrayReading, readsAPlaceAsAnArray) {
  Array cell = Array::cellOf({Array({1.0, 2.0}, {1, 2}), Array::structOf({{"a", 1.0}}),
                              Array::sparse<double>(2, 2, {{1, 1, 3.0}})});
  EXPECT_EQ(cell[0].classId(), hcyDOUBLE_CLASS);
  EXPECT_EQ(cell[0].className(), "double");
  EXPECT_TRUE(cell[0].is<double>() && cell[1].isStruct() && cell[2].isSparse());
  EXPECT_FALSE(cell[0].isText() || cell[0].isCell() || cell[0].isComplex() || cell[0].isEmpty());
  EXPECT_EQ(cell[0].rows(), 1U);
  EXPECT_EQ(cell[0].columns(), 2U);
  EXPECT_EQ(cell[0].size(), 2U);
  EXPECT_EQ(cell[0].shape(), (Shape{1, 2}));
  EXPECT_EQ(cell[0].index(0, 1), 1U);
  EXPECT_EQ(cell[0].at<int>(0, 1), 2);
  EXPECT_EQ(cell[0].toVector<int>(), (std::vector<int>{1, 2}));
  EXPECT_EQ(cell[0].convertTo<int>().className(), "int32");
  EXPECT_TRUE(cell[0].copy() == cell[0]);
  EXPECT_EQ(cell[1].fieldNames(), std::vector<std::string>{"a"});
  EXPECT_TRUE(cell[1].hasField("a"));
  EXPECT_EQ(cell[1].value_or("b", 4), 4);
  EXPECT_EQ(cell[1]("a").scalar<int>(), 1);
  EXPECT_EQ(cell[2].entries<double>()[0].value, 3);
}

}  // namespace
}  // namespace hcyclient
