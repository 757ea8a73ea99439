// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstring>
#include <string_view>

#include "array/array_maker.h"
#include "wire/checked_size.h"
#include "wire/element_storage.h"
#include "wire/protobuf_version.h"
#include "wire/sparse_values.h"

using hcy::ArrayHandle;
using hcy::client::VORTEN_Array;

namespace {

bool isComplex(hcyComplexity complexity) { return complexity == hcyCOMPLEX; }

// The numeric class IDs are the numbers of the wire's types.
VORTEN_Array::QXType numericType(hcyClassID classid) {
  return static_cast<VORTEN_Array::QXType>(classid);
}

// A byte as a code unit, sign-extended.
char16_t codeUnit(char byte) { return static_cast<char16_t>(static_cast<signed char>(byte)); }

char16_t* codeUnitsOf(const ArrayHandle& array) { return static_cast<char16_t*>(array->getData()); }

std::uint64_t fieldCount(int nfields) { return static_cast<std::uint64_t>(std::max(nfields, 0)); }

hcyArray* withFieldNames(ArrayHandle array, int nfields, const char* const* fieldnames) {
  auto& names = array->data().writeContainer().fieldNames;
  names.reserve(fieldCount(nfields));
  for (int i = 0; i < nfields; ++i) names.emplace_back(fieldnames[i]);
  array->data().showPart();
  return array.release();
}

VORTEN_Array::Sparse& sparsePart(const ArrayHandle& array) { return array->data().writeSparse(); }

// A sparse array without values yet: row indices for nzmax stored elements, and column starts.
ArrayHandle makeSparse(std::size_t m, std::size_t n, std::size_t nzmax, bool complex,
                       VORTEN_Array::Sparse::SparseType type) {
  const int stored = hcy::checkedSize(nzmax);
  ArrayHandle array = hcy::makeMatrix(VORTEN_Array::SPARSE, m, n, complex);
  VORTEN_Array::Sparse& sparse = sparsePart(array);
  sparse.set_type(type);
  hcy::resizeElementStorage(array->data(), 0);
  hcy::resizeList(*sparse.mutable_ir(), stored);
  return array;
}

}  // namespace

hcyArray* hcyCreateDoubleMatrix(size_t m, size_t n, hcyComplexity complexity) {
  return hcy::makeMatrix(VORTEN_Array::DOUBLE, m, n, isComplex(complexity)).release();
}

hcyArray* hcyCreateNumericMatrix(size_t m, size_t n, hcyClassID classid, hcyComplexity complexity) {
  if (classid > hcyDOUBLE_CLASS) return nullptr;
  return hcy::makeMatrix(numericType(classid), m, n, isComplex(complexity)).release();
}

hcyArray* hcyCreateNumericArray(size_t ndim, const size_t* dims, hcyClassID classid,
                                hcyComplexity complexity) {
  if (classid > hcyDOUBLE_CLASS) return nullptr;
  return hcy::makeArray(numericType(classid), hcy::shapeOf(ndim, dims), isComplex(complexity))
      .release();
}

hcyArray* hcyCreateDoubleScalar(double value) {
  ArrayHandle array = hcy::makeMatrix(VORTEN_Array::DOUBLE, 1, 1, false);
  *static_cast<double*>(array->getData()) = value;
  return array.release();
}

hcyArray* hcyCreateLogicalMatrix(size_t m, size_t n) {
  return hcy::makeMatrix(VORTEN_Array::LOGICAL, m, n, false).release();
}

hcyArray* hcyCreateLogicalArray(size_t ndim, const size_t* dims) {
  return hcy::makeArray(VORTEN_Array::LOGICAL, hcy::shapeOf(ndim, dims), false).release();
}

hcyArray* hcyCreateLogicalScalar(bool value) {
  ArrayHandle array = hcy::makeMatrix(VORTEN_Array::LOGICAL, 1, 1, false);
  *static_cast<bool*>(array->getData()) = value;
  return array.release();
}

hcyArray* hcyCreateCharArray(size_t ndim, const size_t* dims) {
  return hcy::makeArray(VORTEN_Array::CHAR, hcy::shapeOf(ndim, dims), false).release();
}

hcyArray* hcyCreateString(const char* str) {
  const std::string_view text = str;
  ArrayHandle array = hcy::makeMatrix(VORTEN_Array::CHAR, text.empty() ? 0 : 1, text.size(), false);
  std::ranges::transform(text, codeUnitsOf(array), codeUnit);
  return array.release();
}

hcyArray* hcyCreateCharMatrixFromStrings(size_t m, const char* const* strs) {
  std::size_t longest = 0;
  for (std::size_t i = 0; i < m; ++i) longest = std::max(longest, std::strlen(strs[i]));
  ArrayHandle array = hcy::makeMatrix(VORTEN_Array::CHAR, m, longest, false);
  char16_t* const units = codeUnitsOf(array);
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; strs[i][j] != '\0'; ++j) units[i + j * m] = codeUnit(strs[i][j]);
  }
  return array.release();
}

hcyArray* hcyCreateCellMatrix(size_t m, size_t n) {
  return hcy::makeMatrix(VORTEN_Array::CELL, m, n, false).release();
}

hcyArray* hcyCreateCellArray(size_t ndim, const size_t* dims) {
  return hcy::makeArray(VORTEN_Array::CELL, hcy::shapeOf(ndim, dims), false).release();
}

hcyArray* hcyCreateStructMatrix(size_t m, size_t n, int nfields, const char* const* fieldnames) {
  return withFieldNames(hcy::makeMatrix(VORTEN_Array::STRUCT, m, n, false, fieldCount(nfields)),
                        nfields, fieldnames);
}

hcyArray* hcyCreateStructArray(size_t ndim, const size_t* dims, int nfields,
                               const char* const* fieldnames) {
  return withFieldNames(
      hcy::makeArray(VORTEN_Array::STRUCT, hcy::shapeOf(ndim, dims), false, fieldCount(nfields)),
      nfields, fieldnames);
}

hcyArray* hcyCreateSparse(size_t m, size_t n, size_t nzmax, hcyComplexity complexity) {
  ArrayHandle array = makeSparse(m, n, nzmax, isComplex(complexity), VORTEN_Array::Sparse::DOUBLE);
  VORTEN_Array::Double& values = hcy::sparseDoubles(sparsePart(array));
  hcy::resizeList(*values.mutable_elements(), hcy::checkedSize(nzmax));
  if (array->isComplex()) {
    hcy::resizeList(*values.mutable_imag_elements(), hcy::checkedSize(nzmax));
  }
  return array.release();
}

hcyArray* hcyCreateSparseLogicalMatrix(size_t m, size_t n, size_t nzmax) {
  ArrayHandle array = makeSparse(m, n, nzmax, false, VORTEN_Array::Sparse::LOGICAL);
  VORTEN_Array::Logical& values = hcy::sparseLogicals(sparsePart(array));
  hcy::resizeList(*values.mutable_elements(), hcy::checkedSize(nzmax));
  return array.release();
}
