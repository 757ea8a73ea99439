// SPDX-License-Identifier: Apache-2.0
//
// How much memory a reply can make the library take: what the header says at most.

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "array/array_proxy_builder.h"
#include "hcy.client.VORTENResult.pb.h"
#include "runtime/reply_reader.h"

namespace hcy {
namespace {

constexpr std::size_t kBodySize = std::size_t{1} << 20;

// The bytes of a length-delimited field.
std::string field(unsigned number, const std::string& content) {
  std::string bytes;
  const auto varint = [&bytes](std::size_t value) {
    for (; value > 0x7F; value >>= 7) bytes += static_cast<char>(value | 0x80);
    bytes += static_cast<char>(value);
  };
  varint(number << 3 | 2U);
  varint(content.size());
  return bytes + content;
}

std::string repeated(const std::string& part) {
  std::string bytes;
  while (bytes.size() + part.size() <= kBodySize) bytes += part;
  return bytes;
}

std::string array(VORTEN_Array::QXType type, unsigned partNumber, const std::string& part) {
  return std::string("\x08") + static_cast<char>(type) + field(partNumber, part);
}

std::size_t residentBytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  statm >> total >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

struct Hostile {
  const char* name;
  std::string body;
};

// An output of one container with as many parts as fit.
std::string containerOf(VORTEN_Array::QXType type, unsigned partNumber, const std::string& part) {
  return field(1, array(type, partNumber, repeated(part)));
}

std::vector<Hostile> hostileBodies() {
  constexpr auto cell = VORTEN_Array::kCellFieldNumber;
  constexpr auto structure = VORTEN_Array::kStructFieldNumber;
  const std::string many(kBodySize, '\1');
  const std::string emptyElement = field(1, "");
  const std::string double_ = array(VORTEN_Array::DOUBLE, VORTEN_Array::kQxdoubleFieldNumber, "");
  std::string allParts;
  for (unsigned i = VORTEN_Array::kUint8FieldNumber; i <= structure + 10U; ++i) {
    allParts += field(i, "");
  }
  const auto packed = [&many](VORTEN_Array::QXType type, unsigned number) {
    return field(1, array(type, number, field(1, many)));
  };
  return {
      {"empty elements", containerOf(VORTEN_Array::CELL, cell, emptyElement)},
      {"empty values of fields", containerOf(VORTEN_Array::STRUCT, structure, field(2, ""))},
      {"empty names of fields", containerOf(VORTEN_Array::STRUCT, structure, field(1, ""))},
      {"elements without contents", containerOf(VORTEN_Array::CELL, cell, field(1, double_))},
      {"elements of every class", containerOf(VORTEN_Array::CELL, cell, field(1, allParts))},
      {"cells in cells", containerOf(VORTEN_Array::CELL, cell,
                                     field(1, array(VORTEN_Array::CELL, cell, emptyElement)))},
      {"small integers", packed(VORTEN_Array::UINT64, VORTEN_Array::kUint64FieldNumber)},
      {"logicals", packed(VORTEN_Array::LOGICAL, VORTEN_Array::kLogicalFieldNumber)},
      {"doubles", packed(VORTEN_Array::DOUBLE, VORTEN_Array::kQxdoubleFieldNumber)},
      {"chars", packed(VORTEN_Array::CHAR, VORTEN_Array::kQxcharFieldNumber)},
      {"dimensions", field(1, field(2, many))},
      {"unknown fields", field(1, repeated("\xF8\x07\x01"))},
      {"stack frames", field(2, repeated(field(3, "")))},
      {"outputs", repeated(field(1, ""))},
  };
}

// What the outputs that are wanted take, and what else the reply holds.
double bytesTakenBy(const std::string& body, std::size_t wanted) {
  ::malloc_trim(0);
  const std::size_t before = residentBytes();
  Reply reply =
      readReply({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()}, wanted);
  std::vector<std::unique_ptr<VORTENArrayProxy>> arrays;
  for (auto& output : reply.outputs) {
    arrays.push_back(ArrayProxyBuilder::over(std::move(output)));
  }
  EXPECT_TRUE(arrays.size() == wanted || reply.error);
  return static_cast<double>(residentBytes()) - static_cast<double>(before);
}

TEST(HostileMemory, IsAtMost200BytesForEachByteOfAReply) {
  for (const Hostile& hostile : hostileBodies()) {
    const double each = bytesTakenBy(hostile.body, 1) / static_cast<double>(hostile.body.size());
    EXPECT_LE(each, 200.0) << hostile.name;
    std::printf("%5.1f bytes a byte: %s\n", each, hostile.name);
  }
}

TEST(HostileMemory, IsAtMost2KibibytesMoreForEachOutput) {
  constexpr std::size_t wanted = 30'000;
  std::string body;
  for (std::size_t i = 0; i < wanted; ++i) body += field(1, "");
  const double each = bytesTakenBy(body, wanted) / wanted;
  EXPECT_LE(each, 2048.0 + 2 * 200.0);
  std::printf("%5.1f bytes an output\n", each);
}

}  // namespace
}  // namespace hcy
