// SPDX-License-Identifier: Apache-2.0

#include "operations/library/arrays.h"

#include <string>
#include <vector>

#include "operations/points.h"

namespace hcy::bench {
namespace {

// The names, and pointers to them as the interface takes them.
struct FieldNames {
  explicit FieldNames(int count) {
    for (int i = 0; i < count; ++i) names.push_back(fieldName(i));
    for (const std::string& name : names) pointers.push_back(name.c_str());
  }
  std::vector<std::string> names;
  std::vector<const char*> pointers;
};

}  // namespace

Array makeArray(hcyClassID classid, std::size_t count) {
  const std::size_t shape[] = {count, 1};
  if (classid == hcyLOGICAL_CLASS) return Array(hcyCreateLogicalArray(2, shape));
  if (classid == hcyCHAR_CLASS) return Array(hcyCreateCharArray(2, shape));
  if (classid == hcyCELL_CLASS) return Array(hcyCreateCellArray(2, shape));
  if (classid != hcySTRUCT_CLASS) return Array(hcyCreateNumericArray(2, shape, classid, hcyREAL));
  static const FieldNames names(fewFields);
  return Array(hcyCreateStructArray(2, shape, fewFields, names.pointers.data()));
}

Array makeStruct(int fields) {
  const FieldNames names(fields);
  Array array(hcyCreateStructMatrix(1, 1, fields, names.pointers.data()));
  for (int i = 0; i < fields; ++i) {
    hcySetFieldByNumber(array.get(), 0, i, Array(hcyCreateDoubleScalar(i)).get());
  }
  return array;
}

}  // namespace hcy::bench
