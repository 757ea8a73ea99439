// SPDX-License-Identifier: Apache-2.0
//
// Every function on arrays that no server should send: under the sanitizers this shows that none
// reads or writes outside the storage.

#include <cstdint>
#include <typeinfo>

#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::owned;
using test::wrapped;

void ask(const hcyArray* array) {
  const std::size_t subs[] = {1, 1, 1, 1};
  hcyGetScalar(array);
  hcyGetM(array);
  hcyGetN(array);
  hcyGetDimensions(array);
  hcyCalcSingleSubscript(array, 4, subs);
  hcyIsEmpty(array);
  hcyIsLogicalScalarTrue(array);
  hcyIsClass(array, "double");
  hcyGetElementSize(array);
  hcyGetNzmax(array);
  hcyFree(hcyArrayToString(array));
  char buffer[16];
  hcyGetString(array, buffer, sizeof buffer);
}

// Reads the first element behind every pointer that is given.
void readPointers(const hcyArray* array) {
  double sum = 0.0;
  if (const double* const real = hcyGetPr(array)) sum += *real;
  if (const double* const imaginary = hcyGetPi(array)) sum += *imaginary;
  if (const auto* const data = static_cast<unsigned char*>(hcyGetData(array))) sum += *data;
  if (const auto* const data = static_cast<unsigned char*>(hcyGetImagData(array))) sum += *data;
  if (const bool* const logicals = hcyGetLogicals(array)) sum += *logicals;
  if (const std::uint16_t* const units = hcyGetChars(array)) sum += *units;
  if (const std::size_t* const rows = hcyGetIr(array)) sum += static_cast<double>(*rows);
  if (const std::size_t* const starts = hcyGetJc(array)) sum += static_cast<double>(*starts);
  EXPECT_EQ(sum, sum);
}

void useElements(hcyArray* array) {
  const auto value = owned(hcyCreateDoubleScalar(1.0));
  for (const std::size_t index : {std::size_t{0}, std::size_t{1}, std::size_t{5}, SIZE_MAX}) {
    owned(hcyGetCell(array, index));
    owned(hcyGetField(array, index, "a"));
    owned(hcyGetFieldByNumber(array, index, 1));
    hcySetCell(array, index, value.get());
    hcySetField(array, index, "a", value.get());
    hcySetFieldByNumber(array, index, 1, value.get());
  }
}

void use(hcyArray* array) {
  ask(array);
  readPointers(array);
  useElements(array);
  proxyOf(array).commit();
  const auto copy = owned(hcyDuplicateArray(array));
  ask(copy.get());
}

void change(hcyArray* array) {
  hcyAddField(array, "new");
  hcyRemoveField(array, 0);
  use(array);
  hcySetNzmax(array, 1);
  try {
    hcySetM(array, 3);
    hcySetN(array, 2);
  } catch (const std::bad_cast&) {
    // too many elements for the other dimensions
  }
  use(array);
  const std::size_t dims[] = {2, 2};
  EXPECT_EQ(hcySetDimensions(array, dims, 2), 0);
  use(array);
}

// Arrays of a type with storage of one element, and the dimensions given.
VORTEN_Array malformed(int type, const std::vector<std::uint64_t>& dimensions) {
  VORTEN_Array array = test::arrayOf(type, {});
  for (const std::uint64_t dimension : dimensions) array.add_dimension(dimension);
  array.mutable_uint8()->set_imag_elements("ab");
  array.mutable_int16()->add_imag_elements(1);
  array.mutable_single()->add_elements(1.0F);
  array.mutable_logical()->add_elements(true);
  array.mutable_qxchar()->add_elements(0xD800);
  array.mutable_cell()->add_elements()->set_type(VORTEN_Array::STRING);
  array.mutable_struct_()->add_field_names("a");
  array.mutable_struct_()->add_field_names("b");
  array.mutable_struct_()->add_elements();
  array.mutable_sparse()->add_ir(7);
  array.mutable_sparse()->mutable_qxsparsedouble()->add_imag_elements(1.0);
  return array;
}

const std::vector<std::vector<std::uint64_t>> shapes = {
    {}, {0}, {3}, {SIZE_MAX}, {1, 1}, {2, 3}, {2147483647, 2147483647}, {0, SIZE_MAX}, {1, 2, 3}};

class MalformedReply : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(OfEveryType, MalformedReply, testing::Range(0, 15));

TEST_P(MalformedReply, IsUsedWithinItsStorage) {
  for (const auto& shape : shapes) {
    change(wrapped(malformed(GetParam(), shape)).get());
    VORTEN_Array bare = malformed(GetParam(), shape);
    for (int field = 16; field <= 30; ++field) {
      bare.GetReflection()->ClearField(&bare, bare.GetDescriptor()->FindFieldByNumber(field));
    }
    change(wrapped(bare).get());
  }
}

TEST(MalformedSparseReply, IsUsedWithinTheStorageOfItsValues) {
  for (const auto& shape : shapes) {
    for (const auto type : {VORTEN_Array::Sparse::DOUBLE, VORTEN_Array::Sparse::LOGICAL,
                            VORTEN_Array::Sparse::SINGLE}) {
      VORTEN_Array array = malformed(VORTEN_Array::SPARSE, shape);
      array.mutable_sparse()->set_type(type);
      change(wrapped(array).get());
      array.mutable_sparse()->mutable_logical()->add_elements(true);
      change(wrapped(array).get());
    }
  }
}

}  // namespace
}  // namespace hcy
