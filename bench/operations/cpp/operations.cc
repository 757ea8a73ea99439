// SPDX-License-Identifier: Apache-2.0
//
// The operations of the library by its C++ face.

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

#include "operations/operation.h"
#include "operations/points.h"

namespace hcy::bench {
namespace {

using hcyclient::Array;

void addDoubles(Operations& operations, std::size_t size) {
  operations.push_back(operation(operationName("create", "double", size), [=] {
    return [=] { keep(Array::zeros<double>(size, 1).get()); };
  }));
  operations.push_back(operation(operationName("duplicate", "double", size), [=] {
    return [array = Array::zeros<double>(size, 1)] { keep(array.copy().get()); };
  }));
  operations.push_back(operation(operationName("get_pr", "double", size), [=] {
    return [array = Array::zeros<double>(size, 1)] { keep(array.span<double>().data()); };
  }));
}

void addCells(Operations& operations, std::size_t size) {
  const std::size_t last = size - 1;
  const auto makeCells = [=] {
    Array cells = Array::cells({size, 1});
    cells[last] = 1.0;
    return cells;
  };
  operations.push_back(operation(operationName("get_cell", "double", size), [=] {
    return [=, cells = makeCells()]() mutable { keep(cells[last].get().get()); };
  }));
  operations.push_back(operation(operationName("set_cell", "double", size), [=] {
    return [=, cells = makeCells(), value = Array(2.0)]() mutable { cells[last] = value; };
  }));
}

void addFields(Operations& operations, int fields) {
  const auto size = static_cast<std::size_t>(fields);
  const std::string last = fieldName(fields - 1);
  const auto makeStruct = [=] {
    std::vector<std::string> names;
    for (int i = 0; i < fields; ++i) names.push_back(fieldName(i));
    Array array = Array::structs({1, 1}, names);
    for (const std::string& name : names) array(name) = 1.0;
    return array;
  };
  operations.push_back(operation(operationName("get_field", "double", size), [=] {
    return [=, array = makeStruct()]() mutable { keep(array(last).get().get()); };
  }));
  operations.push_back(operation(operationName("set_field", "double", size), [=] {
    return [=, array = makeStruct(), value = Array(2.0)]() mutable { array(last) = value; };
  }));
}

void addTexts(Operations& operations, std::size_t size) {
  operations.push_back(operation(
      operationName("create_string", "ascii", size),
      [=] { return [text = std::string(size, 'a')] { keep(Array(text).get()); }; }, size));
  operations.push_back(operation(
      operationName("to_string", "ascii", size),
      [=] { return [array = Array(std::string(size, 'a'))] { keep(array.toString().data()); }; },
      size));
}

}  // namespace

Operations allOperations() {
  Operations operations;
  operations.push_back(operation("create/scalar/1", [] { return [] { keep(Array(1.0).get()); }; }));
  for (const std::size_t size : arraySizes) addDoubles(operations, size);
  for (const std::size_t size : arraySizes) addCells(operations, size);
  for (const int fields : fieldCounts) addFields(operations, fields);
  for (const std::size_t size : textSizes) addTexts(operations, size);
  return operations;
}

}  // namespace hcy::bench
