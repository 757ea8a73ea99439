// SPDX-License-Identifier: Apache-2.0

#include "memory/operation.h"

namespace hcy::abi {
namespace {

template <auto Get>
Answer hasPointer(World& world) {
  return Get(world.array) != nullptr;
}

}  // namespace

#define HCY_POINTER(get) \
  { #get, "", WhenExhausted::NotAtAll, hasPointer < get> }
std::vector<Operation> lifetimeAndElementOperations() {
  using enum WhenExhausted;
  return {
      {"hcyDestroyArray", "", NotAtAll,
       [](World& w) {
         w.array.destroy();
         return Answer();
       }},
      {"hcyDestroyArray", "ofNothing", NotAtAll,
       [](World&) {
         hcyDestroyArray(nullptr);
         return Answer();
       }},
      {"hcyDuplicateArray", "", Throws,
       [](World& w) -> Answer { return hcyDuplicateArray(w.array); }},
      {"hcyDuplicateArray", "ofACell", Throws,
       [](World& w) -> Answer { return hcyDuplicateArray(w.cell); }},
      {"hcyDuplicateArray", "ofAStruct", Throws,
       [](World& w) -> Answer { return hcyDuplicateArray(w.structure); }},
      {"hcyFree", "", NotAtAll,
       [](World& w) {
         hcyFree(w.text.release());
         return Answer();
       }},
      HCY_POINTER(hcyGetPr),
      HCY_POINTER(hcyGetPi),
      HCY_POINTER(hcyGetData),
      HCY_POINTER(hcyGetImagData),
      HCY_POINTER(hcyGetLogicals),
      HCY_POINTER(hcyGetChars),
      HCY_POINTER(hcyGetIr),
      HCY_POINTER(hcyGetJc),
      {"hcyGetScalar", "", NotAtAll, [](World& w) -> Answer { return hcyGetScalar(w.array); }},
      {"hcyGetNzmax", "", NotAtAll, [](World& w) -> Answer { return hcyGetNzmax(w.array); }},
      {"hcySetNzmax", "smaller", Throws,
       [](World& w) {
         hcySetNzmax(w.array, 1);
         return Answer();
       }},
      {"hcySetNzmax", "larger", Throws,
       [](World& w) {
         hcySetNzmax(w.array, 500);
         return Answer();
       }},
  };
}
#undef HCY_POINTER

}  // namespace hcy::abi
