// SPDX-License-Identifier: Apache-2.0
//
// Elements of cells and fields of structs: got and destroyed, and set; always the last one.

#include "operations/library/arrays.h"
#include "operations/library/operations.h"
#include "operations/points.h"

namespace hcy::bench {
namespace {

// A column of cells, in the last of which is a double.
Array makeCells(std::size_t size) {
  Array cells = makeArray(hcyCELL_CLASS, size);
  hcySetCell(cells.get(), size - 1, Array(hcyCreateDoubleScalar(1.0)).get());
  return cells;
}

void addCells(Operations& operations, std::size_t size) {
  const std::size_t last = size - 1;
  operations.push_back(operation(operationName("get_cell", "double", size), [=] {
    return [=, cells = makeCells(size)] { hcyDestroyArray(hcyGetCell(cells.get(), last)); };
  }));
  operations.push_back(operation(operationName("set_cell", "double", size), [=] {
    return [=, cells = makeCells(size), value = Array(hcyCreateDoubleScalar(2.0))] {
      hcySetCell(cells.get(), last, value.get());
    };
  }));
}

void addFields(Operations& operations, int fields) {
  const auto size = static_cast<std::size_t>(fields);
  const std::string last = fieldName(fields - 1);
  operations.push_back(operation(operationName("get_field", "double", size), [=] {
    return [=, array = makeStruct(fields)] {
      hcyDestroyArray(hcyGetField(array.get(), 0, last.c_str()));
    };
  }));
  operations.push_back(operation(operationName("set_field", "double", size), [=] {
    return [=, array = makeStruct(fields), value = Array(hcyCreateDoubleScalar(2.0))] {
      hcySetField(array.get(), 0, last.c_str(), value.get());
    };
  }));
}

}  // namespace

void addContainers(Operations& operations) {
  for (const std::size_t size : arraySizes) addCells(operations, size);
  for (const int fields : fieldCounts) addFields(operations, fields);
}

}  // namespace hcy::bench
