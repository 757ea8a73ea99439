// SPDX-License-Identifier: Apache-2.0

#include <iterator>

#include "memory/operation.h"

namespace hcy::abi {
namespace {

constexpr std::size_t manyDims[] = {4, 3, 1, 2, 1, 1, 1, 1, 1, 1, 1, 1};
constexpr std::size_t subscripts[] = {1, 1};

}  // namespace

std::vector<Operation> shapeOperations() {
  using enum WhenExhausted;
  return {
      {"hcyGetM", "", NotAtAll, [](World& w) -> Answer { return hcyGetM(w.array); }},
      {"hcyGetN", "", NotAtAll, [](World& w) -> Answer { return hcyGetN(w.array); }},
      {"hcyGetNumberOfDimensions", "", NotAtAll,
       [](World& w) -> Answer { return hcyGetNumberOfDimensions(w.array); }},
      {"hcyGetDimensions", "", NotAtAll,
       [](World& w) -> Answer { return hcyGetDimensions(w.array)[0]; }},
      {"hcyCalcSingleSubscript", "", NotAtAll,
       [](World& w) -> Answer {
         return hcyCalcSingleSubscript(w.array, std::size(subscripts), subscripts);
       }},
      {"hcySetM", "larger", Throws,
       [](World& w) {
         hcySetM(w.array, 20);
         return Answer();
       }},
      {"hcySetM", "smaller", Throws,
       [](World& w) {
         hcySetM(w.array, 1);
         return Answer();
       }},
      {"hcySetN", "larger", Throws,
       [](World& w) {
         hcySetN(w.array, 20);
         return Answer();
       }},
      {"hcySetN", "toNone", Throws,
       [](World& w) {
         hcySetN(w.array, 0);
         return Answer();
       }},
      {"hcySetDimensions", "many", Answers,
       [](World& w) -> Answer { return hcySetDimensions(w.array, manyDims, std::size(manyDims)); },
       1},
      {"hcySetDimensions", "one", Answers,
       [](World& w) -> Answer { return hcySetDimensions(w.array, manyDims, 1); }, 1},
  };
}

}  // namespace hcy::abi
