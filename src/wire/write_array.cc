// SPDX-License-Identifier: Apache-2.0

#include "wire/write_array.h"

#include "wire/checked_size.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/fixed_width.h"
#include "wire/packed_varints.h"
#include "wire/protobuf_version.h"
#include "wire/wire_parts.h"

namespace hcy {
namespace {

Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

Bytes bytesOf(const ElementBuffer& buffer) { return buffer.as<std::uint8_t>(); }

// A number of the message library's enumerations is sign-extended.
std::uint64_t varintOf(VORTEN_Array::QXType type) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(type));
}

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
  return unknown.empty() ? size : size - sizeOf(unknown);
}

// Classes whose elements are written otherwise than they lie in memory.
template <class Class>
constexpr bool isConverted = isVarint<Class> && sizeof(typename Class::Element) > 1;

// Elements as the content of a packed field or a byte string.
template <class Class>
std::size_t contentSize(const ElementBuffer& elements) {
  if constexpr (isConverted<Class>) {
    return packedSize(elements.as<typename Class::Element>());
  } else {
    return elements.size();
  }
}

template <class Class>
std::uint8_t* writeContent(const ElementBuffer& elements, std::uint8_t* out) {
  if constexpr (isConverted<Class>) {
    return writePacked(elements.as<typename Class::Element>(), out);
  } else {
    return copyFixedWidth<typename Class::Element>(bytesOf(elements), out);
  }
}

// A byte string that is there is written even if it is empty, a packed field is not.
template <class Class>
bool hasField(const ArrayData& array, int number) {
  if constexpr (ByteClass<Class>) return number == 1 ? array.hasReal() : array.hasImaginary();
  return !(number == 1 ? array.real : array.imaginary).empty();
}

}  // namespace

WrittenArray::WrittenArray(const ArrayData& array, const ElementFields* elements)
    : array_(array), elements_(elements), hasPart_(array.hasPart() || elements != nullptr) {
  if (array.hasType()) size_ = 1 + varintSize(varintOf(array.type()));
  if (!array.dimensions.empty()) {
    for (const std::uint64_t dimension : array.dimensions) dimensionsSize_ += varintSize(dimension);
    size_ += lengthDelimitedSize(dimensionsSize_);
  }
  if (array.rest() != nullptr) {
    restSize_ = array.rest()->ByteSizeLong();
    checkedSize(restSize_);
    if (hasPart_) placeRest();
  }
  size_ += restSize_;
  if (hasPart_) {
    partSize_ = sizeElements() + (rest_ ? rest_->partBehind.size() : 0);
    size_ += varintSize(lengthDelimitedTag(partNumber(array.type()))) + varintSize(partSize_) +
             partSize_;
  }
  // The message library holds sizes in signed 32 bits.
  checkedSize(size_);
}

void WrittenArray::placeRest() {
  rest_ = std::make_unique<Rest>();
  rest_->bytes = array_.rest()->SerializePartialAsString();
  const Bytes all = bytesOf(rest_->bytes);
  const int number = partNumber(array_.type());
  const std::size_t begin = endOfFieldsBelow(all, number, knownSize(*array_.rest(), all.size()));
  rest_->before = all.first(begin);
  rest_->behind = all.subspan(begin);
  forEachField(rest_->behind, [&](const WireField& field) {
    if (field.is(number)) {
      rest_->partBehind = field.content;
      rest_->behind = rest_->behind.subspan(field.end);
    }
    return false;
  });
  restSize_ = rest_->before.size() + rest_->behind.size();
}

std::size_t WrittenArray::sizeElements() {
  std::size_t size = 0;
  if (array_.type() == VORTEN_Array::STRUCT) {
    for (const std::string& name : array_.container().fieldNames) {
      size += lengthDelimitedSize(name.size());
    }
  }
  if (elements_ != nullptr) return size + elements_->size();
  if (array_.areWide()) return size;
  return size + dispatch_on_QXType(array_.type(), [this]<class Class>(Class) {
           std::size_t elements = 0;
           if constexpr (ContainerClass<Class>) {
             const auto& arrays = array_.container().arrays;
             if (arrays) elements = arrays->fields().size();
           } else if constexpr (!SparseClass<Class>) {
             realSize_ = contentSize<Class>(array_.real);
             if (hasField<Class>(array_, 1)) elements += lengthDelimitedSize(realSize_);
             imaginarySize_ = contentSize<Class>(array_.imaginary);
             if (hasField<Class>(array_, 2)) elements += lengthDelimitedSize(imaginarySize_);
           }
           return elements;
         });
}

std::uint8_t* WrittenArray::writeElements(std::uint8_t* out) const {
  if (array_.type() == VORTEN_Array::STRUCT) {
    for (const std::string& name : array_.container().fieldNames) {
      out = writeHead(STRUCT_class::Message::kFieldNamesFieldNumber, name.size(), out);
      out = copyBytes(bytesOf(name), out);
    }
  }
  if (elements_ != nullptr) return elements_->write(out);
  if (array_.areWide()) return out;
  return dispatch_on_QXType(array_.type(), [this, out]<class Class>(Class) {
    std::uint8_t* end = out;
    if constexpr (ContainerClass<Class>) {
      const auto& arrays = array_.container().arrays;
      if (arrays) end = copyBytes(arrays->fields(), end);
    } else if constexpr (!SparseClass<Class>) {
      if (hasField<Class>(array_, 1)) {
        end = writeContent<Class>(array_.real, writeHead(1, realSize_, end));
      }
      if (hasField<Class>(array_, 2)) {
        end = writeContent<Class>(array_.imaginary, writeHead(2, imaginarySize_, end));
      }
    }
    return end;
  });
}

std::uint8_t* WrittenArray::write(std::uint8_t* out) const {
  if (array_.hasType()) {
    *out++ = VORTEN_Array::kTypeFieldNumber << 3;
    out = writeVarint(varintOf(array_.type()), out);
  }
  if (!array_.dimensions.empty()) {
    out = writeHead(VORTEN_Array::kDimensionFieldNumber, dimensionsSize_, out);
    for (const std::uint64_t dimension : array_.dimensions) out = writeVarint(dimension, out);
  }
  if (!hasPart_) {
    return array_.rest() != nullptr ? array_.rest()->SerializeWithCachedSizesToArray(out) : out;
  }
  if (rest_) out = copyBytes(rest_->before, out);
  out = writeVarint(lengthDelimitedTag(partNumber(array_.type())), out);
  out = writeVarint(partSize_, out);
  out = writeElements(out);
  if (!rest_) return out;
  out = copyBytes(rest_->partBehind, out);
  return copyBytes(rest_->behind, out);
}

}  // namespace hcy
