// SPDX-License-Identifier: Apache-2.0

#include "wire/canonical_array.h"

#include <cstddef>
#include <limits>
#include <type_traits>

#include "wire/dispatch_on_QXType.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"
#include "wire/wire_parts.h"

namespace hcy {
namespace {

// What is left of a message. A read that finds something that the message library would not have
// written makes it end.
class Cursor {
 public:
  explicit Cursor(Bytes bytes) : position_(bytes.data()), end_(position_ + bytes.size()) {}

  bool atEnd() const { return position_ == end_; }
  std::size_t left() const { return static_cast<std::size_t>(end_ - position_); }

  // Whether a field with this tag comes next; moves behind the tag then. The fields here have tags
  // of one or two bytes.
  bool takeTag(std::uint32_t tag) {
    const std::size_t size = tag < 0x80 ? 1 : 2;
    if (left() < size || position_[0] != static_cast<std::uint8_t>(size == 1 ? tag : tag | 0x80)) {
      return false;
    }
    if (size == 2 && position_[1] != tag >> 7) return false;
    position_ += size;
    return true;
  }

  // The number of the part that comes next, or less than that of the first part. Parts have tags of
  // two bytes.
  int nextPart() const {
    return left() < 2 ? 0 : ((position_[1] & 0x7F) << 7 | (position_[0] & 0x7F)) >> 3;
  }

  // A varint in its shortest form, at most `largest`.
  bool skipVarint(std::uint64_t largest) {
    const std::uint8_t* const begin = position_;
    const std::uint64_t value = readVarint(position_, end_);
    return position_ != nullptr && value <= largest &&
           varintSize(value) == static_cast<std::size_t>(position_ - begin);
  }

  // A length and as many bytes.
  bool takeContent(Bytes& content) {
    const std::uint8_t* const begin = position_;
    const std::uint64_t size = readVarint(position_, end_);
    if (position_ == nullptr || size > left() ||
        varintSize(size) != static_cast<std::size_t>(position_ - begin)) {
      return false;
    }
    content = {position_, static_cast<std::size_t>(size)};
    position_ += size;
    return true;
  }

 private:
  const std::uint8_t* position_;
  const std::uint8_t* end_;
};

template <class Element>
bool isPackedVarint(std::uint64_t value) {
  if constexpr (std::is_signed_v<Element>) {
    const auto number = static_cast<std::int64_t>(value);
    return number >= std::numeric_limits<Element>::min() &&
           number <= std::numeric_limits<Element>::max();
  } else {
    return value <= std::numeric_limits<Element>::max();
  }
}

template <class Element>
bool arePackedVarints(Bytes packed) {
  const std::uint8_t* position = packed.data();
  const std::uint8_t* const end = position + packed.size();
  while (position != end) {
    const std::uint8_t* const begin = position;
    const std::uint64_t value = readVarint(position, end);
    if (position == nullptr || !isPackedVarint<Element>(value)) return false;
    if (varintSize(value) != static_cast<std::size_t>(position - begin)) return false;
  }
  return !packed.empty();
}

// A packed field, which is not written if it is empty.
template <class Element, bool areVarints>
bool isPacked(Bytes packed) {
  if constexpr (areVarints) {
    return arePackedVarints<Element>(packed);
  } else {
    return !packed.empty() && packed.size() % sizeof(Element) == 0;
  }
}

// Skips a field if it is there; false if it is there and not canonical.
template <class IsCanonical>
bool skipContent(Cursor& cursor, int number, IsCanonical isCanonicalContent) {
  if (!cursor.takeTag(lengthDelimitedTag(number))) return true;
  Bytes content;
  return cursor.takeContent(content) && isCanonicalContent(content);
}

template <class IsCanonical>
bool skipContents(Cursor& cursor, int number, IsCanonical isCanonicalContent) {
  while (cursor.takeTag(lengthDelimitedTag(number))) {
    Bytes content;
    if (!cursor.takeContent(content) || !isCanonicalContent(content)) return false;
  }
  return true;
}

bool skipVarintField(Cursor& cursor, int number, std::uint64_t largest) {
  return !cursor.takeTag(static_cast<std::uint32_t>(number) << 3) || cursor.skipVarint(largest);
}

bool anything(Bytes /*content*/) { return true; }

// The part of a class, of which `nesting` more levels may follow below it.
struct PartCheck {
  Bytes part;
  int nesting;

  template <ByteClass Class>
  bool operator()(Class) {
    Cursor cursor(part);
    return skipContent(cursor, 1, anything) && skipContent(cursor, 2, anything) && cursor.atEnd();
  }

  template <RepeatedClass Class>
  bool operator()(Class) {
    using Element = WireElement<Class>;
    constexpr auto isCanonicalPacked = isPacked<Element, isVarint<Class>>;
    Cursor cursor(part);
    if (!skipContent(cursor, 1, isCanonicalPacked)) return false;
    if constexpr (NumericClass<Class>) {
      if (!skipContent(cursor, 2, isCanonicalPacked)) return false;
    }
    return cursor.atEnd();
  }

  bool operator()(CELL_class) {
    Cursor cursor(part);
    return skipArrays(cursor, CELL_class::Message::kElementsFieldNumber) && cursor.atEnd();
  }

  bool operator()(STRUCT_class) {
    Cursor cursor(part);
    return skipContents(cursor, STRUCT_class::Message::kFieldNamesFieldNumber, anything) &&
           skipArrays(cursor, STRUCT_class::Message::kElementsFieldNumber) && cursor.atEnd();
  }

  bool operator()(SPARSE_class) {
    using Sparse = VORTEN_Array::Sparse;
    Cursor cursor(part);
    constexpr auto indices = arePackedVarints<std::uint64_t>;
    return skipVarintField(cursor, Sparse::kTypeFieldNumber, 0x7F) &&
           skipContent(cursor, Sparse::kIrFieldNumber, indices) &&
           skipContent(cursor, Sparse::kJcFieldNumber, indices) &&
           skipValues<DOUBLE_class>(cursor, Sparse::kQxsparsedoubleFieldNumber) &&
           skipValues<LOGICAL_class>(cursor, Sparse::kLogicalFieldNumber) &&
           skipValues<SINGLE_class>(cursor, Sparse::kQxsparsesingleFieldNumber) && cursor.atEnd();
  }

 private:
  bool skipArrays(Cursor& cursor, int number) const {
    return skipContents(cursor, number, [this](Bytes array) {
      return nesting > 0 && isCanonical(array, nesting - 1);
    });
  }

  template <class Class>
  bool skipValues(Cursor& cursor, int number) const {
    return skipContent(cursor, number, [this](Bytes values) {
      return nesting > 0 && PartCheck{values, nesting - 1}(Class());
    });
  }
};

bool skipPart(Cursor& cursor, VORTEN_Array::QXType type, int nesting) {
  return skipContent(cursor, partNumber(type), [type, nesting](Bytes part) {
    return dispatch_on_QXType(type, PartCheck{part, nesting - 1});
  });
}

}  // namespace

bool isCanonical(Bytes array, int nesting) {
  constexpr auto any64 = std::numeric_limits<std::uint64_t>::max();
  Cursor cursor(array);
  const bool isHeadCanonical =
      skipVarintField(cursor, VORTEN_Array::kTypeFieldNumber, 0x7F) &&
      skipContent(cursor, VORTEN_Array::kDimensionFieldNumber, arePackedVarints<std::uint64_t>) &&
      skipVarintField(cursor, VORTEN_Array::kArrayIDFieldNumber, any64) &&
      skipVarintField(cursor, VORTEN_Array::kDataFrameFieldNumber, any64) &&
      skipVarintField(cursor, VORTEN_Array::kMemoryLayoutFieldNumber, 0x7F) &&
      skipVarintField(cursor, VORTEN_Array::kIsComplexFieldNumber, 1);
  // One part is the rule; several stand in the order of their numbers.
  for (int last = kFirstPart - 1; isHeadCanonical && !cursor.atEnd();) {
    const int number = cursor.nextPart();
    if (number <= last || number > kLastPart) return false;
    const std::size_t left = cursor.left();
    if (!skipPart(cursor, typeOfPart(number), nesting) || cursor.left() == left) return false;
    last = number;
  }
  return isHeadCanonical;
}

}  // namespace hcy
