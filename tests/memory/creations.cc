// SPDX-License-Identifier: Apache-2.0

#include "memory/operation.h"

namespace hcy::abi {
namespace {

constexpr std::size_t dims[] = {2, 3, 2};
const char* const texts[] = {"a text that is too long to lie in its object", "another"};

template <hcyClassID id, hcyComplexity complexity>
Answer createNumeric(World& /*world*/) {
  return hcyCreateNumericArray(3, dims, id, complexity);
}

template <hcyClassID id, hcyComplexity complexity>
Answer createNumericMatrix(World& /*world*/) {
  return hcyCreateNumericMatrix(3, 2, id, complexity);
}

template <hcyClassID id>
void addNumeric(std::vector<Operation>& operations) {
  constexpr auto Throws = WhenExhausted::Throws;
  const char* const name = classFacts[id].identifier;
  operations.push_back({"hcyCreateNumericArray", name, Throws, createNumeric<id, hcyREAL>});
  operations.push_back({"hcyCreateNumericArray", name, Throws, createNumeric<id, hcyCOMPLEX>});
  operations.push_back({"hcyCreateNumericMatrix", name, Throws, createNumericMatrix<id, hcyREAL>});
  operations.push_back(
      {"hcyCreateNumericMatrix", name, Throws, createNumericMatrix<id, hcyCOMPLEX>});
}

template <hcyClassID... ids>
void addNumeric(std::vector<Operation>& operations, std::integer_sequence<hcyClassID, ids...>) {
  (addNumeric<ids>(operations), ...);
}

}  // namespace

#define HCY_CREATION(function, how, ...)                                                          \
  {                                                                                               \
#function, how, WhenExhausted::Throws, [](World&) -> Answer { return function(__VA_ARGS__); } \
  }
std::vector<Operation> creations() {
  std::vector<Operation> operations = {
      HCY_CREATION(hcyCreateDoubleMatrix, "", 2, 3, hcyREAL),
      HCY_CREATION(hcyCreateDoubleMatrix, "complex", 2, 3, hcyCOMPLEX),
      HCY_CREATION(hcyCreateDoubleScalar, "", 1.5),
      HCY_CREATION(hcyCreateLogicalMatrix, "", 2, 3),
      HCY_CREATION(hcyCreateLogicalArray, "", 3, dims),
      HCY_CREATION(hcyCreateLogicalScalar, "", true),
      HCY_CREATION(hcyCreateCharArray, "", 3, dims),
      HCY_CREATION(hcyCreateString, "", texts[0]),
      HCY_CREATION(hcyCreateString, "empty", ""),
      HCY_CREATION(hcyCreateCharMatrixFromStrings, "", 2, texts),
      HCY_CREATION(hcyCreateCellMatrix, "", 2, 3),
      HCY_CREATION(hcyCreateCellArray, "", 3, dims),
      HCY_CREATION(hcyCreateCellArray, "empty", 0, nullptr),
      HCY_CREATION(hcyCreateStructMatrix, "", 2, 3, 2, texts),
      HCY_CREATION(hcyCreateStructMatrix, "withoutFields", 2, 3, 0, nullptr),
      HCY_CREATION(hcyCreateStructArray, "", 3, dims, 2, texts),
      HCY_CREATION(hcyCreateSparse, "", 3, 2, 4, hcyREAL),
      HCY_CREATION(hcyCreateSparse, "complex", 3, 2, 4, hcyCOMPLEX),
      HCY_CREATION(hcyCreateSparse, "empty", 0, 0, 0, hcyREAL),
      HCY_CREATION(hcyCreateSparseLogicalMatrix, "", 3, 2, 4)};
  addNumeric(operations, std::make_integer_sequence<hcyClassID, hcyDOUBLE_CLASS + 1>());
  return operations;
}
#undef HCY_CREATION

}  // namespace hcy::abi
