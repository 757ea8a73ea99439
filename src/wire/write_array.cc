// SPDX-License-Identifier: Apache-2.0

#include "wire/write_array.h"

#include <google/protobuf/wire_format.h>

#include "wire/checked_size.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"
#include "wire/wire_parts.h"

namespace hcy {
namespace {

// Where the fields with numbers below this one end. Those that no schema knows stand behind all
// others, and begin where the numbers fall again or at the very end.
std::size_t endOfFieldsBelow(Bytes message, int number, std::size_t known) {
  std::size_t end = 0;
  forEachField(message.first(known), [&](const WireField& field) {
    if (field.number() >= number) return false;
    end = field.end;
    return true;
  });
  return end;
}

// How many bytes of the message's fields the schema knows.
std::size_t knownSize(const VORTEN_Array& message, std::size_t size) {
  const auto& unknown = VORTEN_Array::GetReflection()->GetUnknownFields(message);
  using google::protobuf::internal::WireFormat;
  return unknown.empty() ? size : size - WireFormat::ComputeUnknownFieldsSize(unknown);
}

}  // namespace

WrittenArray::WrittenArray(const VORTEN_Array& message, const ElementFields* elements)
    : message_(message), elements_(elements), size_(message.ByteSizeLong()) {
  // The message library holds sizes in signed 32 bits.
  checkedSize(size_);
  if (elements != nullptr) placeElements();
}

void WrittenArray::placeElements() {
  around_.resize(size_);
  message_.SerializeWithCachedSizesToArray(reinterpret_cast<std::uint8_t*>(around_.data()));
  const Bytes around(reinterpret_cast<const std::uint8_t*>(around_.data()), around_.size());
  const int number = partNumber(message_.type());
  const std::size_t begin = endOfFieldsBelow(around, number, knownSize(message_, size_));
  before_ = around.first(begin);
  behind_ = around.subspan(begin);
  forEachField(behind_, [&](const WireField& field) {
    if (field.is(number)) {
      partBehind_ = field.content;
      behind_ = behind_.subspan(field.end);
    }
    return false;
  });
  // The names of fields stand before the elements of a struct.
  if (message_.type() == VORTEN_Array::STRUCT) {
    std::size_t end = 0;
    forEachField(partBehind_, [&](const WireField& field) {
      const bool isName = field.is(STRUCT_class::Message::kFieldNamesFieldNumber);
      if (isName) end = field.end;
      return isName;
    });
    partBefore_ = partBehind_.first(end);
    partBehind_ = partBehind_.subspan(end);
  }
  partSize_ = partBefore_.size() + elements_->size() + partBehind_.size();
  size_ = before_.size() + varintSize(lengthDelimitedTag(number)) + varintSize(partSize_) +
          partSize_ + behind_.size();
  checkedSize(size_);
}

std::uint8_t* WrittenArray::write(std::uint8_t* out) const {
  if (elements_ == nullptr) return message_.SerializeWithCachedSizesToArray(out);
  out = copyBytes(before_, out);
  out = writeVarint(lengthDelimitedTag(partNumber(message_.type())), out);
  out = writeVarint(partSize_, out);
  out = copyBytes(partBefore_, out);
  out = elements_->write(out);
  out = copyBytes(partBehind_, out);
  return copyBytes(behind_, out);
}

}  // namespace hcy
