// SPDX-License-Identifier: Apache-2.0

#include "memory/operation.h"

namespace hcy::abi {
namespace {

const char* const longName = "a name that is too long to lie in its object";

}  // namespace

std::vector<Operation> containerOperations() {
  using enum WhenExhausted;
  return {
      {"hcyGetCell", "", Throws, [](World& w) -> Answer { return hcyGetCell(w.cell, 0); }},
      {"hcyGetCell", "neverSet", Throws, [](World& w) -> Answer { return hcyGetCell(w.cell, 1); }},
      {"hcyGetCell", "ofTheArray", Throws,
       [](World& w) -> Answer { return hcyGetCell(w.array, 0); }},
      {"hcySetCell", "", Throws,
       [](World& w) {
         hcySetCell(w.cell, 0, w.array);
         return Answer();
       }},
      {"hcySetCell", "neverSet", Throws,
       [](World& w) {
         hcySetCell(w.cell, 1, w.array);
         return Answer();
       }},
      {"hcySetCell", "aStruct", Throws,
       [](World& w) {
         hcySetCell(w.cell, 1, w.structure);
         return Answer();
       }},
      {"hcySetCell", "itself", Throws,
       [](World& w) {
         hcySetCell(w.cell, 0, w.cell);
         return Answer();
       }},
      {"hcySetCell", "ofTheArray", Throws,
       [](World& w) {
         hcySetCell(w.array, 0, w.structure);
         return Answer();
       }},
      {"hcyGetNumberOfFields", "", NotAtAll,
       [](World& w) -> Answer { return hcyGetNumberOfFields(w.array); }},
      {"hcyGetFieldNameByNumber", "", NotAtAll,
       [](World& w) -> Answer { return hcyGetFieldNameByNumber(w.array, 1) != nullptr; }},
      {"hcyGetFieldNumber", "", NotAtAll,
       [](World& w) -> Answer { return hcyGetFieldNumber(w.array, fieldNames[1]); }},
      {"hcyGetField", "", Throws,
       [](World& w) -> Answer { return hcyGetField(w.structure, 0, fieldNames[0]); }},
      {"hcyGetField", "neverSet", Throws,
       [](World& w) -> Answer { return hcyGetField(w.structure, 1, fieldNames[0]); }},
      {"hcyGetField", "ofTheArray", Throws,
       [](World& w) -> Answer { return hcyGetField(w.array, 0, fieldNames[0]); }},
      {"hcySetField", "", Throws,
       [](World& w) {
         hcySetField(w.structure, 0, fieldNames[0], w.array);
         return Answer();
       }},
      {"hcySetField", "itself", Throws,
       [](World& w) {
         hcySetField(w.structure, 1, fieldNames[1], w.structure);
         return Answer();
       }},
      {"hcySetField", "ofTheArray", Throws,
       [](World& w) {
         hcySetField(w.array, 0, fieldNames[1], w.cell);
         return Answer();
       }},
      {"hcyGetFieldByNumber", "", Throws,
       [](World& w) -> Answer { return hcyGetFieldByNumber(w.structure, 0, 0); }},
      {"hcyGetFieldByNumber", "neverSet", Throws,
       [](World& w) -> Answer { return hcyGetFieldByNumber(w.structure, 0, 1); }},
      {"hcyGetFieldByNumber", "ofTheArray", Throws,
       [](World& w) -> Answer { return hcyGetFieldByNumber(w.array, 0, 1); }},
      {"hcySetFieldByNumber", "", Throws,
       [](World& w) {
         hcySetFieldByNumber(w.structure, 0, 0, w.array);
         return Answer();
       }},
      {"hcySetFieldByNumber", "aCell", Throws,
       [](World& w) {
         hcySetFieldByNumber(w.structure, 1, 0, w.cell);
         return Answer();
       }},
      {"hcySetFieldByNumber", "ofTheArray", Throws,
       [](World& w) {
         hcySetFieldByNumber(w.array, 0, 1, w.cell);
         return Answer();
       }},
      {"hcyAddField", "", Answers,
       [](World& w) -> Answer { return hcyAddField(w.structure, longName); }, -1},
      {"hcyAddField", "toTheArray", Answers,
       [](World& w) -> Answer { return hcyAddField(w.array, longName); }, -1},
      {"hcyAddField", "thatExists", NotAtAll,
       [](World& w) -> Answer { return hcyAddField(w.structure, fieldNames[1]); }},
      {"hcyRemoveField", "", Answers,
       [](World& w) {
         hcyRemoveField(w.structure, 0);
         return Answer();
       }},
      {"hcyRemoveField", "ofTheArray", Answers,
       [](World& w) {
         hcyRemoveField(w.array, 1);
         return Answer();
       }},
  };
}

}  // namespace hcy::abi
