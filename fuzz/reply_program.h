// SPDX-License-Identifier: Apache-2.0
//
// Bodies of replies, made up from bytes: such as senders write, and others that mean the same.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace hcy::fuzz {

class ReplyProgram {
 public:
  explicit ReplyProgram(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::string reply();

 private:
  using Pieces = std::vector<std::string>;

  // Zero where the bytes have ended.
  std::uint8_t next();
  std::size_t below(std::size_t count) { return next() % count; }
  bool seldom() { return below(8) == 7; }
  std::uint64_t value();

  // Now and then longer than it need be.
  std::string varint(std::uint64_t value);
  std::string field(int number, const std::string& content);
  std::string varintField(int number, std::uint64_t value);
  std::string unknownField();
  // One after another, seldom in another order, seldom with unknown fields among them.
  std::string joined(Pieces pieces);

  std::size_t count();
  // The elements of a repeated field: packed, in pieces, or one by one.
  void addVarints(Pieces& pieces, int number, const std::vector<std::uint64_t>& values);
  void addFixed(Pieces& pieces, int number, std::size_t width, std::size_t count);
  void addElements(Pieces& pieces, int number, int type, std::size_t count);
  void addArrays(Pieces& pieces, int number, std::size_t count, int levels);

  std::string array(int levels);
  std::string deepArray();
  std::string part(int type, std::size_t count, int levels);
  std::string structPart(std::size_t count, int levels);
  std::string sparsePart();

  std::span<const std::uint8_t> bytes_;
};

}  // namespace hcy::fuzz
