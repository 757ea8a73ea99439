// SPDX-License-Identifier: Apache-2.0
//
// The creation functions.

#include <algorithm>
#include <array>
#include <string>

#include "array_program.h"
#include "require.h"

namespace hcy::fuzz {
namespace {

// What (ndim, dims) means.
Sizes shapeOf(const Sizes& given) {
  if (given.empty()) return {0, 0};
  return given.size() == 1 ? Sizes{given[0], 1} : given;
}

}  // namespace

void ArrayProgram::createNumeric() {
  const auto classId = static_cast<hcyClassID>(below(hcyDOUBLE_CLASS + 2));
  const hcyComplexity complexity = coin() ? hcyCOMPLEX : hcyREAL;
  const Sizes given = smallDimensions();
  if (classId > hcyDOUBLE_CLASS) {
    HCY_REQUIRE(hcyCreateNumericArray(given.size(), given.data(), classId, complexity) == nullptr);
    HCY_REQUIRE(hcyCreateNumericMatrix(1, 1, classId, complexity) == nullptr);
    return;
  }
  const bool isMatrix = given.size() == 2;
  hcyArray* const array =
      !isMatrix ? hcyCreateNumericArray(given.size(), given.data(), classId, complexity)
      : classId == hcyDOUBLE_CLASS && coin()
          ? hcyCreateDoubleMatrix(given[0], given[1], complexity)
          : hcyCreateNumericMatrix(given[0], given[1], classId, complexity);
  const Sizes shape = shapeOf(given);
  const bool isComplex = complexity == hcyCOMPLEX && productOf(shape) != 0;
  add(array, Model(newElement(classId, shape, isComplex)));
}

// Classes without a choice but the shape.
void ArrayProgram::createPlain() {
  const Sizes given = smallDimensions();
  const Sizes shape = shapeOf(given);
  const bool isMatrix = given.size() == 2 && coin();
  switch (below(5)) {
    case 0:
      return add(isMatrix ? hcyCreateLogicalMatrix(given[0], given[1])
                          : hcyCreateLogicalArray(given.size(), given.data()),
                 Model(newElement(hcyLOGICAL_CLASS, shape, false)));
    case 1:
      return add(hcyCreateCharArray(given.size(), given.data()),
                 Model(newElement(hcyCHAR_CLASS, shape, false)));
    case 2:
      return add(isMatrix ? hcyCreateCellMatrix(given[0], given[1])
                          : hcyCreateCellArray(given.size(), given.data()),
                 Model(newElement(hcyCELL_CLASS, shape, false)));
    case 3: {
      const auto element = newElement(hcyDOUBLE_CLASS, {1, 1}, false);
      element->contents.real[0] = static_cast<double>(next());
      return add(hcyCreateDoubleScalar(element->contents.real[0]), Model(element));
    }
    default: {
      const auto element = newElement(hcyLOGICAL_CLASS, {1, 1}, false);
      const bool value = coin();
      element->contents.real[0] = value ? 1 : 0;
      return add(hcyCreateLogicalScalar(value), Model(element));
    }
  }
}

void ArrayProgram::createText() {
  std::array<std::string, 3> texts;
  std::array<const char*, 3> pointers{};
  std::size_t longest = 0;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    texts[i].resize(below(6));
    for (char& c : texts[i]) c = static_cast<char>(next() | 1);
    longest = std::max(longest, texts[i].size());
    pointers[i] = texts[i].c_str();
  }
  const bool isOne = coin();
  const std::size_t rows = isOne ? (texts[0].empty() ? 0 : 1) : texts.size();
  const std::size_t columns = isOne ? texts[0].size() : longest;
  const auto element = newElement(hcyCHAR_CLASS, {rows, columns}, false);
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < texts[i].size(); ++j) {
      // A byte with its sign.
      const int byte = static_cast<signed char>(texts[i][j]);
      element->contents.real[i + j * rows] = byte < 0 ? byte + 0x10000 : byte;
    }
  }
  add(isOne ? hcyCreateString(pointers[0])
            : hcyCreateCharMatrixFromStrings(pointers.size(), pointers.data()),
      Model(element));
}

void ArrayProgram::createStruct() {
  const Sizes given = smallDimensions();
  const int count = static_cast<int>(below(5)) - 1;  // fewer than none are none
  std::vector<std::string> fields;
  std::vector<const char*> names;
  for (int n = 0; n < count; ++n) {
    names.push_back(name());
    fields.emplace_back(names.back());
  }
  add(given.size() == 2 ? hcyCreateStructMatrix(given[0], given[1], count, names.data())
                        : hcyCreateStructArray(given.size(), given.data(), count, names.data()),
      Model(newElement(hcySTRUCT_CLASS, shapeOf(given), false, fields)));
}

void ArrayProgram::createSparse() {
  const std::size_t m = size(), n = below(5), nzmax = below(7);
  const bool isLogical = coin();
  const hcyComplexity complexity = coin() ? hcyCOMPLEX : hcyREAL;
  if (m > largestCount) return;  // another step's
  const bool isComplex = !isLogical && complexity == hcyCOMPLEX && m * n != 0;
  const auto element =
      newSparseElement(isLogical ? hcyLOGICAL_CLASS : hcyDOUBLE_CLASS, m, n, nzmax, isComplex);
  add(isLogical ? hcyCreateSparseLogicalMatrix(m, n, nzmax)
                : hcyCreateSparse(m, n, nzmax, complexity),
      Model(element, isComplex));
}

// Each of the creations that take a shape, with one that cannot be.
void ArrayProgram::createTooLarge() {
  const Sizes shape = {size(), size(), size()};
  const std::size_t ndim = below(3) + 1;
  const Sizes given(shape.begin(), shape.begin() + static_cast<std::ptrdiff_t>(ndim));
  const bool isTooLarge =
      productOf(given) > largestCount ||
      std::ranges::any_of(given, [](std::size_t dimension) { return dimension > largestCount; });
  if (!isTooLarge) return;
  const std::size_t* const dims = given.data();
  const char* const names[] = {"a"};
  const auto create = [&](std::size_t which) -> hcyArray* {
    switch (which) {
      case 0:
        return hcyCreateNumericArray(ndim, dims, static_cast<hcyClassID>(below(10)), hcyCOMPLEX);
      case 1:
        return hcyCreateLogicalArray(ndim, dims);
      case 2:
        return hcyCreateCharArray(ndim, dims);
      case 3:
        return hcyCreateCellArray(ndim, dims);
      default:
        return hcyCreateStructArray(ndim, dims, 1, names);
    }
  };
  HCY_REQUIRE(overflows([&] { hcyDestroyArray(create(below(5))); }));
}

}  // namespace hcy::fuzz
