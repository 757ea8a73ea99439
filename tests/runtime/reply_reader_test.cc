// SPDX-License-Identifier: Apache-2.0
//
// Our reading of a reply beside the message library's own.

#include "runtime/reply_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "hcy.client.VORTENResult.pb.h"
#include "support/array_messages.h"
#include "support/wrapped_arrays.h"
#include "wire/protobuf_version.h"

namespace hcy {
namespace {

using client::VORTEN_Result;

using test::bytesOf;

// What is sent of an output, or what was read of one that the library does not serve.
std::string sentOf(const ReceivedArray& output) {
  ReceivedArray copy{copyOf(*output.content)};
  if (!isServedQXType(copy.content->data.type())) return test::writtenBytes(copy.content->data);
  return test::sent(ArrayProxyBuilder::over(std::move(copy))).SerializeAsString();
}

// The same of an output as the message library read it.
std::string sentOf(const VORTEN_Array& message) {
  ReceivedArray output;
  readReceived(output, bytesOf(message.SerializeAsString()));
  return sentOf(output);
}

// What was read, as text, with all outputs wanted or none.
struct Read {
  bool hasError = false;
  std::string error;
  std::size_t count = 0;
  std::vector<std::string> outputs;
};

Read readByUs(const std::string& body, std::size_t wanted = 1000) {
  Reply reply = readReply(bytesOf(body), wanted);
  Read read{reply.error.has_value(),
            reply.error ? reply.error->SerializeAsString() : "",
            reply.outputCount,
            {}};
  for (const auto& output : reply.outputs) read.outputs.push_back(sentOf(output));
  return read;
}

Read readOf(const VORTEN_Result& result) {
  Read read{result.has_error(),
            result.has_error() ? result.error().SerializeAsString() : "",
            static_cast<std::size_t>(result.lhs_size()),
            {}};
  for (const auto& output : result.lhs()) read.outputs.push_back(sentOf(output));
  return read;
}

// What stands behind a wrong length, and how much of it is read, means nothing: of a body that is
// no message only what decides the outcome of a call is the same.
void expectTheSame(const std::string& body) {
  VORTEN_Result result;
  const bool isWhole = result.ParsePartialFromString(body);
  const Read ours = readByUs(body);
  const Read theirs = readOf(result);
  EXPECT_EQ(ours.hasError, theirs.hasError) << testing::PrintToString(body);
  EXPECT_EQ(ours.count, theirs.count) << testing::PrintToString(body);
  EXPECT_EQ(readByUs(body, 0).count, theirs.count) << testing::PrintToString(body);
  if (!isWhole) return;
  EXPECT_EQ(ours.error, theirs.error) << testing::PrintToString(body);
  EXPECT_EQ(ours.outputs, theirs.outputs) << testing::PrintToString(body);
}

std::vector<std::string> replies() {
  VORTEN_Result result;
  *result.add_lhs() = test::rowOf<INT16_class>({-1, 300});
  *result.add_lhs() = test::structOf({1, 1}, {"a", "b"}, {1, -2});
  *result.add_lhs() = test::rowOf<CHAR_class>({97, 8364});
  VORTEN_Result error;
  error.mutable_error()->set_message("m");
  error.mutable_error()->add_stack()->set_line(7);
  *error.add_lhs() = test::rowOf<UINT64_class>({1, 2});
  VORTEN_Result more;
  more.mutable_error()->set_identifier("a:b");
  more.mutable_error()->add_stack()->set_line(8);
  return {result.SerializeAsString(), error.SerializeAsString(),
          // Two accounts of one error, which belong together.
          error.SerializeAsString() + more.SerializeAsString(),
          // Fields that the schema does not know: a varint, 64 bits, text, a group, 32 bits.
          "\x18\x05\x21" + std::string(8, 'x') + "\x2A\x02hi\x33\x08\x01\x34\x3D" +
              std::string(4, 'x') + result.SerializeAsString() + error.SerializeAsString()};
}

TEST(Reply, IsReadAsTheMessageLibraryReadsIt) {
  for (const std::string& body : replies()) expectTheSame(body);
}

TEST(Reply, IsReadAsTheMessageLibraryReadsItWithAnyBitChanged) {
  for (const std::string& body : replies()) {
    for (std::size_t bit = 0; bit < 8 * body.size(); ++bit) {
      std::string changed = body;
      changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << bit % 8));
      expectTheSame(changed);
    }
  }
}

TEST(Reply, IsReadAsTheMessageLibraryReadsItCutAnywhere) {
  for (const std::string& body : replies()) {
    for (std::size_t size = 0; size < body.size(); ++size) expectTheSame(body.substr(0, size));
  }
}

TEST(Reply, EndsWhereAByteOf0StandsForATag) {
  const std::string zero(1, '\0');
  const Read read = readByUs(replies()[0] + zero + replies()[1]);
  EXPECT_EQ(read.count, 3U);
  EXPECT_FALSE(read.hasError);
  expectTheSame(replies()[0] + zero + replies()[1]);
}

// What stands there could be read as another field.
TEST(Reply, EndsWithAnEmptyOutputWhereALengthIsTooLarge) {
  const std::string output = "\x0A";
  const std::string length = "\x80\x80\x80\x80\x08\x05";  // 2 to the 31st, or a field that is 5
  const Read content =
      readByUs(output + length + test::rowOf<INT32_class>({1}).SerializeAsString());
  EXPECT_EQ(content.count, 1U);
  EXPECT_EQ(content.outputs, std::vector<std::string>{""});
  const Read behind = readByUs(output + length + replies()[1]);
  EXPECT_EQ(behind.count, 1U);
  EXPECT_FALSE(behind.hasError);
}

TEST(Reply, GivesNoMemoryToOutputsThatNobodyWants) {
  const std::string body = replies()[0];
  const Reply reply = readReply(bytesOf(body), 2);
  EXPECT_EQ(reply.outputCount, 3U);
  ASSERT_EQ(reply.outputs.size(), 2U);
}

// The buffers have the room that the dimensions ask for.
TEST(Reply, ReservesRoomForElementsOfAnyWidth) {
  VORTEN_Array array = test::arrayOf(VORTEN_Array::INT16, {20, 50});
  for (int i = 0; i < 1000; ++i) {
    array.mutable_int16()->add_elements(i % 3 == 0 ? -i : i);
    array.mutable_int16()->add_imag_elements(i);
  }
  VORTEN_Result result;
  *result.add_lhs() = array;
  const Reply reply = readReply(bytesOf(result.SerializeAsString()), 1);
  const ArrayData& read = reply.outputs.at(0).content->data;
  EXPECT_EQ(read.real.capacity(), 2000U);
  EXPECT_EQ(read.imaginary.capacity(), 2000U);
  EXPECT_EQ(sentOf(reply.outputs[0]), array.SerializeAsString());
}

TEST(Reply, ReservesNoMoreRoomThanItHasBytes) {
  VORTEN_Array array = test::arrayOf(VORTEN_Array::INT16, {std::uint64_t{1} << 40, 1});
  resizeList(*array.mutable_int16()->mutable_elements(), 5000, 1);
  VORTEN_Result result;
  *result.add_lhs() = array;
  const Reply reply = readReply(bytesOf(result.SerializeAsString()), 1);
  EXPECT_EQ(reply.outputs.at(0).content->data.real.capacity(), 10000U);
}

// A cell in a cell and so on; each one is two levels of messages.
VORTEN_Array nestedCells(int depth, VORTEN_Array array) {
  for (int i = 0; i < depth; ++i) {
    VORTEN_Array outer = test::arrayOf(VORTEN_Array::CELL, {1, 1});
    *outer.mutable_cell()->add_elements() = std::move(array);
    array = std::move(outer);
  }
  return array;
}

TEST(Reply, IsReadAsDeepAsTheMessageLibraryReadsIt) {
  const VORTEN_Array value = test::rowOf<DOUBLE_class>({1});
  for (const int depth : {48, 49, 50, 51, 60}) {
    for (const VORTEN_Array& leaf : {test::arrayOf(VORTEN_Array::DOUBLE, {0, 0}), value}) {
      VORTEN_Result result;
      *result.add_lhs() = nestedCells(depth, leaf);
      *result.add_lhs() = value;
      const std::string body = result.SerializeAsString();
      EXPECT_EQ(readByUs(body).count, depth <= 49 ? 2U : 1U) << depth;
      expectTheSame(body);
    }
  }
}

}  // namespace
}  // namespace hcy
