// SPDX-License-Identifier: Apache-2.0

#include "wire/reserve_elements.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <algorithm>
#include <type_traits>

#include "wire/dispatch_on_QXType.h"
#include "wire/element_count.h"

namespace hcy {
namespace {

using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;
using Bytes = std::span<const std::uint8_t>;

// The typed sub-messages are numbered as their types are.
constexpr int kFirstPart = VORTEN_Array::kUint8FieldNumber;
static_assert(VORTEN_Array::kSparseFieldNumber == kFirstPart + VORTEN_Array::SPARSE);

// Calls use(number, payload) for every length-delimited field of a message.
template <class Use>
void forEachPart(Bytes message, Use use) {
  CodedInputStream input(message.data(), static_cast<int>(message.size()));
  while (const std::uint32_t tag = input.ReadTag()) {
    int length = 0;
    if (WireFormatLite::GetTagWireType(tag) != WireFormatLite::WIRETYPE_LENGTH_DELIMITED) {
      if (!WireFormatLite::SkipField(&input, tag)) return;
    } else {
      if (!input.ReadVarintSizeAsInt(&length)) return;
      const Bytes rest = message.subspan(static_cast<std::size_t>(input.CurrentPosition()));
      use(WireFormatLite::GetTagFieldNumber(tag),
          rest.first(std::min(rest.size(), static_cast<std::size_t>(length))));
      if (!input.Skip(length)) return;
    }
  }
}

std::uint64_t productOf(Bytes packedDimensions) {
  CodedInputStream input(packedDimensions.data(), static_cast<int>(packedDimensions.size()));
  std::uint64_t product = 1;
  std::uint64_t dimension = 0;
  while (input.ReadVarint64(&dimension)) product = saturatingProduct(product, dimension);
  return product;
}

struct ElementReserver {
  VORTEN_Array& array;
  Bytes part;
  std::uint64_t count;

  template <class Class>
  void operator()(Class) {}

  template <RepeatedClass Class>
  requires std::is_integral_v<WireElement<Class>>
  void operator()(Class) {
    auto& message = Class::write(array);
    forEachPart(part, [&](int number, Bytes packed) {
      // An element takes one byte at least.
      const int room = static_cast<int>(std::min<std::uint64_t>(count, packed.size()));
      if (number == Class::Message::kElementsFieldNumber) message.mutable_elements()->Reserve(room);
      if constexpr (NumericClass<Class>) {
        if (number == Class::Message::kImagElementsFieldNumber) {
          message.mutable_imag_elements()->Reserve(room);
        }
      }
    });
  }
};

}  // namespace

void reserveElements(VORTEN_Array& array, Bytes bytes) {
  std::uint64_t count = 0;
  forEachPart(bytes, [&](int number, Bytes part) {
    if (number == VORTEN_Array::kDimensionFieldNumber) count = productOf(part);
    const auto type = static_cast<VORTEN_Array::QXType>(number - kFirstPart);
    if (isServedQXType(type)) dispatch_on_QXType(type, ElementReserver{array, part, count});
  });
}

}  // namespace hcy
