// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <utility>

#include "array/array_proxy.h"

namespace hcy {
namespace {

// An array that counts who reads it.
class ReadArray : public VORTENArrayProxy {
 public:
  ReadArray() : VORTENArrayProxy(VORTEN_Array::DOUBLE, std::array<std::uint64_t, 2>{0, 0}, false, 0) {}
  void beginReading() override { ++begun; }
  void endReading() override { ++ended; }

  int begun = 0;
  int ended = 0;
};

TEST(MessageReading, LastsAsLongAsItLives) {
  ReadArray array;
  {
    const MessageReading reading(array);
    EXPECT_EQ(array.begun, 1);
    EXPECT_EQ(array.ended, 0);
  }
  EXPECT_EQ(array.begun, 1);
  EXPECT_EQ(array.ended, 1);
}

TEST(MessageReading, IsTakenOverByTheOneThatItIsMovedTo) {
  ReadArray array;
  std::optional<MessageReading> first(std::in_place, array);
  {
    const MessageReading second(std::move(*first));
    first.reset();
    EXPECT_EQ(array.ended, 0);
  }
  EXPECT_EQ(array.begun, 1);
  EXPECT_EQ(array.ended, 1);
}

}  // namespace
}  // namespace hcy
