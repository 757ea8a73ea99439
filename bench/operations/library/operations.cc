// SPDX-License-Identifier: Apache-2.0

#include "operations/library/operations.h"

#include "operations/library/arrays.h"
#include "operations/points.h"

namespace hcy::bench {

void addCreationAndDuplication(Operations& operations) {
  operations.push_back(operation(
      "create/scalar/1", [] { return [] { hcyDestroyArray(hcyCreateDoubleScalar(1.0)); }; }));
  for (hcyClassID id = 0; id < classCount; ++id) {
    for (const std::size_t size : arraySizes) {
      operations.push_back(operation(operationName("create", classNames[id], size),
                                     [=] { return [=] { keep(makeArray(id, size).get()); }; }));
      operations.push_back(operation(operationName("duplicate", classNames[id], size), [=] {
        return [array = makeArray(id, size)] { hcyDestroyArray(hcyDuplicateArray(array.get())); };
      }));
    }
  }
}

Operations allOperations() {
  Operations operations;
  addCreationAndDuplication(operations);
  addElementAccess(operations);
  addContainers(operations);
  addTexts(operations);
  addFieldChanges(operations);
  return operations;
}

}  // namespace hcy::bench
