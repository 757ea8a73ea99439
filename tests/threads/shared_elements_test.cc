// SPDX-License-Identifier: Apache-2.0
//
// Handles that share an element may be released on different threads. Whoever is last frees it.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "at_once.h"
#include "support/array_value.h"

namespace hcy::abi {
namespace {

using test::atOnce;

constexpr int kThreads = 8;
constexpr int kRounds = 200;

// What the threads are to release. Each goes through its own in the same order, so that they meet
// at every element.
class Holdings {
 public:
  void add(std::size_t thread, hcyArray* handle) { handles_[thread].emplace_back(handle); }

  void releaseAtOnce() {
    atOnce(kThreads, [this](int thread) {
      for (OwnedArray& handle : handles_[static_cast<std::size_t>(thread)]) handle.reset();
    });
  }

 private:
  std::array<std::vector<OwnedArray>, kThreads> handles_;
};

// An element of each kind of storage, over and over.
std::vector<Value> manyElements() {
  const std::vector<Value> kinds = {doubles({1, 2}, {1, 2}, {3, 4}), chars({1, 2}, u"ab"),
                                    numeric<std::int16_t>(hcyINT16_CLASS, {1, 1}, {-1}),
                                    cell({1, 1}, {doubles({1, 1}, {5})}),
                                    sparseLogicals({1, 1}, {0}, {0, 1}, "1")};
  std::vector<Value> elements;
  for (int i = 0; i < kRounds; ++i) elements.insert(elements.end(), kinds.begin(), kinds.end());
  return elements;
}

// The container outlives the handles over its element.
TEST(ThreadsSharedElements, handlesOverOneElementReleasedAtOnce) {
  const std::vector<Value> elements = manyElements();
  const OwnedArray container = makeArray(cell({elements.size(), 1}, elements));
  Holdings holdings;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    for (std::size_t t = 0; t < kThreads; ++t) holdings.add(t, hcyGetCell(container.get(), i));
  }
  holdings.releaseAtOnce();
  expectArray(container.get(), cell({elements.size(), 1}, elements));
}

// The element outlives the containers that it is stored in.
TEST(ThreadsSharedElements, containersOfOneElementReleasedAtOnce) {
  const std::vector<Value> elements = manyElements();
  std::vector<OwnedArray> shared;
  Holdings holdings;
  for (const Value& element : elements) {
    shared.push_back(makeArray(element));
    for (std::size_t t = 0; t < kThreads; ++t) {
      OwnedArray container = makeArray(structure({1, 1}, {"a"}, {neverSet()}));
      hcySetField(container.get(), 0, "a", shared.back().get());
      holdings.add(t, container.release());
    }
  }
  holdings.releaseAtOnce();
  for (std::size_t i = 0; i < elements.size(); ++i) expectArray(shared[i].get(), elements[i]);
}

// Nobody is left.
TEST(ThreadsSharedElements, everyHolderReleasedAtOnce) {
  Holdings holdings;
  for (const Value& element : manyElements()) {
    OwnedArray container = makeArray(cell({1, 1}, {element}));
    for (std::size_t t = 1; t < kThreads; ++t) holdings.add(t, hcyGetCell(container.get(), 0));
    holdings.add(0, container.release());
  }
  holdings.releaseAtOnce();
}

TEST(ThreadsSharedElements, arraysThatShareNothingUsedAtOnce) {
  atOnce(kThreads, [](int) {
    for (const Value& element : manyElements()) {
      const OwnedArray array = makeArray(element);
      const OwnedArray copy(hcyDuplicateArray(array.get()));
      expectArray(copy.get(), element);
    }
  });
}

}  // namespace
}  // namespace hcy::abi
