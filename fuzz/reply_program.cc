// SPDX-License-Identifier: Apache-2.0

#include "reply_program.h"

#include <algorithm>
#include <array>
#include <utility>

#include "wire/varint.h"
#include "wire/wire_parts.h"

namespace hcy::fuzz {
namespace {

constexpr int mostLevels = 3;

// Elements of a byte string, a varint, or of so many bytes.
enum Width : std::size_t { bytes = 1, varints = 0, four = 4, eight = 8 };
constexpr std::array<std::size_t, 12> widths = {
    bytes, bytes, varints, varints, four, four, varints, varints, four, eight, varints, varints};

std::string asVarint(std::uint64_t value, std::size_t length) {
  std::string text;
  for (; text.size() + 1 < length; value >>= 7) {
    text += static_cast<char>((value & 0x7F) | 0x80);
  }
  return text + static_cast<char>(value & 0x7F);
}

}  // namespace

std::uint8_t ReplyProgram::next() {
  if (bytes_.empty()) return 0;
  const std::uint8_t byte = bytes_.front();
  bytes_ = bytes_.subspan(1);
  return byte;
}

std::uint64_t ReplyProgram::value() {
  switch (below(8)) {
    case 0:
      return 0;
    case 1:
      return static_cast<std::uint64_t>(-1 - static_cast<std::int64_t>(next()));
    case 2:
      return 0x7F80U + next();  // around the largest of 16 bits, signed
    case 3:
      return 0xFF80U + next();  // and unsigned
    case 4:
      return std::uint64_t{next()} << 8 * below(8);
    default:
      return next();
  }
}

std::string ReplyProgram::varint(std::uint64_t value) {
  const std::size_t shortest = varintSize(value);
  return asVarint(value, seldom() ? shortest + below(11 - shortest) : shortest);
}

std::string ReplyProgram::field(int number, const std::string& content) {
  // A tag takes five bytes at most, and so does a length.
  const std::uint64_t tag = static_cast<std::uint64_t>(number) << 3 | 2;
  const auto length = [this](std::uint64_t value) {
    return seldom() ? std::size_t{5} : varintSize(value);
  };
  const std::size_t tagLength = length(tag);
  return asVarint(tag, tagLength) + asVarint(content.size(), length(content.size())) + content;
}

std::string ReplyProgram::varintField(int number, std::uint64_t value) {
  return asVarint(static_cast<std::uint64_t>(number) << 3, number < 16 ? 1 : 2) + varint(value);
}

std::string ReplyProgram::unknownField() {
  switch (below(4)) {
    case 0:
      return varintField(101, value());
    case 1:
      return field(100, std::string(below(5), 'u'));
    case 2:
      return "\x9B\x06" + varintField(3, value()) + "\x9C\x06";  // a group, 99
    default:
      // A number that is known, of another kind.
      return static_cast<char>(below(3) * 8 + 8 + 5) + std::string(4, static_cast<char>(next()));
  }
}

std::string ReplyProgram::joined(Pieces pieces) {
  if (seldom() && pieces.size() > 1) {
    std::swap(pieces[below(pieces.size())], pieces[below(pieces.size())]);
  }
  std::string text;
  for (const std::string& piece : pieces) {
    if (seldom()) text += unknownField();
    text += piece;
  }
  return text;
}

std::size_t ReplyProgram::count() { return seldom() ? 40 + next() : below(5); }

void ReplyProgram::addVarints(Pieces& pieces, int number,
                              const std::vector<std::uint64_t>& values) {
  const std::size_t way = below(4);
  std::string packed;
  for (const std::uint64_t value : values) {
    const bool isAlone = way == 3 && seldom();
    if (way == 2 || isAlone) {
      if (!packed.empty()) pieces.push_back(field(number, std::exchange(packed, "")));
      pieces.push_back(varintField(number, value));
    } else {
      packed += varint(value);
      if (way == 3 && seldom()) pieces.push_back(field(number, std::exchange(packed, "")));
    }
  }
  if (!packed.empty() || way == 1) pieces.push_back(field(number, packed));
}

void ReplyProgram::addFixed(Pieces& pieces, int number, std::size_t width, std::size_t count) {
  std::string packed;
  const bool isAlone = seldom();
  const auto tag = static_cast<char>(number << 3 | (width == four ? 5 : 1));
  for (std::size_t i = 0; i < count; ++i) {
    const std::string element(width, static_cast<char>(next()));
    if (isAlone) {
      pieces.push_back(tag + element);
    } else {
      packed += element;
      if (seldom()) pieces.push_back(field(number, std::exchange(packed, "")));
    }
  }
  if (!packed.empty()) pieces.push_back(field(number, packed));
}

void ReplyProgram::addElements(Pieces& pieces, int number, int type, std::size_t count) {
  const std::size_t width = widths[static_cast<std::size_t>(type)];
  if (width == bytes) {
    pieces.push_back(field(number, std::string(count, static_cast<char>(next()))));
  } else if (width == varints) {
    std::vector<std::uint64_t> values;
    const bool isLong = count >= 40;
    for (std::size_t i = 0; i < count; ++i) values.push_back(isLong && i % 8 != 0 ? i : value());
    addVarints(pieces, number, values);
  } else {
    addFixed(pieces, number, width, count);
  }
}

void ReplyProgram::addArrays(Pieces& pieces, int number, std::size_t count, int levels) {
  for (std::size_t i = 0; i < std::min<std::size_t>(count, 6); ++i) {
    pieces.push_back(field(number, array(levels - 1)));
  }
}

std::string ReplyProgram::structPart(std::size_t count, int levels) {
  static const std::array<std::string, 6> names = {
      "a", "b", "a field", "", std::string("a\0b", 3), "\xC3\xA9"};
  Pieces pieces;
  const std::size_t fields = seldom() ? 16 + below(4) : below(4);
  for (std::size_t i = 0; i < fields; ++i) {
    pieces.push_back(field(1, seldom() ? std::to_string(i) : names[below(names.size())]));
  }
  addArrays(pieces, 2, count * fields + (seldom() ? 1 : 0), levels);
  return joined(std::move(pieces));
}

// Of 3 rows and 3 columns, or of anything.
std::string ReplyProgram::sparsePart() {
  Pieces pieces;
  const std::size_t type = below(4);
  if (type != 0 || seldom()) pieces.push_back(varintField(1, type));
  const std::size_t stored = below(5);
  std::vector<std::uint64_t> rows;
  std::vector<std::uint64_t> starts = {0};
  for (std::size_t i = 0; i < stored; ++i) rows.push_back(seldom() ? value() : below(3));
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t most = stored - static_cast<std::size_t>(starts.back());
    starts.push_back(starts.back() + (i == 2 ? most : below(most + 1)));
  }
  if (seldom()) starts[below(4)] = value();
  addVarints(pieces, 2, rows);
  addVarints(pieces, 3, starts);
  constexpr std::array<std::pair<int, int>, 3> parts = {{{16, 9}, {17, 10}, {18, 8}}};
  const auto [number, valueType] = parts[seldom() ? below(3) : type % 3];
  for (std::size_t i = 0; i < (seldom() ? 2U : 1U); ++i) {
    Pieces values;
    addElements(values, 1, valueType, seldom() ? below(6) : stored);
    if (below(4) == 3) addElements(values, 2, valueType, seldom() ? below(6) : stored);
    pieces.push_back(field(number, joined(std::move(values))));
  }
  return joined(std::move(pieces));
}

std::string ReplyProgram::part(int type, std::size_t count, int levels) {
  const std::size_t stored = seldom() ? this->count() : count;
  if (type == VORTEN_Array::SPARSE) return sparsePart();
  if (type == VORTEN_Array::STRUCT) return structPart(stored, levels);
  Pieces pieces;
  if (type == VORTEN_Array::CELL) {
    addArrays(pieces, 1, stored, levels);
  } else {
    addElements(pieces, 1, type, stored);
    if (below(4) == 3) addElements(pieces, 2, type, stored);
  }
  return joined(std::move(pieces));
}

std::string ReplyProgram::array(int levels) {
  Pieces pieces;
  int type = static_cast<int>(below(15));
  const bool isContainer = type == VORTEN_Array::CELL || type == VORTEN_Array::STRUCT;
  if (isContainer && levels <= 0) type = VORTEN_Array::CHAR;
  if (seldom()) pieces.push_back(varintField(1, below(16)));
  pieces.push_back(varintField(1, static_cast<std::uint64_t>(type)));
  const std::size_t elements = count();
  if (type == VORTEN_Array::SPARSE) {
    addVarints(pieces, 2, {seldom() ? below(5) : 3, seldom() ? below(5) : 3});
  } else {
    addVarints(pieces, 2, {1, seldom() ? value() : elements});
  }
  if (seldom()) pieces.push_back(varintField(6, below(4)));
  if (seldom()) pieces.push_back(varintField(7, below(3)));
  if (seldom()) {
    const int other = static_cast<int>(below(15));
    pieces.push_back(field(partNumber(static_cast<VORTEN_Array::QXType>(other)),
                           part(other, elements, levels - 1)));
  }
  for (std::size_t i = 0; i < (seldom() ? 2U : 1U); ++i) {
    pieces.push_back(
        field(partNumber(static_cast<VORTEN_Array::QXType>(type)), part(type, elements, levels)));
  }
  return joined(std::move(pieces));
}

// In up to 50 cells: as deep as the message library goes, and deeper.
std::string ReplyProgram::deepArray() {
  std::string nested = array(1);
  for (std::size_t i = 45 + below(6); i > 0; --i) {
    nested = varintField(1, VORTEN_Array::CELL) + field(2, "\1\1") +
             field(VORTEN_Array::kCellFieldNumber, field(1, nested));
  }
  return nested;
}

std::string ReplyProgram::reply() {
  Pieces outputs;
  for (std::size_t i = 1 + below(3); i > 0; --i) {
    outputs.push_back(field(1, seldom() ? deepArray() : array(mostLevels)));
  }
  return joined(std::move(outputs));
}

}  // namespace hcy::fuzz
