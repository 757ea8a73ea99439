// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <complex>
#include <hcy/hcyclient.hpp>
#include <vector>

namespace hcyclient {
namespace {

template <class T>
std::vector<T> copied(Span<T> span) {
  return {span.begin(), span.end()};
}

template <class T>
void expectEntries(const Array& array, const std::vector<Entry<T>>& expected) {
  const std::vector<Entry<T>> entries = array.entries<T>();
  ASSERT_EQ(entries.size(), expected.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i].row, expected[i].row) << i;
    EXPECT_EQ(entries[i].column, expected[i].column) << i;
    EXPECT_EQ(entries[i].value, expected[i].value) << i;
  }
}

TEST(CppArraySparse, isMadeFromEntriesInAnyOrder) {
  Array array = Array::sparse<double>(3, 4, {{2, 3, 5.0}, {1, 0, 1.0}, {0, 3, 4.0}, {0, 1, 2.0}});
  EXPECT_TRUE(array.isSparse());
  EXPECT_TRUE(array.is<double>());
  EXPECT_EQ(array.shape(), (Shape{3, 4}));
  EXPECT_EQ(copied(array.columnStarts()), (std::vector<std::size_t>{0, 1, 2, 2, 4}));
  EXPECT_EQ(copied(array.rowIndices()), (std::vector<std::size_t>{1, 0, 0, 2}));
  EXPECT_EQ(array.toVector<double>(), (std::vector<double>{1, 2, 4, 5}));
  EXPECT_EQ(static_cast<void*>(array.rowIndices().data()), hcyGetIr(array.get()));
  EXPECT_EQ(static_cast<void*>(array.columnStarts().data()), hcyGetJc(array.get()));
  expectEntries<double>(array, {{1, 0, 1.0}, {0, 1, 2.0}, {0, 3, 4.0}, {2, 3, 5.0}});
}

TEST(CppArraySparse, mayHoldComplexNumbersOrLogicalValues) {
  using Complex = std::complex<double>;
  const std::vector<Entry<Complex>> numbers = {{0, 0, {1, 2}}, {1, 1, {3, -4}}};
  const Array complex = Array::sparse<Complex>(2, 2, numbers);
  EXPECT_TRUE(complex.isComplex());
  expectEntries(complex, numbers);
  const std::vector<Entry<bool>> flags = {{1, 0, true}, {0, 2, true}};
  const Array logical = Array::sparse<bool>(2, 3, flags);
  EXPECT_EQ(logical.className(), "logical");
  expectEntries(logical, flags);
  EXPECT_EQ(logical.entries<double>()[0].value, 1);
  EXPECT_THROW(Array::sparse<double>(1, 1, {{0, 0, 0.5}}).entries<bool>(), UsageError);
}

TEST(CppArraySparse, mayHoldNothing) {
  const Array array = Array::sparse<double>(3, 2, {});
  EXPECT_EQ(array.columnStarts().size(), 3U);
  expectEntries<double>(array, {});
  expectEntries<double>(Array::sparse<double>(0, 0, std::vector<Entry<double>>()), {});
}

TEST(CppArraySparse, isFilledInPlace) {
  Array array = Array::sparse<double>(2, 2, 2);
  array.rowIndices()[0] = 1;
  array.span<double>()[0] = 7;
  array.columnStarts()[1] = array.columnStarts()[2] = 1;
  expectEntries<double>(array, {{1, 0, 7.0}});
  EXPECT_EQ(array.scalar(), 7);
}

// More than 2147483647 elements are legal.
TEST(CppArraySparse, mayBeLargerThanAFullArray) {
  const std::vector<Entry<double>> entries = {
      {49999, 0, 1.0}, {0, 49999, 2.0}, {49999, 49999, 3.0}};
  Array array = Array::sparse<double>(50000, 50000, entries);
  EXPECT_EQ(array.size(), 2500000000U);
  EXPECT_EQ(array.columnStarts().size(), 50001U);
  EXPECT_EQ(copied(array.rowIndices()), (std::vector<std::size_t>{49999, 0, 49999}));
  EXPECT_EQ(copied(array.span<double>()), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(array.toVector<double>(), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(array.scalar(), 1);
  expectEntries(array, entries);
  expectEntries(array.copy(), entries);

  Array logical = Array::sparse<bool>(2147483647, 5, 1);
  logical.span<bool>()[0] = true;
  logical.rowIndices()[0] = 2147483646;
  for (std::size_t j = 3; j <= 5; ++j) logical.columnStarts()[j] = 1;
  expectEntries<bool>(logical, {{2147483646, 2, true}});
}

// To write, there is room; to read, there is what is stored.
TEST(CppArraySparse, isReadAsFarAsItsColumnsGo) {
  Array array = Array::sparse<std::complex<double>>(2, 2, 3);
  const Array& seen = array;
  EXPECT_EQ(array.span<double>().size(), 3U);
  EXPECT_EQ(array.imaginary<double>().size(), 3U);
  EXPECT_EQ(array.rowIndices().size(), 3U);
  EXPECT_TRUE(seen.span<double>().empty());
  array.columnStarts()[1] = array.columnStarts()[2] = 2;
  EXPECT_EQ(seen.span<double>().size(), 2U);
  EXPECT_EQ(seen.imaginary<double>().size(), 2U);
  EXPECT_EQ(seen.rowIndices().size(), 2U);
  EXPECT_EQ(array.toVector<std::complex<double>>().size(), 2U);
  array.columnStarts()[2] = 9;
  EXPECT_EQ(seen.span<double>().size(), 3U);
}

TEST(CppArraySparse, isReadWhereTheProgramSetItsColumnsWrong) {
  Array array = Array::sparse<double>(2, 2, {{0, 0, 1.0}, {1, 1, 2.0}});
  array.columnStarts()[1] = 900;
  EXPECT_EQ(array.at<double>(0, 0), 1);
  EXPECT_EQ(array.at<double>(1, 1), 0);
}

TEST(CppArraySparse, refusesEntriesThatDoNotFit) {
  EXPECT_THROW(Array::sparse<double>(2, 2, {{2, 0, 1.0}}), UsageError);
  EXPECT_THROW(Array::sparse<double>(2, 2, {{0, 2, 1.0}}), UsageError);
  EXPECT_THROW(Array::sparse<double>(2, 2, {{1, 0, 1.0}, {0, 0, 3.0}, {1, 0, 2.0}}), UsageError);
  EXPECT_THROW(Array::sparse<double>(2, 2, {{1, 0, 1.0}, {1, 0, 2.0}}), UsageError);
}

TEST(CppArraySparse, isNotReadBeyondItsStorage) {
  Array array = Array::sparse<double>(2, 2, {{0, 0, 1.0}, {1, 1, 2.0}});
  array.rowIndices()[1] = 2;
  EXPECT_THROW(array.entries<double>(), UsageError);
  array.rowIndices()[1] = 1;
  array.columnStarts()[2] = 3;
  EXPECT_THROW(array.entries<double>(), UsageError);
  array.columnStarts()[2] = 0;
  EXPECT_THROW(array.entries<double>(), UsageError);
}

TEST(CppArraySparse, isNotWhatAFullArrayIs) {
  Array array{1.0};
  EXPECT_THROW(array.rowIndices(), UsageError);
  EXPECT_THROW(array.columnStarts(), UsageError);
  EXPECT_THROW(array.entries<double>(), UsageError);
}

}  // namespace
}  // namespace hcyclient
