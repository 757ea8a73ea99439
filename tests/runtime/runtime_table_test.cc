// SPDX-License-Identifier: Apache-2.0
//
// Which slots of the table an interface version writes.

#include "runtime/runtime_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace hcy {
namespace {

using ::testing::Each;
using ::testing::Not;

constexpr std::size_t kSlots_1_0 = 11;
constexpr std::size_t kSlots_1_1 = 25;
constexpr std::uintptr_t kCanary = 0x0DDBA11'CA11AB1EU;

template <std::size_t Count>
using Words = std::array<std::uintptr_t, Count>;

// What stands in a table after an operation on one full of `before`.
template <class Operation>
Words<kSlots_1_1> tableAfter(Operation fill, std::uintptr_t before) {
  Words<kSlots_1_1> words;
  words.fill(before);
  auto runtime = std::bit_cast<hcyClientRuntime>(words);
  fill(runtime);
  return std::bit_cast<Words<kSlots_1_1>>(runtime);
}

template <std::size_t Count>
Words<Count> part(const Words<kSlots_1_1>& words, std::size_t first) {
  Words<Count> part;
  for (std::size_t i = 0; i < Count; ++i) part[i] = words[first + i];
  return part;
}

TEST(RuntimeTable, ACanaryBehindSlot10SurvivesVersion10AsNullDoes) {
  for (const std::uintptr_t before : {kCanary, std::uintptr_t{0}}) {
    const auto words = tableAfter(fillSlots_1_0, before);
    EXPECT_THAT(part<kSlots_1_0>(words, 0), Each(Not(before)));
    EXPECT_THAT(part<kSlots_1_1 - kSlots_1_0>(words, kSlots_1_0), Each(before));
  }
}

TEST(RuntimeTable, WhatVersion11AddsLeavesTheSlotsOf10) {
  const auto words = tableAfter(fillSlots_1_1, kCanary);
  EXPECT_THAT(part<kSlots_1_0>(words, 0), Each(kCanary));
  EXPECT_THAT(part<kSlots_1_1 - kSlots_1_0>(words, kSlots_1_0), Each(Not(kCanary)));
}

}  // namespace
}  // namespace hcy
