// SPDX-License-Identifier: Apache-2.0
//
// Struct arrays of more and more fields: everything that is done once with each field.

#include <string>
#include <vector>

#include "operations/library/arrays.h"
#include "operations/library/operations.h"
#include "operations/points.h"

namespace hcy::bench {
namespace {

constexpr int growingCounts[] = {1, 3, 10, 30, 100, 300, 1'000};

std::vector<std::string> namesOf(int fields) {
  std::vector<std::string> names;
  for (int i = 0; i < fields; ++i) names.push_back(fieldName(i));
  return names;
}

template <class Body>
void add(Operations& operations, const char* what, int fields, Body body) {
  operations.push_back(
      operation(operationName("fields", what, static_cast<std::size_t>(fields)), [=] {
        return [=, names = namesOf(fields), array = makeStruct(fields),
                value = Array(hcyCreateDoubleScalar(2.0))] { body(names, array, value); };
      }));
}

using Names = std::vector<std::string>;

void addWithCount(Operations& operations, int fields) {
  add(operations, "create and destroy", fields,
      [=](const Names&, const Array&, const Array&) { keep(makeStruct(fields).get()); });
  add(operations, "get by name", fields, [](const Names& names, const Array& array, const Array&) {
    for (const std::string& name : names) {
      hcyDestroyArray(hcyGetField(array.get(), 0, name.c_str()));
    }
  });
  add(operations, "get by number", fields, [=](const Names&, const Array& array, const Array&) {
    for (int i = 0; i < fields; ++i) hcyDestroyArray(hcyGetFieldByNumber(array.get(), 0, i));
  });
  add(operations, "set by name", fields,
      [](const Names& names, const Array& array, const Array& value) {
        for (const std::string& name : names) {
          hcySetField(array.get(), 0, name.c_str(), value.get());
        }
      });
  add(operations, "add", fields, [](const Names& names, const Array&, const Array&) {
    const Array array(hcyCreateStructMatrix(1, 1, 0, nullptr));
    for (const std::string& name : names) hcyAddField(array.get(), name.c_str());
  });
  add(operations, "add, remove last", fields, [=](const Names& names, const Array&, const Array&) {
    const Array array(hcyCreateStructMatrix(1, 1, 0, nullptr));
    for (const std::string& name : names) hcyAddField(array.get(), name.c_str());
    for (int i = fields - 1; i >= 0; --i) hcyRemoveField(array.get(), i);
  });
  add(operations, "add, remove first", fields, [=](const Names& names, const Array&, const Array&) {
    const Array array(hcyCreateStructMatrix(1, 1, 0, nullptr));
    for (const std::string& name : names) hcyAddField(array.get(), name.c_str());
    for (int i = 0; i < fields; ++i) hcyRemoveField(array.get(), 0);
  });
}

}  // namespace

void addFieldChanges(Operations& operations) {
  for (const int fields : growingCounts) addWithCount(operations, fields);
}

}  // namespace hcy::bench
