// SPDX-License-Identifier: Apache-2.0
//
// How much memory a reply can make the library take: what the header says at most.

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "array/array_proxy_builder.h"
#include "hcy.client.VORTENResult.pb.h"
#include "hcy/hcyclient.h"
#include "runtime/reply_reader.h"

namespace hcy {
namespace {

constexpr std::size_t kBodySize = std::size_t{1} << 20;

std::string varint(std::size_t value) {
  std::string bytes;
  for (; value > 0x7F; value >>= 7) bytes += static_cast<char>(value | 0x80);
  return bytes += static_cast<char>(value);
}

// The bytes of a length-delimited field.
std::string field(unsigned number, const std::string& content) {
  return varint(number << 3 | 2U) + varint(content.size()) + content;
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

// A cell array of that many copies of an element, and perhaps another one. Its dimensions name all.
std::string cellOf(std::size_t copies, const std::string& element, const std::string& last = "") {
  std::string elements;
  const std::string part = field(1, element);
  for (std::size_t i = 0; i < copies; ++i) elements += part;
  if (!last.empty()) elements += field(1, last);
  return std::string("\x08") + static_cast<char>(VORTEN_Array::CELL) +
         field(2, "\1" + varint(copies + (last.empty() ? 0 : 1))) +
         field(VORTEN_Array::kCellFieldNumber, elements);
}

// As many of these elements as fit.
std::string fullCellOf(const std::string& element) {
  return field(1, cellOf(kBodySize / field(1, element).size(), element));
}

// Containers in containers, each with 1,000 elements and the next one.
std::string nestedCells(const std::string& element) {
  constexpr int kLevels = 48;
  std::string nested;
  for (int i = 0; i < kLevels; ++i) nested = cellOf(1000, element, nested);
  return field(1, nested);
}

std::string doubleScalar() {
  return std::string("\x08\x09\x12\x02\1\1", 6) +
         field(VORTEN_Array::kQxdoubleFieldNumber, field(1, std::string(8, '\1')));
}

// A struct array with a field, and as many elements as fit.
std::string fullStruct() {
  std::string values = field(1, "a");
  std::size_t count = kBodySize / 2;
  for (std::size_t i = 0; i < count; ++i) values += field(2, "");
  return field(1, std::string("\x08") + static_cast<char>(VORTEN_Array::STRUCT) +
                      field(2, "\1" + varint(count)) +
                      field(VORTEN_Array::kStructFieldNumber, values));
}

std::vector<Hostile> containers() {
  std::string allParts;
  for (unsigned i = VORTEN_Array::kUint8FieldNumber; i <= VORTEN_Array::kStructFieldNumber; ++i) {
    allParts += field(i, "");
  }
  const std::string empty = cellOf(1, "");
  const std::string char_ = array(VORTEN_Array::CHAR, VORTEN_Array::kQxcharFieldNumber, "");
  const std::string sparse = array(VORTEN_Array::SPARSE, VORTEN_Array::kSparseFieldNumber, "");
  return {
      {"walked: empty elements", fullCellOf("")},
      {"walked: elements with a class alone", fullCellOf("\x08\x09")},
      {"walked: chars without contents", fullCellOf(char_)},
      {"walked: sparse arrays without contents", fullCellOf(sparse)},
      {"walked: elements of every class", fullCellOf(allParts)},
      {"walked: double scalars", fullCellOf(doubleScalar())},
      {"walked: cells without elements", fullCellOf(cellOf(0, ""))},
      {"walked: cells of an empty element", fullCellOf(empty)},
      {"walked: cells of four empty elements", fullCellOf(cellOf(4, ""))},
      {"walked: cells in cells of an empty element", fullCellOf(cellOf(1, empty))},
      {"walked: cells in cells in cells", fullCellOf(cellOf(1, cellOf(1, empty)))},
      {"walked: empty values of a field", fullStruct()},
      {"walked: 48 levels of 1,000 empty elements", nestedCells("")},
      {"walked: 48 levels of 1,000 double scalars", nestedCells(doubleScalar())},
      {"walked: 48 levels of 1,000 cells of an empty element", nestedCells(empty)},
  };
}

// Asks for every element once. Held are the handles over the containers around it, or all handles.
enum class Held { path, all };

class Walk {
 public:
  explicit Walk(Held held) : held_(held) {}

  void visit(const hcyArray* array) {
    hcyGetData(array);
    hcyGetDimensions(array);
    // A look at the memory takes a while.
    if (visited_++ % 512 == 0) look();
    const std::size_t count = hcyGetNumberOfElements(array);
    const int fields = hcyIsStruct(array) ? hcyGetNumberOfFields(array) : 0;
    bool isThere = hcyIsCell(array) || fields != 0;
    for (std::size_t i = 0; isThere && i < count; ++i) {
      if (hcyIsCell(array)) isThere = visitElement(hcyGetCell(array, i));
      for (int j = 0; isThere && j < fields; ++j) {
        isThere = visitElement(hcyGetFieldByNumber(array, i, j));
      }
    }
    if (depth_ == 0) look();
  }

  std::size_t visited() const { return visited_; }
  std::size_t mostResident() const { return mostResident_; }

 private:
  bool visitElement(hcyArray* made) {
    std::unique_ptr<hcyArray> element(made);
    if (!element) return false;
    ++depth_;
    visit(element.get());
    --depth_;
    if (held_ == Held::all) handles_.push_back(std::move(element));
    return true;
  }

  void look() { mostResident_ = std::max(mostResident_, residentBytes()); }

  Held held_;
  std::deque<std::unique_ptr<hcyArray>> handles_;
  std::size_t visited_ = 0;
  std::size_t mostResident_ = 0;
  int depth_ = 0;
};

TEST(HostileMemory, IsAtMost50BytesForEachByteOfAReply) {
  for (const Hostile& hostile : hostileBodies()) {
    const double each = bytesTakenBy(hostile.body, 1) / static_cast<double>(hostile.body.size());
    EXPECT_LE(each, 50.0) << hostile.name;
    std::printf("%5.1f bytes a byte: %s\n", each, hostile.name);
  }
}

double bytesTakenByWalk(const Hostile& hostile, Held held) {
  const std::string& body = hostile.body;
  ::malloc_trim(0);
  const std::size_t before = residentBytes();
  Reply reply = readReply({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()}, 1);
  Walk walk(held);
  for (auto& output : reply.outputs) {
    walk.visit(ArrayProxyBuilder::over(std::move(output)).get());
  }
  const double taken = static_cast<double>(walk.mostResident()) - static_cast<double>(before);
  const double each = std::max(taken, 0.0) / static_cast<double>(body.size());
  std::printf("%5.1f bytes a byte: %s (%zu bytes, %zu arrays)\n", each, hostile.name, body.size(),
              walk.visited());
  return each;
}

TEST(HostileMemory, OfAWalkIsAtMost400BytesForEachByteOfAReply) {
  std::vector<Hostile> bodies = hostileBodies();
  for (Hostile& hostile : containers()) bodies.push_back(std::move(hostile));
  for (const Hostile& hostile : bodies) {
    EXPECT_LE(bytesTakenByWalk(hostile, Held::path), 400.0) << hostile.name;
  }
}

TEST(HostileMemory, OfAWalkThatHoldsEveryHandleIsAtMost400BytesForEachByteOfAReply) {
  for (const Hostile& hostile : containers()) {
    EXPECT_LE(bytesTakenByWalk(hostile, Held::all), 400.0) << hostile.name;
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
