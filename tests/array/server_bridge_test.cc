// SPDX-License-Identifier: Apache-2.0
//
// What a server in the same process finds by the handle of an array.

#include "array/server_bridge.h"

#include <gtest/gtest.h>

#include <string>

#include "support/array_messages.h"
#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::bytesOf;
using test::owned;

ArrayReading read(const std::string& bytes, ArrayHandle& array) {
  hcyArray* handle = nullptr;
  const ArrayHandle any = owned(hcyCreateDoubleScalar(0));
  const ArrayReading reading =
      serverBridgeOf(any.get())->read(bytesOf(bytes).data(), bytes.size(), &handle);
  array = owned(handle);
  return reading;
}

std::string written(const ArrayHandle& array) {
  const ServerBridge& bridge = *serverBridgeOf(array.get());
  std::size_t size = 0;
  const void* const writing = bridge.beginWriting(array.get(), &size);
  std::string bytes(size, '\0');
  auto* const begin = reinterpret_cast<std::uint8_t*>(bytes.data());
  EXPECT_EQ(bridge.write(writing, begin), begin + size);
  bridge.endWriting(writing);
  return bytes;
}

TEST(ServerBridge, IsFoundByArraysOfEveryKind) {
  EXPECT_NE(serverBridgeOf(owned(hcyCreateString("text")).get()), nullptr);
  EXPECT_NE(serverBridgeOf(owned(hcyCreateCellMatrix(1, 2)).get()), nullptr);
  EXPECT_NE(serverBridgeOf(owned(hcyCreateSparse(2, 2, 1, hcyREAL)).get()), nullptr);
}

TEST(ServerBridge, IsNotFoundByHandlesOfAnotherLibrary) {
  const struct OtherArray : hcyArray {
    virtual void something() const {}
  } other;
  EXPECT_EQ(serverBridgeOf(&other), nullptr);
  EXPECT_EQ(serverBridgeOf(nullptr), nullptr);
}

TEST(ServerBridge, ReadsWhatItWrites) {
  const ArrayHandle text = owned(hcyCreateString("text"));
  const std::string bytes = written(text);
  EXPECT_EQ(bytes, test::sent(text).SerializeAsString());
  ArrayHandle same;
  ASSERT_EQ(read(bytes, same), ArrayReading::kWhole);
  EXPECT_EQ(written(same), bytes);
}

TEST(ServerBridge, TellsWhyThereIsNoArray) {
  const std::string bytes = written(owned(hcyCreateString("text")));
  ArrayHandle none;
  EXPECT_EQ(read(bytes.substr(0, bytes.size() - 1), none), ArrayReading::kBroken);
  EXPECT_EQ(none, nullptr);
  for (const int type : test::unservedTypes) {
    EXPECT_EQ(read(test::arrayOf(type, {1, 1}).SerializeAsString(), none),
              ArrayReading::kNotServed);
    EXPECT_EQ(none, nullptr);
  }
}

}  // namespace
}  // namespace hcy
