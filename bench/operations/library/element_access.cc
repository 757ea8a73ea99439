// SPDX-License-Identifier: Apache-2.0
//
// Pointers to elements.

#include "operations/library/arrays.h"
#include "operations/library/operations.h"
#include "operations/points.h"

namespace hcy::bench {
namespace {

// Calls the getter directly, as an application does.
template <auto getter>
void add(Operations& operations, const char* what, hcyClassID id) {
  for (const std::size_t size : arraySizes) {
    operations.push_back(operation(operationName(what, classNames[id], size), [=] {
      return [array = makeArray(id, size)] { keep(getter(array.get())); };
    }));
  }
}

}  // namespace

void addElementAccess(Operations& operations) {
  add<hcyGetPr>(operations, "get_pr", hcyDOUBLE_CLASS);
  for (hcyClassID id = hcyUINT8_CLASS; id <= hcyDOUBLE_CLASS; ++id) {
    add<hcyGetData>(operations, "get_data", id);
  }
  add<hcyGetLogicals>(operations, "get_logicals", hcyLOGICAL_CLASS);
  add<hcyGetChars>(operations, "get_chars", hcyCHAR_CLASS);
}

}  // namespace hcy::bench
