// SPDX-License-Identifier: Apache-2.0
//
// What memory that runs out on the way leaves in a content, which other handles may share.

#include <memory>
#include <new>
#include <string>

#include "abi/array_kinds.h"
#include "array/array_handle.h"
#include "array/array_proxy_builder.h"
#include "memory/sweep.h"
#include "support/wrapped_arrays.h"
#include "wire/protobuf_version.h"

namespace hcy::abi {
namespace {

// Whether an allocation failed; what was thrown then was std::bad_alloc.
template <class Call>
bool hasFailed(const Shortage& shortage, Call call) {
  const test::FailingAllocation failing(shortage.working, shortage.exhaustion);
  try {
    call();
  } catch (const std::bad_alloc&) {
    EXPECT_TRUE(failing.hasFailed());
  }
  return failing.hasFailed();
}

class ExhaustedMemoryInAResize : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, ExhaustedMemoryInAResize, testing::ValuesIn(fullKinds()), kindName);

TEST_P(ExhaustedMemoryInAResize, leavesTheMessageAsItWas) {
  const std::size_t failures = failEachAllocation([](const Shortage& shortage) {
    const Array array = filledMatrix(GetParam(), 3, 2);
    proxyOf(array).commit();
    const std::string before = test::messageOf(array).SerializeAsString();
    const bool failed = hasFailed(shortage, [&] { hcySetM(array, 20); });
    EXPECT_EQ(test::messageOf(array).SerializeAsString() == before, failed);
    return failed;
  });
  EXPECT_GT(failures, 0U);
}

class ExhaustedMemoryForAPart : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, ExhaustedMemoryForAPart, testing::ValuesIn(allKinds()), kindName);

// A reply's array may lack the part that holds the elements.
TEST_P(ExhaustedMemoryForAPart, leavesAMessageThatCanBeSent) {
  VORTEN_Array bare;
  bare.set_type(GetParam().isSparse ? VORTEN_Array::SPARSE
                                    : static_cast<VORTEN_Array::QXType>(GetParam().id));
  resizeList(*bare.mutable_dimension(), 2, 2);
  if (GetParam().id == hcyLOGICAL_CLASS && GetParam().isSparse) {
    bare.mutable_sparse()->set_type(VORTEN_Array::Sparse::LOGICAL);
  }
  failEachAllocation([&](const Shortage& shortage) {
    const Array array = test::wrapped(bare).release();
    const bool failed = hasFailed(shortage, [&] { dataOf(array); });
    VORTEN_Array left;
    EXPECT_TRUE(left.ParseFromString(test::messageOf(array).SerializeAsString()));
    EXPECT_EQ(hcyGetNumberOfElements(array), 4U);
    return failed;
  });
}

// The index of many names is made when it is first needed; without memory for it, they are
// compared.
TEST(ExhaustedMemory, whileAFieldIsFoundAmongManyFindsIt) {
  const char* const names[] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j",
                               "k", "l", "m", "n", "o", "p", "q", "r", "s", "t"};
  for (std::size_t working = 0; working < 30; ++working) {
    const Array array = hcyCreateStructMatrix(1, 1, 20, names);
    EXPECT_FALSE(hasFailed({working, test::Exhaustion::OneAllocation},
                           [&] { EXPECT_EQ(hcyGetFieldNumber(array, "t"), 19); }) &&
                 working > 25);
    EXPECT_EQ(hcyGetFieldNumber(array, "s"), 18);
  }
}

// The message library forgets a name that its list cannot grow for; ours grows before.
TEST(ExhaustedMemory, whileANameIsAddedToAFullListLosesNothing) {
  const char* const names[] = {"a", "b", "c", "d"};
  bool failed = true;
  for (std::size_t working = 0; failed; ++working) {
    const test::BlockWatch watch;
    {
      const Array array = hcyCreateStructMatrix(1, 2, 4, names);
      failed = hasFailed({working, test::Exhaustion::OneAllocation}, [&] {
        hcyAddField(array, "a name that is too long to lie in its object");
      });
      EXPECT_EQ(hcyGetNumberOfFields(array), failed ? 4 : 5);
    }
    ASSERT_EQ(watch.list(), "") << lastCallers();
  }
}

TEST(ExhaustedMemory, whileElementsAreLentOfWhichOneIsSharedDoesNotTakeTheOthers) {
  failEachAllocation([](const Shortage& shortage) {
    const Array cell = hcyCreateCellMatrix(1, 2);
    const Array shared = hcyCreateDoubleScalar(2.0);
    hcySetCell(cell, 0, Array(hcyCreateDoubleScalar(1.0)));
    hcySetCell(cell, 1, shared);
    const bool failed = hasFailed(shortage, [&] { Array(hcyDuplicateArray(cell)); });
    EXPECT_TRUE(test::messageOf(cell).cell().elements().empty());
    EXPECT_EQ(hcyGetScalar(Array(hcyGetCell(cell, 0))), 1.0);
    return failed;
  });
}

}  // namespace
}  // namespace hcy::abi
