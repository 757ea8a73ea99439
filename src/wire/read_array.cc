// SPDX-License-Identifier: Apache-2.0

#include "wire/read_array.h"

#include <google/protobuf/wire_format_lite.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <type_traits>

#include "wire/dispatch_on_QXType.h"
#include "wire/element_count.h"

namespace hcy {
namespace {

using google::protobuf::RepeatedField;
using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;

// The typed sub-messages are numbered as their types are.
constexpr int kFirstPart = VORTEN_Array::kUint8FieldNumber;
static_assert(VORTEN_Array::kSparseFieldNumber == kFirstPart + VORTEN_Array::SPARSE);

// A length-delimited field: its number, its content, and where it lies, tag and length included.
struct Part {
  int number;
  Bytes content;
  std::size_t begin;
  std::size_t end;
};

// Calls use(part) for the length-delimited fields of a message, until one gives false. False also
// when the message is cut or broken.
template <class Use>
bool forEachPart(Bytes message, Use use) {
  CodedInputStream input(message.data(), static_cast<int>(message.size()));
  const auto position = [&input] { return static_cast<std::size_t>(input.CurrentPosition()); };
  for (std::size_t begin = 0; begin < message.size(); begin = position()) {
    const std::uint32_t tag = input.ReadTag();
    if (WireFormatLite::GetTagWireType(tag) != WireFormatLite::WIRETYPE_LENGTH_DELIMITED) {
      if (tag == 0 || !WireFormatLite::SkipField(&input, tag)) return false;
      continue;
    }
    int length = 0;
    if (!input.ReadVarintSizeAsInt(&length)) return false;
    const std::size_t content = position();
    if (!input.Skip(length)) return false;
    const Bytes bytes = message.subspan(content, static_cast<std::size_t>(length));
    if (!use(Part{WireFormatLite::GetTagFieldNumber(tag), bytes, begin, position()})) return false;
  }
  return true;
}

// The product of the dimensions, which stand before the elements.
std::uint64_t productOf(Bytes packedDimensions) {
  CodedInputStream input(packedDimensions.data(), static_cast<int>(packedDimensions.size()));
  std::uint64_t product = 1;
  std::uint64_t dimension = 0;
  while (input.ReadVarint64(&dimension)) product = saturatingProduct(product, dimension);
  return product;
}

// The low 32 bits of the varint at `position`, which is moved behind it; ten bytes are the most
// that there may be. Where there is none before the end, `position` becomes null.
std::uint32_t readVarint(const std::uint8_t*& position, const std::uint8_t* end) {
  std::uint32_t value = 0;
  for (unsigned shift = 0; position != end && shift < 70; shift += 7) {
    const std::uint32_t byte = *position++;
    if (shift < 32) value |= (byte & 0x7FU) << shift;
    if (byte < 0x80) return value;
  }
  position = nullptr;
  return 0;
}

constexpr std::uint64_t kContinued = 0x8080808080808080U;

// The same where ten bytes can be read, of which these are the first eight; without a branch for
// each length, since these follow one another at random.
inline std::uint32_t readVarintOfTen(std::uint64_t eight, const std::uint8_t*& position,
                                     const std::uint8_t* end) {
  static constexpr std::uint32_t masks[] = {0,   0x7F, 0x3FFF, 0x1FFFFF, 0xFFFFFFF, ~0U,
                                            ~0U, ~0U,  ~0U,    ~0U,      ~0U};
  const std::uint64_t last = ~eight & kContinued;
  const bool isLong = last == 0;
  // Numbers below zero have ten bytes; nine are nobody's.
  if (isLong & ((position[8] < 0x80) | (position[9] >= 0x80))) return readVarint(position, end);
  const int length = isLong ? 10 : std::countr_zero(last) / 8 + 1;
  position += length;
  const auto bits = [eight](int byte) {
    return static_cast<std::uint32_t>(eight >> byte & std::uint64_t{0x7F} << 7 * byte);
  };
  return (bits(0) | bits(1) | bits(2) | bits(3) | bits(4)) & masks[length];
}

// Reads as many packed varints as fit, and gives their number; up to ten bytes are left over. Null
// for `position` when they are broken.
template <class Element>
int readVarints(const std::uint8_t*& position, const std::uint8_t* end, Element* elements,
                int room) {
  static_assert(std::endian::native == std::endian::little);
  int read = 0;
  while (read < room && position != nullptr && end - position >= 10) {
    std::uint64_t eight = 0;
    std::memcpy(&eight, position, sizeof eight);
    if ((eight & kContinued) == 0 && room - read >= 8) {
      std::copy_n(position, 8, elements + read);
      position += 8;
      read += 8;
    } else {
      elements[read++] = static_cast<Element>(readVarintOfTen(eight, position, end));
    }
  }
  return read;
}

// Adds packed varints to a list that has room for most of them; false when they are broken.
template <class Element>
bool addVarints(Bytes packed, RepeatedField<Element>& list) {
  const std::uint8_t* position = packed.data();
  const std::uint8_t* const end = position + packed.size();
  const int size = list.size();
  const int room = list.Capacity() - size;
  const int read = readVarints(position, end, list.AddNAlreadyReserved(room), room);
  list.Truncate(size + read);
  while (position != nullptr && position != end) {
    list.Add(static_cast<Element>(readVarint(position, end)));
  }
  return position != nullptr;
}

// Merges the bytes into the message but for the fields that take(part) reads itself: it gives
// whether it could, or nothing for a field that is not its own.
template <class Message, class Take>
bool mergeTaking(Message& message, Bytes bytes, Take take) {
  std::size_t merged = 0;
  const bool isWhole = forEachPart(bytes, [&](const Part& part) {
    const std::optional<bool> isTaken = take(part);
    if (!isTaken) return true;
    const Bytes before = bytes.subspan(merged, part.begin - merged);
    merged = part.end;
    return *isTaken && mergePart(message, before);
  });
  return isWhole && mergePart(message, bytes.subspan(merged));
}

// Reads the part of a class, of as many elements as the dimensions say.
struct PartReader {
  VORTEN_Array& array;
  Bytes part;
  std::uint64_t count;

  template <class Class>
  std::optional<bool> operator()(Class) {
    return std::nullopt;
  }

  template <RepeatedClass Class>
  requires std::is_integral_v<WireElement<Class>> std::optional<bool>
  operator()(Class) {
    auto& message = Class::write(array);
    const auto take = [this, &message](const Part& field) -> std::optional<bool> {
      if (field.number == Class::Message::kElementsFieldNumber) {
        return readElements<Class>(field.content, *message.mutable_elements());
      }
      if constexpr (NumericClass<Class>) {
        if (field.number == Class::Message::kImagElementsFieldNumber) {
          return readElements<Class>(field.content, *message.mutable_imag_elements());
        }
      }
      return std::nullopt;
    };
    return mergeTaking(message, part, take);
  }

 private:
  // The number of varints cannot be told from their length; without room in advance the list would
  // grow again and again. An element takes one byte at least.
  template <class Class>
  std::optional<bool> readElements(Bytes packed, RepeatedField<WireElement<Class>>& list) {
    list.Reserve(static_cast<int>(std::min<std::uint64_t>(count, packed.size())));
    if constexpr (WidenedClass<Class>) {
      return addVarints(packed, list);
    } else {
      return std::nullopt;
    }
  }
};

bool readArrayByParts(VORTEN_Array& array, Bytes bytes) {
  std::uint64_t count = 0;
  return mergeTaking(array, bytes, [&](const Part& part) -> std::optional<bool> {
    if (part.number == VORTEN_Array::kDimensionFieldNumber) count = productOf(part.content);
    const auto type = static_cast<VORTEN_Array::QXType>(part.number - kFirstPart);
    if (!isServedQXType(type)) return std::nullopt;
    return dispatch_on_QXType(type, PartReader{array, part.content, count});
  });
}

}  // namespace

bool readArray(VORTEN_Array& array, Bytes bytes) {
  // What is small is not worth it; what is broken is the message library's to judge.
  constexpr std::size_t small = 4096;
  if (bytes.size() > small) {
    if (readArrayByParts(array, bytes)) return true;
    array.Clear();
  }
  return mergePart(array, bytes);
}

}  // namespace hcy
