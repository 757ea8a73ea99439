// SPDX-License-Identifier: Apache-2.0
//
// Numbers, logical values and code units: from C++ into arrays and back.

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <complex>
#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "refusal.h"

namespace hcyclient {
namespace {

static_assert(!std::is_copy_constructible_v<Array> && !std::is_copy_assignable_v<Array>);
static_assert(std::is_nothrow_move_constructible_v<Array> &&
              std::is_nothrow_move_assignable_v<Array>);
static_assert(sizeof(Array) == sizeof(hcyArray*));
static_assert(!std::is_constructible_v<Array, std::nullptr_t> &&
              !std::is_constructible_v<Array, char> && !std::is_constructible_v<Array, void*>);

// A C++ type, and the class of its arrays.
template <class T, hcyClassID id>
struct Kind {
  using Type = T;
  static constexpr hcyClassID classId = id;
};

template <class K>
class CppArray : public ::testing::Test {};
using Kinds =
    ::testing::Types<Kind<std::uint8_t, hcyUINT8_CLASS>, Kind<std::int8_t, hcyINT8_CLASS>,
                     Kind<std::uint16_t, hcyUINT16_CLASS>, Kind<std::int16_t, hcyINT16_CLASS>,
                     Kind<std::uint32_t, hcyUINT32_CLASS>, Kind<std::int32_t, hcyINT32_CLASS>,
                     Kind<std::uint64_t, hcyUINT64_CLASS>, Kind<std::int64_t, hcyINT64_CLASS>,
                     Kind<float, hcySINGLE_CLASS>, Kind<double, hcyDOUBLE_CLASS>,
                     Kind<bool, hcyLOGICAL_CLASS>, Kind<char16_t, hcyCHAR_CLASS>>;
struct KindName {
  template <class K>
  static std::string GetName(int) {
    return std::string(Array(typename K::Type()).className());
  }
};
TYPED_TEST_SUITE(CppArray, Kinds, KindName);

template <class T>
std::vector<T> sixValues() {
  return {T(1), T(0), std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest(), T(1), T(0)};
}

TYPED_TEST(CppArray, holdsAVectorAsAColumn) {
  using T = typename TypeParam::Type;
  const Array array = sixValues<T>();
  EXPECT_EQ(array.classId(), TypeParam::classId);
  EXPECT_TRUE(array.is<T>());
  EXPECT_EQ(array.shape(), (Shape{6, 1}));
  EXPECT_EQ(array.toVector<T>(), sixValues<T>());
  EXPECT_FALSE(array.isComplex() || array.isSparse() || array.isEmpty());
}

TYPED_TEST(CppArray, holdsOneValue) {
  using T = typename TypeParam::Type;
  for (const T value : {T(1), std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()}) {
    const Array array = value;
    EXPECT_EQ(array.classId(), TypeParam::classId);
    EXPECT_EQ(array.shape(), (Shape{1, 1}));
    EXPECT_EQ(array.toVector<T>(), std::vector<T>{value});
    EXPECT_EQ(array.scalar(), static_cast<double>(value));
  }
}

TYPED_TEST(CppArray, holdsAListInAShape) {
  using T = typename TypeParam::Type;
  const Array array({T(1), T(0), T(1), T(1), T(0), T(1)}, {1, 2, 3});
  EXPECT_EQ(array.shape(), (Shape{1, 2, 3}));
  EXPECT_EQ(array.toVector<T>(), (std::vector<T>{T(1), T(0), T(1), T(1), T(0), T(1)}));
  EXPECT_THROW(Array(sixValues<T>(), Shape({2, 2})), UsageError);
  EXPECT_THROW(Array(sixValues<T>(), Shape({7})), UsageError);
}

TYPED_TEST(CppArray, isSeenWithoutACopy) {
  using T = typename TypeParam::Type;
  Array array = Array::zeros<T>(2, 3);
  EXPECT_EQ(array.toVector<T>(), std::vector<T>(6));
  const Span<T> span = array.span<T>();
  ASSERT_EQ(span.size(), 6U);
  EXPECT_EQ(span.data(), const_cast<const Array&>(array).span<T>().data());
  for (T& element : span) element = T(1);
  EXPECT_EQ(array.toVector<T>(), std::vector<T>(6, T(1)));
  EXPECT_EQ(span.at(5), T(1));
  EXPECT_THROW(span.at(6), UsageError);
  const void* const data = TypeParam::classId == hcyLOGICAL_CLASS ? hcyGetLogicals(array.get())
                           : TypeParam::classId == hcyCHAR_CLASS
                               ? static_cast<void*>(hcyGetChars(array.get()))
                               : hcyGetData(array.get());
  EXPECT_EQ(static_cast<const void*>(span.data()), data);
}

TYPED_TEST(CppArray, mayBeEmpty) {
  using T = typename TypeParam::Type;
  const Array array = std::vector<T>();
  EXPECT_EQ(array.shape(), (Shape{0, 1}));
  EXPECT_TRUE(array.isEmpty());
  EXPECT_TRUE(array.span<T>().empty());
  EXPECT_THROW(array.scalar(), UsageError);
  EXPECT_EQ(Array::zeros<T>(Shape{}).shape(), (Shape{0, 0}));
  EXPECT_EQ(Array::zeros<T>(Shape{3}).shape(), (Shape{3, 1}));
}

template <class T>
void expectAnotherClass(Array& array) {
  EXPECT_THROW(array.span<T>(), UsageError);
  EXPECT_THROW(const_cast<const Array&>(array).span<T>(), UsageError);
}

TYPED_TEST(CppArray, isNotSeenAsAnotherClass) {
  using T = typename TypeParam::Type;
  Array array = Array::zeros<T>(1, 1);
  const auto check = [&array](auto other) {
    using Other = decltype(other);
    if constexpr (!std::is_same_v<T, Other>) expectAnotherClass<Other>(array);
  };
  check(std::uint8_t{}), check(std::int8_t{}), check(std::uint16_t{}), check(std::int16_t{});
  check(std::uint32_t{}), check(std::int32_t{}), check(std::uint64_t{}), check(std::int64_t{});
  check(float{}), check(double{}), check(bool{}), check(char16_t{});
}

TEST(CppArrayOf, complexNumbersKeepsBothParts) {
  const std::vector<std::complex<double>> values = {{1, -1}, {2, 0.5}};
  Array array = values;
  EXPECT_TRUE(array.isComplex());
  EXPECT_EQ(array.toVector<std::complex<double>>(), values);
  EXPECT_EQ(array.toVector<double>(), (std::vector<double>{1, 2}));
  ASSERT_EQ(array.imaginary<double>().size(), 2U);
  array.imaginary<double>()[1] = 7;
  EXPECT_EQ(array.toVector<std::complex<double>>()[1], (std::complex<double>{2, 7}));
  EXPECT_THROW(array.imaginary<float>(), UsageError);

  const Array small = std::complex<float>(1, 2);
  EXPECT_EQ(small.className(), "single");
  EXPECT_EQ(small.toVector<std::complex<float>>()[0], (std::complex<float>{1, 2}));
  const Array integers({std::complex<std::int16_t>(3, -4)}, {1, 1});
  EXPECT_EQ(integers.className(), "int16");
  EXPECT_EQ(integers.imaginary<std::int16_t>()[0], -4);
  const Array zeros = Array::zeros<std::complex<double>>({2, 2, 2});
  EXPECT_EQ(zeros.imaginary<double>().size(), 8U);
}

TEST(CppArrayOf, realNumbersHasNoImaginaryParts) {
  const Array array{1.0, 2.0};
  EXPECT_TRUE(array.imaginary<double>().empty());
  EXPECT_EQ(array.toVector<std::complex<double>>(),
            (std::vector<std::complex<double>>{{1, 0}, {2, 0}}));
}

TEST(CppArrayOf, otherIntegerTypesIsOfTheClassOfTheirWidth) {
  EXPECT_EQ(Array(5LL).className(), "int64");
  EXPECT_EQ(Array(5ULL).className(), "uint64");
  EXPECT_EQ(Array(5L).className(), "int64");
  EXPECT_EQ((Array{1, 2, 3}).className(), "int32");
  EXPECT_EQ(Array(std::vector<unsigned long long>{1, ~0ULL}).toVector<std::uint64_t>(),
            (std::vector<std::uint64_t>{1, UINT64_MAX}));
}

TEST(CppArrayShape, isThatOfRows) {
  const Array matrix = Array::fromRows<double>({{1, 2, 3}, {4, 5, 6}});
  EXPECT_EQ(matrix.shape(), (Shape{2, 3}));
  EXPECT_EQ(matrix.toVector<double>(), (std::vector<double>{1, 4, 2, 5, 3, 6}));
  const Array flags = Array::fromRows({{true}, {false}});
  EXPECT_EQ(flags.className(), "logical");
  EXPECT_EQ(flags.toVector<bool>(), (std::vector<bool>{true, false}));
  EXPECT_EQ(Array::fromRows<float>({}).shape(), (Shape{0, 0}));
  EXPECT_EQ(Array::fromRows<float>({{}, {}}).shape(), (Shape{2, 0}));
  EXPECT_THROW(Array::fromRows<double>({{1, 2}, {3}}), UsageError);
  EXPECT_THROW(Array::fromRows<double>({{1}, {2, 3}}), UsageError);
}

TEST(CppArrayShape, mayChange) {
  Array array({1.0, 2.0, 3.0, 4.0, 5.0, 6.0}, {2, 3});
  EXPECT_EQ(array.rows(), 2U);
  EXPECT_EQ(array.columns(), 3U);
  array.resize({3, 1, 3});
  EXPECT_EQ(array.shape(), (Shape{3, 1, 3}));
  EXPECT_EQ(array.toVector<double>(), (std::vector<double>{1, 2, 3, 4, 5, 6, 0, 0, 0}));
  array.resize({2});
  EXPECT_EQ(array.shape(), (Shape{2, 1}));
}

TEST(CppArrayShape, staysWhenTheNewOneCannotBe) {
  Array array({1.0, 2.0}, {2, 1});
  Array structure = Array::structs({1, 1}, {"a", "b", "c"});
  Array sparse = Array::sparse<double>(2, 2, 1);
  EXPECT_THROW(array.resize({}), UsageError);
  EXPECT_THROW(array.resize({65536, 32768}), UsageError);
  EXPECT_THROW(array.resize({std::size_t{1} << 32, 0}), UsageError);
  EXPECT_THROW(structure.resize({1 << 30, 1}), UsageError);
  EXPECT_THROW(array.resize({2, std::size_t{1} << 63}), UsageError);
  EXPECT_THROW(sparse.resize({1, std::size_t{1} << 31}), UsageError);
  EXPECT_THROW(sparse.resize({65536, 32768}), UsageError);
  EXPECT_THROW(sparse.resize({0, 2147483647}), UsageError);
  EXPECT_EQ(array.shape(), (Shape{2, 1}));
  EXPECT_EQ(structure.shape(), (Shape{1, 1}));
  EXPECT_EQ(sparse.shape(), (Shape{2, 2}));
}

constexpr std::size_t kTooMany = std::size_t{1} << 31;

// The library would throw an exception of its own.
TEST(CppArrayShape, isRefusedWhereItIsTooLarge) {
  const std::string text = "an array cannot be this large: ";
  EXPECT_EQ(refusalOf([] { Array::zeros<double>(kTooMany, 1); }), text + "2147483648-by-1");
  EXPECT_EQ(refusalOf([] { Array::zeros<float>({kTooMany}); }), text + "2147483648-by-1");
  EXPECT_EQ(refusalOf([] { Array::zeros<bool>(65536, 32768); }), text + "65536-by-32768");
  EXPECT_EQ(refusalOf([] { Array::zeros<bool>({2, 2, kTooMany}); }), text + "2-by-2-by-2147483648");
  EXPECT_EQ(refusalOf([] { Array::zeros<char16_t>(0, kTooMany); }), text + "0-by-2147483648");
  EXPECT_EQ(refusalOf([] {
              Array::zeros<char16_t>({kTooMany, kTooMany, kTooMany});
            }),
            text + "2147483648-by-2147483648-by-2147483648");
  EXPECT_EQ(refusalOf([] { Array::zeros<char16_t>(Shape(40, 1024)); }),
            text + "1024-by-1024-by-1024-by-1024-by-1024-by-1024-by-1024-by-1024-by-...");
  EXPECT_EQ(refusalOf([] { Array::cells({kTooMany, 1}); }), text + "2147483648-by-1");
  EXPECT_EQ(refusalOf([] {
              Array::structs({1U << 30U, 1}, {"a", "b"});
            }),
            text + "1073741824-by-1 with 2 fields");
  EXPECT_EQ(refusalOf([] { Array::sparse<double>(kTooMany, 1, 1); }), text + "2147483648-by-1");
  EXPECT_EQ(refusalOf([] { Array::sparse<bool>(1, 2147483647, 1); }), text + "1-by-2147483647");
  EXPECT_EQ(refusalOf([] { Array::sparse<double>(1, 1, kTooMany); }),
            "there are too many stored elements: 2147483648");
  EXPECT_EQ(refusalOf([] { Array(1.0).resize({kTooMany, 1}); }), text + "2147483648-by-1");
}

TEST(CppArrayShape, mayBeLargeWithoutElements) {
  EXPECT_EQ(Array::zeros<double>({65536, 65536, 0}).shape(), (Shape{65536, 65536, 0}));
  Array array = 1.0;
  array.resize({0, 2147483647});
  EXPECT_TRUE(array.isEmpty());
}

// Text of 2147483648 code units, all of one byte that many views look at.
TEST(CppArrayShape, isRefusedForTextThatIsTooLong) {
  const void* const nothing =
      ::mmap(nullptr, 2 * kTooMany, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(nothing, MAP_FAILED);
  const std::u16string_view units(static_cast<const char16_t*>(nothing), kTooMany);
  EXPECT_EQ(refusalOf([&] { const Array array(units); }),
            "an array cannot be this large: 1-by-2147483648");
  ::munmap(const_cast<void*>(nothing), 2 * kTooMany);
}

// The C interface keeps calling such an array complex.
TEST(CppArrayShape, takesImaginaryPartsAwayWithTheElements) {
  Array array = std::vector<std::complex<double>>{{1, 2}, {3, 4}};
  array.resize({0, 1});
  array.resize({2, 1});
  EXPECT_TRUE(array.isComplex());
  EXPECT_TRUE(array.imaginary<double>().empty());
  EXPECT_EQ(array.toVector<double>(), (std::vector<double>{0, 0}));
  EXPECT_EQ(array.toVector<std::complex<double>>(), (std::vector<std::complex<double>>(2)));
  EXPECT_EQ(array.scalar(), 0);
  Array cell = Array::cellOf({array});
  EXPECT_EQ(cell[0].toVector<double>(), (std::vector<double>{0, 0}));
}

TEST(CppArrayShape, mayHaveAsManyElementsAsFit) {
  for (const Shape& shape : {Shape{2147483647, 1}, Shape{2147483647}}) {
    Array sparse = Array::sparse<double>(2, 2, 1);
    sparse.resize(shape);
    EXPECT_EQ(sparse.shape(), (Shape{2147483647, 1}));
  }
}

TEST(CppArrayShape, leadsToTheIndexOfAnElement) {
  const Array array = Array::zeros<double>({2, 3, 4});
  EXPECT_EQ(array.index({1, 2, 3}), 23U);
  EXPECT_EQ(array.index({1, 0, 1}), 7U);
  EXPECT_THROW(array.index({2, 0, 0}), UsageError);
  EXPECT_THROW(array.index({0, 0, 4}), UsageError);
  EXPECT_THROW(array.index({0, 0}), UsageError);
  Shape shortened = {0, 0, 0};
  shortened.pop_back();
  EXPECT_THROW(array.index(shortened), UsageError);
  EXPECT_THROW(array.index({0, 0, 0, 0}), UsageError);
}

TEST(CppArrayOwner, movesAndCopies) {
  Array array{1.0, 2.0};
  hcyArray* const handle = array.get();
  Array moved = std::move(array);
  EXPECT_EQ(moved.get(), handle);
  EXPECT_FALSE(array);
  EXPECT_THROW(array.size(), UsageError);
  EXPECT_THROW(array.span<double>(), UsageError);
  Array copy = moved.copy();
  copy.span<double>()[0] = 9;
  EXPECT_EQ(moved.scalar(), 1);
  array = Array::adopt(moved.release());
  EXPECT_EQ(array.get(), handle);
  EXPECT_FALSE(moved);
  EXPECT_FALSE(Array());
}

TEST(CppArrayOwner, isSaidToBeEmptyWhereThereIsNoArray) {
  const std::string text = "the Array is empty";
  EXPECT_EQ(refusalOf([] { static_cast<void>(Array().size()); }), text);
  EXPECT_EQ(refusalOf([] { static_cast<void>(Array().copy()); }), text);
  EXPECT_EQ(refusalOf([] { Array::cellOf({Array()}); }), text);
}

}  // namespace
}  // namespace hcyclient
