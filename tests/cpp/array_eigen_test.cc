// SPDX-License-Identifier: Apache-2.0
//
// Matrices of Eigen in and out.

#include <gtest/gtest.h>

#include <complex>
#include <hcy/hcyclient_eigen.hpp>
#include <type_traits>
#include <utility>

namespace hcyclient {
namespace {

// Neither a matrix nor a vector is a list of values: a row would become a column, and the elements
// may not be contiguous.
static_assert(!std::is_constructible_v<Array, Eigen::MatrixXd>);
static_assert(!std::is_constructible_v<Array, Eigen::VectorXd>);
static_assert(!std::is_constructible_v<Input, Eigen::VectorXd>);
static_assert(!std::is_constructible_v<Array, decltype(Eigen::MatrixXd().row(0))>);
static_assert(!std::is_constructible_v<Array, decltype(Eigen::MatrixXd().diagonal())>);

// A view of what is gone.
template <class A, class = void>
struct IsSeen : std::false_type {};
template <class A>
struct IsSeen<A, std::void_t<decltype(asEigen<double>(std::declval<A>()).size())>>
    : std::true_type {};
static_assert(IsSeen<Array&>::value && IsSeen<const Array&>::value && !IsSeen<Array>::value);

TEST(CppArrayEigen, takesDenseMatrices) {
  Eigen::MatrixXd A(2, 3);
  A << 1, 2, 3, 4, 5, 6;
  EXPECT_EQ(toArray(A), Array::fromRows<double>({{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(toArray(A.transpose() * 2), Array::fromRows<double>({{2, 8}, {4, 10}, {6, 12}}));
  EXPECT_EQ(toArray(A.block(0, 1, 2, 1)), Array({2.0, 5.0}));
  EXPECT_EQ(toArray(Eigen::Vector2i(7, 8)), Array({7, 8}));
  EXPECT_EQ(toArray(Eigen::RowVector2f(7, 8)), Array::row({7.0F, 8.0F}));
  EXPECT_EQ(toArray((A.array() > 3).matrix()),
            Array::fromRows<bool>({{false, false, false}, {true, true, true}}));
  Eigen::Matrix<double, 2, 3, Eigen::RowMajor> byRows = A;
  EXPECT_EQ(toArray(byRows), toArray(A));
  Eigen::MatrixXcd Z(1, 2);
  Z << std::complex<double>(1, 2), std::complex<double>(3, -4);
  EXPECT_EQ(toArray(Z), Array({std::complex<double>(1, 2), std::complex<double>(3, -4)}, {1, 2}));
  EXPECT_EQ(toArray(Eigen::MatrixXd(0, 3)).shape(), (Shape{0, 3}));
}

TEST(CppArrayEigen, isSeenWithoutACopy) {
  Array array = Array::fromRows<double>({{1, 2, 3}, {4, 5, 6}});
  auto view = asEigen<double>(array);
  EXPECT_EQ(view.data(), array.span<double>().data());
  EXPECT_EQ(view(1, 2), 6);
  view *= 2;
  EXPECT_EQ(array.at<double>(1, 2), 12);
  EXPECT_EQ(asEigen<double>(std::as_const(array)).sum(), 42);
  EXPECT_THROW(asEigen<float>(array), UsageError);
  Array deep = Array::zeros<double>(2, 2, 2);
  EXPECT_THROW(asEigen<double>(deep), UsageError);
  Array sparse = Array::sparse<double>(2, 2, {});
  EXPECT_THROW(asEigen<double>(sparse), UsageError);
  EXPECT_THROW(asEigen<double>(std::as_const(sparse)), UsageError);
}

TEST(CppArrayEigen, isCopiedOut) {
  const Array array = Array::fromRows<double>({{1, 2}, {3, 4}});
  EXPECT_EQ(toEigen<Eigen::MatrixXd>(array)(1, 0), 3);
  EXPECT_EQ(toEigen<Eigen::Matrix2i>(array)(0, 1), 2);
  EXPECT_EQ(toEigen<Eigen::MatrixXcd>(array)(1, 1), std::complex<double>(4, 0));
  EXPECT_EQ(toEigen<Eigen::MatrixXcd>(Array::zeros<double>(0, 2)).cols(), 2);
  const Array complex = Array({std::complex<double>(1, 2), std::complex<double>(3, 4)});
  EXPECT_EQ(toEigen<Eigen::VectorXcd>(complex)(1), std::complex<double>(3, 4));
  EXPECT_THROW(toEigen<Eigen::VectorXd>(complex), UsageError);
  EXPECT_THROW(toEigen<Eigen::VectorXd>(array), UsageError);
  EXPECT_THROW(toEigen<Eigen::Matrix3d>(array), UsageError);
  EXPECT_THROW(toEigen<Eigen::MatrixXi>(Array(0.5)), UsageError);
  EXPECT_THROW(toEigen<Eigen::MatrixXd>(Array::sparse<double>(2, 2, {})), UsageError);
  EXPECT_EQ(toEigen<Eigen::MatrixXd>(Array::zeros<double>(0, 3)).cols(), 3);
}

TEST(CppArrayEigen, takesAndGivesSparseMatrices) {
  Eigen::SparseMatrix<double> A(3, 4);
  A.insert(0, 1) = 1.5;
  A.insert(2, 1) = -2;
  A.insert(1, 3) = 4;  // not compressed
  const Array array = toArray(A);
  EXPECT_EQ(array, Array::sparse<double>(3, 4, {{0, 1, 1.5}, {2, 1, -2.0}, {1, 3, 4.0}}));
  const auto view = asSparseEigen<double>(array);
  EXPECT_EQ(view.coeff(2, 1), -2);
  EXPECT_EQ(view.nonZeros(), 3);
  EXPECT_EQ(view.valuePtr(), array.span<double>().data());
  EXPECT_EQ((view * Eigen::VectorXd::Ones(4))(0), 1.5);
  const Eigen::SparseMatrix<double, Eigen::RowMajor> byRows = A;
  EXPECT_EQ(toArray(byRows), array);
  const Eigen::SparseMatrix<std::complex<double>> Z =
      A.cast<std::complex<double>>() * std::complex<double>(0, 1);
  EXPECT_EQ(toArray(Z).at<std::complex<double>>(0, 1), std::complex<double>(0, 1.5));
  EXPECT_EQ(toArray(Eigen::SparseMatrix<double>(2, 3)).shape(), (Shape{2, 3}));
  const Array full = 1.0;
  EXPECT_THROW(asSparseEigen<double>(full), UsageError);
}

}  // namespace
}  // namespace hcyclient
