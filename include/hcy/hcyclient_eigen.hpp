/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient_eigen.hpp
 * @brief Converts Eigen matrices (Eigen 3.4 or newer) to arrays and back. hcyclient.hpp does not
 *        include this header.
 *
 * @code
 * Eigen::MatrixXd A = ...;
 * hcyclient::Array x = context.call(url, hcyclient::toArray(A), hcyclient::toArray(b));
 * auto view = hcyclient::asEigen<double>(x);                   // no copy; x must outlive it
 * Eigen::VectorXd mine = hcyclient::toEigen<Eigen::VectorXd>(x);  // a copy
 * @endcode
 */
#ifndef HCY_HCYCLIENT_EIGEN_HPP
#define HCY_HCYCLIENT_EIGEN_HPP

#include <Eigen/Core>
#include <Eigen/SparseCore>
#include <algorithm>
#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <string>
#include <type_traits>

namespace hcyclient {

namespace detail {

// Eigen uses signed indices; those of an array are the same numbers, unsigned.
using SparseIndex = std::make_signed_t<std::size_t>;
template <class T>
using EigenMatrix = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic>;
template <class T>
using EigenSparse = Eigen::SparseMatrix<T, Eigen::ColMajor, SparseIndex>;

inline void requireFull(const Array& array) {
  if (!array.isSparse()) return;
  throw UsageError(described(array.get()) + " is not full: see asSparseEigen()");
}

inline void requireMatrix(const Array& array) {
  if (array.dimensions().size() == 2) return;
  throw UsageError(described(array.get()) + " does not have two dimensions");
}

template <class T>
Eigen::Map<EigenMatrix<T>> mapOf(T* data, const Array& array) {
  return {data, static_cast<Eigen::Index>(array.rows()),
          static_cast<Eigen::Index>(array.columns())};
}

}  // namespace detail

/**
 * @defgroup cpp_eigen C++: Eigen
 * @brief Converts Eigen matrices to arrays and back.
 * @{
 */

/** An array with the elements of a matrix, vector or expression. Its class is that of their scalar
 *  type. An expression is evaluated into the array. */
template <class Derived>
Array toArray(const Eigen::DenseBase<Derived>& matrix) {
  using T = typename Derived::Scalar;
  using Part = detail::Part<T>;
  Array array = Array::zeros<T>(matrix.rows(), matrix.cols());
  if (matrix.size() == 0) return array;
  auto real = detail::mapOf(array.span<Part>().data(), array);
  if constexpr (detail::Parts<T>::areTwo) {
    // Evaluate only once for both parts.
    const auto& values = matrix.derived().eval();
    real = values.real();
    detail::mapOf(array.imaginary<Part>().data(), array) = values.imag();
  } else {
    real = matrix.derived();
  }
  return array;
}

/** A sparse array with the stored elements of a sparse matrix or expression of double,
 *  std::complex<double> or bool. */
template <class Derived>
Array toArray(const Eigen::SparseMatrixBase<Derived>& matrix) {
  using T = typename Derived::Scalar;
  using Part = detail::Part<T>;
  // Column by column, without gaps.
  detail::EigenSparse<T> packed = matrix.derived();
  packed.makeCompressed();
  const auto count = static_cast<std::size_t>(packed.nonZeros());
  Array array = Array::sparse<T>(packed.rows(), packed.cols(), count);
  const Span<std::size_t> starts = array.columnStarts();
  std::copy_n(packed.outerIndexPtr(), starts.size(), starts.begin());
  if (count == 0) return array;
  std::copy_n(packed.innerIndexPtr(), count, array.rowIndices().begin());
  const Span<Part> real = array.span<Part>();
  if constexpr (detail::Parts<T>::areTwo) {
    const Span<Part> imaginary = array.imaginary<Part>();
    for (std::size_t i = 0; i < count; ++i) {
      real[i] = packed.valuePtr()[i].real();
      imaginary[i] = packed.valuePtr()[i].imag();
    }
  } else {
    std::copy_n(packed.valuePtr(), count, real.begin());
  }
  return array;
}

/** The elements of a matrix in the array's own storage, for reading and writing; for a complex
 *  array, the real parts. Valid as long as a Span. Throws UsageError unless the array is full, has
 *  two dimensions and is of the class of T; IncompleteReply if elements did not arrive. */
template <class T>
Eigen::Map<detail::EigenMatrix<T>> asEigen(Array& array) {
  detail::requireMatrix(array);
  detail::requireFull(array);
  return detail::mapOf(array.span<T>().data(), array);
}
/** The read-only overload. */
template <class T>
Eigen::Map<const detail::EigenMatrix<T>> asEigen(const Array& array) {
  detail::requireMatrix(array);
  detail::requireFull(array);
  return {array.span<T>().data(), static_cast<Eigen::Index>(array.rows()),
          static_cast<Eigen::Index>(array.columns())};
}
template <class T>
void asEigen(const Array&& array) = delete; /**< Keep the array: `Array x = ...;`. */

/** A read-only view of a sparse matrix in the array's own storage; for a complex array, the real
 *  parts. T is double or bool. Valid as long as a Span. Throws UsageError unless the array is
 *  sparse and of the class of T; IncompleteReply if it is incomplete. */
template <class T>
Eigen::Map<const detail::EigenSparse<T>> asSparseEigen(const Array& array) {
  detail::requireMatrix(array);
  const Span<const std::size_t> starts = array.columnStarts();
  const Span<const T> values = array.span<T>();
  return {static_cast<Eigen::Index>(array.rows()),
          static_cast<Eigen::Index>(array.columns()),
          static_cast<Eigen::Index>(values.size()),
          reinterpret_cast<const detail::SparseIndex*>(starts.data()),
          reinterpret_cast<const detail::SparseIndex*>(array.rowIndices().data()),
          values.data()};
}
template <class T>
void asSparseEigen(const Array&& array) = delete; /**< Keep the array: `Array x = ...;`. */

/** A copy as an Eigen matrix or vector: `toEigen<Eigen::MatrixXcd>(array)`. Elements are converted
 *  to its scalar type. Throws UsageError if the shape does not fit the matrix type, the array is
 *  sparse or has more than two dimensions, or an element cannot be represented exactly;
 *  IncompleteReply if elements did not arrive. */
template <class Matrix>
Matrix toEigen(const Array& array) {
  static_assert(!std::is_base_of_v<Eigen::SparseMatrixBase<Matrix>, Matrix>,
                "toEigen makes dense matrices; write asSparseEigen<T>(array) for a sparse one");
  using T = typename Matrix::Scalar;
  detail::requireMatrix(array);
  detail::requireFull(array);
  const auto rows = static_cast<Eigen::Index>(array.rows());
  const auto columns = static_cast<Eigen::Index>(array.columns());
  const auto fits = [](Eigen::Index size, int fixed) {
    return fixed == Eigen::Dynamic || size == fixed;
  };
  if (!fits(rows, Matrix::RowsAtCompileTime) || !fits(columns, Matrix::ColsAtCompileTime)) {
    throw UsageError(detail::described(array.get()) + " does not fit the matrix type");
  }
  const Array converted = array.convertTo<T>();
  using Part = detail::Part<T>;
  Matrix matrix(rows, columns);
  if constexpr (detail::Parts<T>::areTwo) {
    const Span<const Part> imaginary = converted.imaginary<Part>();
    matrix.real() = asEigen<Part>(converted);
    matrix.imag().setZero();
    if (!imaginary.empty()) {
      matrix.imag() = Eigen::Map<const detail::EigenMatrix<Part>>(imaginary.data(), rows, columns);
    }
  } else {
    matrix = asEigen<Part>(converted);
  }
  return matrix;
}

/** @} */

}  // namespace hcyclient

#endif  // HCY_HCYCLIENT_EIGEN_HPP
