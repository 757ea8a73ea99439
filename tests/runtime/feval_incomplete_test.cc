// SPDX-License-Identifier: Apache-2.0
//
// Outputs of whole calls that hold fewer elements than their dimensions say, as inputs of others.

#include <gtest/gtest.h>

#include <cstdint>

#include "runtime/reply_call.h"
#include "support/array_messages.h"

namespace hcy::abi {
namespace {

template <class Class>
struct HoldNumbers : std::bool_constant<!SparseClass<Class> && !ContainerClass<Class>> {};

template <class Class>
class FevalIncomplete : public ReplyCall {
 protected:
  // A 1-by-4 array with the first of its elements, at least one.
  static VORTEN_Array withElements(int count) {
    VORTEN_Array array = test::arrayOf(Class::type, {1, 4});
    for (int i = 0; i < count; ++i) test::assign(Class::write(array).mutable_elements(), {1});
    return array;
  }

  static const void* elements(const OwnedArray& array) {
    if (hcyIsLogical(array.get())) return hcyGetLogicals(array.get());
    if (hcyIsChar(array.get())) return hcyGetChars(array.get());
    return hcyGetData(array.get());
  }
};
TYPED_TEST_SUITE(FevalIncomplete, test::ClassesThat<HoldNumbers>, test::ClassNames);

TYPED_TEST(FevalIncomplete, outputIsSentAgainAsItCameAndCompletedByItsDimensions) {
  for (const int count : {1, 3, 4}) {
    const VORTEN_Array message = this->withElements(count);
    const OwnedArray output = this->received(message);
    EXPECT_EQ(this->elements(output) != nullptr, count == 4) << count;
    EXPECT_EQ(hcyGetScalar(output.get()), 1.0);
    EXPECT_EQ(this->sent(output.get()).SerializeAsString(), message.SerializeAsString()) << count;
    hcySetM(output.get(), 1);
    EXPECT_NE(this->elements(output), nullptr);
    const VORTEN_Array completed = this->sent(output.get());
    const auto& all = TypeParam::read(completed).elements();
    test::Numbers expected(4, 0.0);
    std::fill_n(expected.begin(), count, 1.0);
    EXPECT_EQ(test::numbers(all), expected) << count;
  }
}

TYPED_TEST(FevalIncomplete, elementOfAnOutputIsSentAgainAsItCame) {
  for (const auto type : {VORTEN_Array::CELL, VORTEN_Array::STRUCT}) {
    const VORTEN_Array message = this->withElements(3);
    const VORTEN_Array container = containerOf(type, {message, doubleArray(5)});
    const OwnedArray output = this->received(container);
    const OwnedArray element(type == VORTEN_Array::CELL ? hcyGetCell(output.get(), 0)
                                                        : hcyGetFieldByNumber(output.get(), 0, 0));
    EXPECT_EQ(this->elements(element), nullptr);
    EXPECT_EQ(this->sent(element.get()).SerializeAsString(), message.SerializeAsString());
    EXPECT_EQ(this->sent(output.get()).SerializeAsString(), container.SerializeAsString());
    const OwnedArray stored(hcyCreateCellMatrix(1, 1));
    hcySetCell(stored.get(), 0, output.get());
    EXPECT_EQ(this->sent(stored.get()).cell().elements(0).SerializeAsString(),
              container.SerializeAsString());
  }
}

}  // namespace
}  // namespace hcy::abi
