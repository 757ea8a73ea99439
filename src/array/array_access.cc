// SPDX-License-Identifier: Apache-2.0
//
// Element data and the index arrays of sparse arrays.

#include <algorithm>
#include <cstdint>

#include "array/array_handle.h"
#include "wire/checked_size.h"
#include "wire/element_storage.h"
#include "wire/protobuf_version.h"
#include "wire/sparse_values.h"

using hcy::dataOf;
using hcy::proxyOf;
using hcy::client::VORTEN_Array;

namespace {

// Pointers to index arrays point into the message.
static_assert(sizeof(std::size_t) == sizeof(std::uint64_t));

// The caller may write what it gets.
std::size_t* firstIndex(const google::protobuf::RepeatedField<std::uint64_t>& indices) {
  if (indices.empty()) return nullptr;
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
  return reinterpret_cast<std::size_t*>(const_cast<std::uint64_t*>(indices.data()));
}

// All lists get their room before any changes: they stay of one length whatever fails.
template <class... Lists>
void resizeTogether(int nzmax, Lists&... lists) {
  (lists.Reserve(nzmax), ...);
  (hcy::resizeList(lists, nzmax), ...);
}

void resizeStoredElements(VORTEN_Array::Sparse& sparse, int nzmax) {
  auto& rows = *sparse.mutable_ir();
  if (sparse.type() != VORTEN_Array::Sparse::DOUBLE) {
    resizeTogether(nzmax, rows, *hcy::sparseLogicals(sparse).mutable_elements());
    return;
  }
  VORTEN_Array::Double& values = hcy::sparseDoubles(sparse);
  // A list of imaginary parts that has held any belongs to a complex array.
  if (!values.imag_elements().empty()) {
    resizeTogether(nzmax, rows, *values.mutable_elements(), *values.mutable_imag_elements());
  } else {
    resizeTogether(nzmax, rows, *values.mutable_elements());
  }
}

bool hasIndices(const hcyArray* array) { return hcyIsSparse(array) && proxyOf(array).hasIndices(); }

}  // namespace

double* hcyGetPr(const hcyArray* array) {
  return hcyIsDouble(array) ? static_cast<double*>(proxyOf(array).getData()) : nullptr;
}

double* hcyGetPi(const hcyArray* array) {
  return hcyIsDouble(array) ? static_cast<double*>(proxyOf(array).getImagData()) : nullptr;
}

void* hcyGetData(const hcyArray* array) {
  return hcyIsNumeric(array) ? proxyOf(array).getData() : nullptr;
}

void* hcyGetImagData(const hcyArray* array) {
  return hcyIsNumeric(array) ? proxyOf(array).getImagData() : nullptr;
}

bool* hcyGetLogicals(const hcyArray* array) {
  return hcyIsLogical(array) ? static_cast<bool*>(proxyOf(array).getData()) : nullptr;
}

uint16_t* hcyGetChars(const hcyArray* array) {
  return hcyIsChar(array) ? static_cast<uint16_t*>(proxyOf(array).getData()) : nullptr;
}

double hcyGetScalar(const hcyArray* array) { return proxyOf(array).getScalar(); }

size_t* hcyGetIr(const hcyArray* array) {
  return hasIndices(array) ? firstIndex(dataOf(array).sparse().ir()) : nullptr;
}

size_t* hcyGetJc(const hcyArray* array) {
  return hasIndices(array) ? firstIndex(dataOf(array).sparse().jc()) : nullptr;
}

size_t hcyGetNzmax(const hcyArray* array) {
  if (!hcyIsSparse(array)) return SIZE_MAX;
  return hasIndices(array) ? proxyOf(array).storedElements() : 0;
}

void hcySetNzmax(hcyArray* array, size_t nzmax) {
  if (!hcyIsSparse(array) || nzmax > hcyGetNumberOfElements(array)) return;
  hcy::SparsePart sparse(dataOf(array));
  const bool hadDoubles = sparse->has_qxsparsedouble();
  const bool hadLogicals = sparse->has_logical();
  try {
    resizeStoredElements(*sparse, hcy::checkedSize(std::max<std::size_t>(nzmax, 1)));
  } catch (...) {
    if (!hadDoubles) sparse->clear_qxsparsedouble();
    if (!hadLogicals) sparse->clear_logical();
    throw;
  }
  sparse.keep();
  proxyOf(array).storageChanged();
}
