// SPDX-License-Identifier: Apache-2.0
//
// What an array holds, written down: an array is made from it, and an array is compared with it,
// by the exported functions alone.

#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "client.h"

namespace hcy::abi {

using Dimensions = std::vector<std::size_t>;

struct Value {
  hcyClassID classId = hcyDOUBLE_CLASS;
  Dimensions dimensions = {0, 0};
  std::string real = {}, imaginary = {};  // the bytes of the elements
  std::vector<Value> values = {};         // of a cell, and element-major of a struct
  std::vector<std::string> fields = {};
  bool isSparse = false;
  std::vector<std::size_t> rows = {}, columnStarts = {};
  bool isNeverSet = false;
};

template <class Element>
std::string bytesOf(const std::vector<Element>& elements) {
  return {reinterpret_cast<const char*>(elements.data()), elements.size() * sizeof(Element)};
}

template <class Element>
Value numeric(hcyClassID classId, Dimensions dimensions, const std::vector<Element>& real,
              const std::vector<Element>& imaginary = {}) {
  return {.classId = classId,
          .dimensions = std::move(dimensions),
          .real = bytesOf(real),
          .imaginary = bytesOf(imaginary)};
}

Value doubles(Dimensions dimensions, const std::vector<double>& real,
              const std::vector<double>& imaginary = {});
// A text of '0' and '1', one for each element.
Value logicals(Dimensions dimensions, std::string_view elements);
Value chars(Dimensions dimensions, std::u16string_view units);
Value cell(Dimensions dimensions, std::vector<Value> values);
Value structure(Dimensions dimensions, std::vector<std::string> fields, std::vector<Value> values);
Value sparseDoubles(Dimensions dimensions, std::vector<std::size_t> rows,
                    std::vector<std::size_t> columnStarts, const std::vector<double>& real,
                    const std::vector<double>& imaginary = {});
Value sparseLogicals(Dimensions dimensions, std::vector<std::size_t> rows,
                     std::vector<std::size_t> columnStarts, std::string_view elements);
// Among the values of a container: nothing is stored there.
Value neverSet();

OwnedArray makeArray(const Value& value);

// Fails the test where the array differs.
void expectArray(const hcyArray* array, const Value& value);

}  // namespace hcy::abi
