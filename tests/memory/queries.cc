// SPDX-License-Identifier: Apache-2.0

#include "memory/operation.h"

namespace hcy::abi {
namespace {

template <auto Query>
Answer ask(World& world) {
  return Query(world.array);
}

}  // namespace

#define HCY_QUERY(function) \
  { #function, "", WhenExhausted::NotAtAll, ask < function> }
std::vector<Operation> queries() {
  using enum WhenExhausted;
  return {
      HCY_QUERY(hcyIsUint8),
      HCY_QUERY(hcyIsInt8),
      HCY_QUERY(hcyIsUint16),
      HCY_QUERY(hcyIsInt16),
      HCY_QUERY(hcyIsUint32),
      HCY_QUERY(hcyIsInt32),
      HCY_QUERY(hcyIsUint64),
      HCY_QUERY(hcyIsInt64),
      HCY_QUERY(hcyIsSingle),
      HCY_QUERY(hcyIsChar),
      HCY_QUERY(hcyIsStruct),
      HCY_QUERY(hcyIsCell),
      HCY_QUERY(hcyIsSparse),
      HCY_QUERY(hcyIsDouble),
      HCY_QUERY(hcyIsLogical),
      HCY_QUERY(hcyIsNumeric),
      HCY_QUERY(hcyIsComplex),
      HCY_QUERY(hcyIsEmpty),
      HCY_QUERY(hcyIsLogicalScalar),
      HCY_QUERY(hcyIsLogicalScalarTrue),
      HCY_QUERY(hcyGetClassID),
      HCY_QUERY(hcyGetElementSize),
      HCY_QUERY(hcyGetNumberOfElements),
      {"hcyIsClass", "", NotAtAll,
       [](World& w) -> Answer { return hcyIsClass(w.array, "double"); }},
      {"hcyGetClassName", "", NotAtAll,
       [](World& w) -> Answer { return hcyGetClassName(w.array)[0] != '\0'; }},
      {"hcyArrayToString", "", Answers,
       [](World& w) -> Answer { return hcyArrayToString(w.array); }},
      {"hcyGetString", "", NotAtAll,
       [](World& w) -> Answer {
         char buffer[16];
         return hcyGetString(w.array, buffer, sizeof buffer);
       }},
  };
}
#undef HCY_QUERY

}  // namespace hcy::abi
