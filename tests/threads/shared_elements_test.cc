// SPDX-License-Identifier: Apache-2.0
//
// Handles that share an element may be released on different threads. Whoever is last frees it.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "at_once.h"
#include "support/array_value.h"

namespace hcy::abi {
namespace {

using test::atOnce;

constexpr int kThreads = 8;
constexpr int kRounds = 25;

// An element of each kind of storage.
std::vector<Value> elements() {
  return {doubles({1, 2}, {1, 2}, {3, 4}), chars({1, 2}, u"ab"),
          numeric<std::int16_t>(hcyINT16_CLASS, {1, 1}, {-1}), cell({1, 1}, {doubles({0, 0}, {})}),
          sparseLogicals({1, 1}, {0}, {0, 1}, "1")};
}

TEST(ThreadsSharedElements, handlesOverOneElementReleasedAtOnce) {
  for (int round = 0; round < kRounds; ++round) {
    for (const Value& element : elements()) {
      const OwnedArray container = makeArray(cell({1, 1}, {element}));
      std::array<OwnedArray, kThreads> handles;
      for (OwnedArray& handle : handles) handle.reset(hcyGetCell(container.get(), 0));
      atOnce(kThreads, [&handles](int i) { handles[static_cast<std::size_t>(i)].reset(); });
      const OwnedArray left(hcyGetCell(container.get(), 0));
      expectArray(left.get(), element);
    }
  }
}

// The element outlives them all but the last.
TEST(ThreadsSharedElements, containersOfOneElementReleasedAtOnce) {
  for (int round = 0; round < kRounds; ++round) {
    for (const Value& element : elements()) {
      std::array<OwnedArray, kThreads> containers;
      const OwnedArray shared = makeArray(element);
      for (OwnedArray& container : containers) {
        container = makeArray(structure({1, 1}, {"a"}, {neverSet()}));
        hcySetField(container.get(), 0, "a", shared.get());
      }
      atOnce(kThreads, [&containers](int i) { containers[static_cast<std::size_t>(i)].reset(); });
      expectArray(shared.get(), element);
    }
  }
}

TEST(ThreadsSharedElements, everyHolderReleasedAtOnce) {
  for (int round = 0; round < kRounds; ++round) {
    for (const Value& element : elements()) {
      std::array<OwnedArray, kThreads> holders;
      holders[0] = makeArray(cell({1, 1}, {element}));
      for (std::size_t i = 1; i < holders.size(); ++i) {
        holders[i].reset(hcyGetCell(holders[0].get(), 0));
      }
      atOnce(kThreads, [&holders](int i) { holders[static_cast<std::size_t>(i)].reset(); });
    }
  }
}

// Arrays that share nothing, made, read and destroyed at once.
TEST(ThreadsSharedElements, arraysOfTheirOwnUsedAtOnce) {
  atOnce(kThreads, [](int) {
    for (int round = 0; round < kRounds; ++round) {
      for (const Value& element : elements()) {
        const OwnedArray array = makeArray(element);
        const OwnedArray copy(hcyDuplicateArray(array.get()));
        expectArray(copy.get(), element);
      }
    }
  });
}

}  // namespace
}  // namespace hcy::abi
