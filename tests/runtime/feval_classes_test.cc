// SPDX-License-Identifier: Apache-2.0
//
// An array of every class as an output, and sent back.

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "runtime/reply_call.h"

namespace hcy::abi {
namespace {

struct Sample {
  std::string name;
  hcyClassID classId;
  bool complex;
  VORTEN_Array array;
};

void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }

// Two elements: 1, and a number whose sign or size shows how it is carried.
template <class Elements>
void fill(Elements& elements, bool complex) {
  if constexpr (requires { elements.set_elements(""); }) {
    elements.set_elements("\x01\xC8");
    if (complex) elements.set_imag_elements(std::string("\x00\x03", 2));
  } else {
    using Element = std::remove_cvref_t<decltype(elements.elements(0))>;
    elements.add_elements(1);
    elements.add_elements(static_cast<Element>(std::is_signed_v<Element> ? -200 : 200));
    if constexpr (requires { elements.add_imag_elements(1); }) {
      if (complex) elements.add_imag_elements(0);
      if (complex) elements.add_imag_elements(3);
    }
  }
}

template <class Elements>
void addSamples(std::vector<Sample>& samples, const std::string& name, VORTEN_Array::QXType type,
                Elements* (VORTEN_Array::*elements)(), bool canBeComplex = true) {
  for (int complex = 0; complex <= (canBeComplex ? 1 : 0); ++complex) {
    VORTEN_Array array;
    array.set_type(type);
    array.add_dimension(1);
    array.add_dimension(2);
    fill(*(array.*elements)(), complex == 1);
    samples.push_back({(complex == 1 ? "complex_" : "") + name, type, complex == 1, array});
  }
}

VORTEN_Array sparseArray(VORTEN_Array::Sparse::SparseType type, bool complex) {
  VORTEN_Array array;
  array.set_type(VORTEN_Array::SPARSE);
  array.add_dimension(3);
  array.add_dimension(2);
  VORTEN_Array::Sparse& sparse = *array.mutable_sparse();
  sparse.set_type(type);
  for (const std::uint64_t row : {0U, 2U}) sparse.add_ir(row);
  for (const std::uint64_t start : {0U, 1U, 2U}) sparse.add_jc(start);
  if (type == VORTEN_Array::Sparse::DOUBLE) {
    fill(*sparse.mutable_qxsparsedouble(), complex);
  } else {
    fill(*sparse.mutable_logical(), false);
  }
  return array;
}

std::vector<Sample> samples() {
  using A = VORTEN_Array;
  std::vector<Sample> all;
  addSamples(all, "uint8", A::UINT8, &A::mutable_uint8);
  addSamples(all, "int8", A::INT8, &A::mutable_int8);
  addSamples(all, "uint16", A::UINT16, &A::mutable_uint16);
  addSamples(all, "int16", A::INT16, &A::mutable_int16);
  addSamples(all, "uint32", A::UINT32, &A::mutable_uint32);
  addSamples(all, "int32", A::INT32, &A::mutable_int32);
  addSamples(all, "uint64", A::UINT64, &A::mutable_uint64);
  addSamples(all, "int64", A::INT64, &A::mutable_int64);
  addSamples(all, "single", A::SINGLE, &A::mutable_single);
  addSamples(all, "double", A::DOUBLE, &A::mutable_qxdouble);
  addSamples(all, "logical", A::LOGICAL, &A::mutable_logical, false);
  addSamples(all, "char", A::CHAR, &A::mutable_qxchar, false);
  all.push_back({"struct", hcySTRUCT_CLASS, false,
                 containerOf(A::STRUCT, {doubleArray(1), all[6].array, all.back().array})});
  all.push_back({"cell", hcyCELL_CLASS, false,
                 containerOf(A::CELL, {all.back().array, doubleArray(2), all[7].array})});
  all.push_back({"sparse_double", hcyDOUBLE_CLASS, false, sparseArray(A::Sparse::DOUBLE, false)});
  all.push_back(
      {"complex_sparse_double", hcyDOUBLE_CLASS, true, sparseArray(A::Sparse::DOUBLE, true)});
  all.push_back(
      {"sparse_logical", hcyLOGICAL_CLASS, false, sparseArray(A::Sparse::LOGICAL, false)});
  return all;
}

class FevalClasses : public ReplyCall, public ::testing::WithParamInterface<Sample> {};

INSTANTIATE_TEST_SUITE_P(Classes, FevalClasses, ::testing::ValuesIn(samples()),
                         [](const auto& sample) { return sample.param.name; });

TEST_P(FevalClasses, arrivesWithItsClassAndComplexity) {
  const OwnedArray output = received(GetParam().array);
  EXPECT_EQ(hcyGetClassID(output.get()), GetParam().classId);
  EXPECT_EQ(hcyIsComplex(output.get()), GetParam().complex);
  EXPECT_EQ(hcyIsSparse(output.get()), GetParam().array.type() == VORTEN_Array::SPARSE);
}

TEST_P(FevalClasses, comesBackToTheServerByteForByte) {
  const OwnedArray output = received(GetParam().array);
  EXPECT_EQ(sent(output.get()).SerializeAsString(), GetParam().array.SerializeAsString());
}

TEST_P(FevalClasses, isComplexIsNotReadAndSurvives) {
  VORTEN_Array array = GetParam().array;
  array.set_iscomplex(!GetParam().complex);
  const OwnedArray output = received(array);
  EXPECT_EQ(hcyIsComplex(output.get()), GetParam().complex);
  EXPECT_EQ(sent(output.get()).SerializeAsString(), array.SerializeAsString());
}

}  // namespace
}  // namespace hcy::abi
