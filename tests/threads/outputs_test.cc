// SPDX-License-Identifier: Apache-2.0
//
// The elements of one output, which lie in one memory, on threads of their own.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "at_once.h"
#include "support/array_value.h"
#include "support/local_server.h"

namespace hcy::abi {
namespace {

using test::atOnce;

constexpr int kThreads = 8;
constexpr int kElementsOfEach = 50;

class ThreadsOutput : public ::testing::Test {
 protected:
  // A cell of cells of one double and one text.
  OwnedArray received() {
    const Value element = cell({1, 2}, {doubles({1, 1}, {5}), chars({1, 2}, u"ab")});
    const std::size_t count = kThreads * kElementsOfEach;
    const OwnedArray input = makeArray(cell({count, 1}, std::vector<Value>(count, element)));
    hcyArray* output = nullptr;
    EXPECT_EQ(context_.feval(server_.url("/echo"), 1, &output, {input.get()}), 0);
    return OwnedArray(output);
  }

 private:
  const test::LocalServer server_;
  const Library library_;
  const Config config_{library_};
  const Context context_{library_, config_};
};

// Reads, changes, grows and copies an element, as if nobody else were there.
void use(hcyArray* element) {
  const OwnedArray number(hcyGetCell(element, 0));
  for (std::size_t n = 1; n < 40; ++n) {
    hcySetN(number.get(), n);
    hcyGetPr(number.get())[n - 1] = static_cast<double>(n);
  }
  const OwnedArray copy(hcyDuplicateArray(element));
  EXPECT_EQ(hcyGetN(OwnedArray(hcyGetCell(copy.get(), 0)).get()), 39U);
  hcySetCell(element, 1, number.get());
  EXPECT_EQ(hcyGetPr(OwnedArray(hcyGetCell(element, 1)).get())[38], 39.0);
}

TEST_F(ThreadsOutput, elementsUsedAndReleasedAtOnce) {
  OwnedArray output = received();
  std::vector<std::vector<OwnedArray>> elements(kThreads);
  for (std::size_t t = 0; t < kThreads; ++t) {
    for (std::size_t i = 0; i < kElementsOfEach; ++i) {
      elements[t].emplace_back(hcyGetCell(output.get(), t * kElementsOfEach + i));
    }
  }
  output.reset();
  atOnce(kThreads, [&elements](int thread) {
    for (OwnedArray& element : elements[static_cast<std::size_t>(thread)]) {
      use(element.get());
      element.reset();
    }
  });
}

}  // namespace
}  // namespace hcy::abi
