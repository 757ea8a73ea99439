// SPDX-License-Identifier: Apache-2.0
//
// What a UsageError says about the array in hand.

#include <gtest/gtest.h>

#include <complex>
#include <hcy/hcyclient.hpp>
#include <hcy/hcyclient_eigen.hpp>
#include <string>
#include <utility>
#include <vector>

#include "refusal.h"

namespace hcyclient {
namespace {

class CppArrayMessages : public ::testing::Test {
 protected:
  Array matrix = Array::zeros<double>(2, 3);
  Array cell = Array::cellOf({1.0, 2.0});
  Array structure = Array::structOf({{"a", 1.0}, {"list", Array::cellOf({1.0})}});
  Array sparse = Array::sparse<double>(3, 3, {{2, 2, 1.0}});
  Array text = "text";
};

TEST_F(CppArrayMessages, nameClassAndShape) {
  EXPECT_EQ(refusalOf([&] { matrix.span<float>(); }),
            "the 2-by-3 double array is not single: toVector<T>() reads and converts its elements");
  EXPECT_EQ(refusalOf([&] { text.toVector<double>(); }),
            "the 1-by-4 char array is not numeric or logical: toString() reads it");
  EXPECT_EQ(refusalOf([&] { cell.at<double>(0); }),
            "the 2-by-1 cell array is not numeric or logical: cell[i] reads an element");
  EXPECT_EQ(refusalOf([&] { std::as_const(structure)[0]; }),
            "the 1-by-1 struct array is not a cell array: s(\"name\") reads a field");
  EXPECT_EQ(refusalOf([&] { sparse.span<float>(); }),
            "the 3-by-3 sparse double array is not single: entries<T>() reads and converts its "
            "entries");
  EXPECT_EQ(refusalOf([&] { cell.fields(); }),
            "the 2-by-1 cell array is not a struct array: cell[i] reads an element");
  EXPECT_EQ(refusalOf([&] { matrix.rowIndices(); }).substr(0, 38),
            "the 2-by-3 double array is not sparse:");
  EXPECT_EQ(refusalOf([&] { sparse.convertTo<float>(); }).substr(0, 42),
            "the 3-by-3 sparse double array is not full");
  const Array complex = std::complex<double>(1, 2);
  EXPECT_EQ(refusalOf([&] { complex.span<float>(); }).substr(0, 46),
            "the 1-by-1 complex double array is not single:");
}

TEST_F(CppArrayMessages, nameTheElement) {
  EXPECT_EQ(refusalOf([&] { matrix.at<double>(7); }),
            "the 2-by-3 double array has no element 7; the last one is 5");
  EXPECT_EQ(refusalOf([&] { matrix.at<double>(2, 0); }),
            "the 2-by-3 double array has no element (2, 0)");
  EXPECT_EQ(refusalOf([&] { matrix.index(0, 0, 4); }),
            "the 2-by-3 double array has no element (0, 0, 4)");
  EXPECT_EQ(refusalOf([] { Array::zeros<float>(0, 3).at<float>(0); }),
            "the 0-by-3 single array has no element 0");
  EXPECT_EQ(refusalOf([&] { structure("list")[3].get(); }),
            "the 1-by-1 cell array has no element 3; the last one is 0");
  EXPECT_EQ(refusalOf([&] { structure.fields(1); }),
            "the 1-by-1 struct array has no element 1; the last one is 0");
  EXPECT_EQ(refusalOf([&] { matrix.span<double>().at(6); }), "the Span of 6 has no element 6");
}

TEST_F(CppArrayMessages, nameTheField) {
  const std::string wanted =
      "the 1-by-1 struct array has no field b: fieldNames() returns its fields";
  EXPECT_EQ(refusalOf([&] { structure("b").get(); }), wanted);
  EXPECT_EQ(refusalOf([&] { structure.removeField("b"); }), wanted);
}

TEST_F(CppArrayMessages, sayWhatReadsMoreOrFewerElements) {
  EXPECT_EQ(refusalOf([&] { matrix.scalar<double>(); }),
            "expected one element, but the 2-by-3 double array has 6: toVector<T>() reads and "
            "converts its elements");
  EXPECT_EQ(refusalOf([] { Array::zeros<double>(0, 0).scalar<double>(); }),
            "expected one element, but the 0-by-0 double array has 0: see value_or()");
  EXPECT_EQ(refusalOf([&] { cell.scalar(); }),
            "the 2-by-1 cell array has no number to read: cell[i] reads an element");
  EXPECT_EQ(refusalOf([] { Array::zeros<double>(0, 0).scalar(); }),
            "the 0-by-0 double array has no number to read");
}

TEST_F(CppArrayMessages, sayWhatDoesNotFit) {
  EXPECT_EQ(refusalOf([] { Array(std::vector<double>(5), 2, 3); }),
            "5 values do not fill the shape 2-by-3");
  EXPECT_EQ(refusalOf([] {
              Array::fromRows<double>({{1, 2}, {3, 4}, {5}});
            }),
            "the rows differ in length: row 2 has 1 elements, row 0 has 2");
  EXPECT_EQ(refusalOf([] {
              Array::sparse<double>(3, 3, {{1, 3, 1.0}});
            }),
            "an entry is outside the array: (1, 3) in the 3-by-3 sparse double array");
  EXPECT_EQ(refusalOf([] {
              Array::sparse<double>(3, 3, {{1, 2, 1.0}, {1, 2, 1.0}});
            }),
            "two entries have the same row and column: (1, 2)");
  EXPECT_EQ(refusalOf([&] { toEigen<Eigen::Vector2d>(matrix); }),
            "the 2-by-3 double array does not fit the matrix type");
  EXPECT_EQ(refusalOf([&] { asEigen<double>(sparse); }),
            "the 3-by-3 sparse double array is not full: see asSparseEigen()");
  EXPECT_EQ(refusalOf([] { toEigen<Eigen::MatrixXd>(Array::zeros<double>(1, 2, 3)); }),
            "the 1-by-2-by-3 double array does not have two dimensions");
}

}  // namespace
}  // namespace hcyclient
