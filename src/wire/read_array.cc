// SPDX-License-Identifier: Apache-2.0

#include "wire/read_array.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "wire/canonical_array.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/packed_arrays_builder.h"
#include "wire/packed_varints.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"
#include "wire/wire_parts.h"
#include "wire/write_array.h"

namespace hcy {
namespace {

using google::protobuf::RepeatedField;

// Reads the fields that reader.wants(field) by reader.read(field), and merges the others into the
// message, in their order. A field that is cut and that nobody wants is left out.
template <class Message, class Reader>
bool readFields(Message& message, Bytes bytes, Reader&& reader, int nesting) {
  std::size_t merged = 0;
  std::size_t whole = 0;
  const auto mergeUpTo = [&](std::size_t end) {
    const Bytes others = bytes.subspan(merged, end - merged);
    merged = end;
    return others.empty() || mergePart(message, others, nesting);
  };
  const bool isWhole = forEachField(bytes, [&](const WireField& field) {
    if (!reader.wants(field)) {
      if (field.isWhole) whole = field.end;
      return true;
    }
    const bool areOthersRead = mergeUpTo(field.begin);
    merged = field.end;
    whole = field.end;
    return areOthersRead && reader.read(field);
  });
  return mergeUpTo(whole) && isWhole;
}

// The value of a field that is a varint.
std::uint64_t varintOf(Bytes message, const WireField& field) {
  const std::uint8_t* position = message.data() + field.begin;
  const std::uint8_t* const end = message.data() + field.end;
  readVarint(position, end);  // the tag
  return readVarint(position, end);
}

// Elements of fixed width: those that are there whole.
template <class Element>
bool readFixed(Bytes packed, RepeatedField<Element>& list) {
  static_assert(std::endian::native == std::endian::little);
  const auto count = static_cast<int>(packed.size() / sizeof(Element));
  list.Reserve(list.size() + count);
  if (count != 0) {
    const auto size = static_cast<std::size_t>(count) * sizeof(Element);
    std::memcpy(list.AddNAlreadyReserved(count), packed.data(), size);
  }
  return packed.size() % sizeof(Element) == 0;
}

// Reads the part of a class into its message.
template <class Class>
class PartReader {
 public:
  explicit PartReader(typename Class::Message& message) : message_(message) {}

  static bool wants(const WireField& field) {
    return field.is(1) || (NumericClass<Class> && field.is(2));
  }

  bool read(const WireField& field) {
    if constexpr (NumericClass<Class>) {
      if (field.number() == 2) return add(field.content, *message_.mutable_imag_elements());
    }
    return add(field.content, *message_.mutable_elements());
  }

 private:
  bool add(Bytes content, std::string& bytes) {
    bytes.assign(reinterpret_cast<const char*>(content.data()), content.size());
    return true;
  }
  template <class Element>
  bool add(Bytes content, RepeatedField<Element>& list) {
    if constexpr (isVarint<Class>) {
      return readPacked(content, list);
    } else {
      return readFixed(content, list);
    }
  }

  typename Class::Message& message_;
};

// Reads the elements of a 16-bit class in the caller's own form. They may be packed or each in a
// field of its own.
template <class Class>
class NarrowReader {
 public:
  NarrowReader(NarrowElements& elements, Bytes part) : elements_(elements), part_(part) {}

  static bool wants(const WireField& field) {
    return PartReader<Class>::wants(field) || field.isVarint(1) ||
           (NumericClass<Class> && field.isVarint(2));
  }
  bool read(const WireField& field) {
    auto& list = field.number() == 1 ? elements_.real : elements_.imaginary;
    if (field.isLengthDelimited()) return readPacked(field.content, list);
    list.push_back(static_cast<std::uint16_t>(varintOf(part_, field)));
    return true;
  }

 private:
  NarrowElements& elements_;
  Bytes part_;
};

// Collects the elements of a container.
template <class Class>
class ArraysReader {
 public:
  ArraysReader(PackedArraysBuilder& arrays, int nesting) : arrays_(arrays), nesting_(nesting) {}

  static bool wants(const WireField& field) {
    return field.is(Class::Message::kElementsFieldNumber);
  }
  bool read(const WireField& field) {
    if (!field.isWhole || nesting_ <= 0) return false;
    if (!isCanonical(field.content, nesting_ - 1)) return addOther(field.content);
    arrays_.add(field.content);
    return true;
  }

 private:
  // What the message library would have written otherwise is kept as it writes it.
  bool addOther(Bytes array);

  PackedArraysBuilder& arrays_;
  int nesting_;
};

// Finds where the elements of a container that is kept as it is lie.
template <class Class>
class ArraysFinder {
 public:
  explicit ArraysFinder(Bytes part) : part_(part) {}

  static bool wants(const WireField& field) { return ArraysReader<Class>::wants(field); }
  bool read(const WireField& field) {
    if (end_ == 0) begin_ = field.begin;
    end_ = field.end;
    return true;
  }
  Bytes fields() const { return part_.subspan(begin_, end_ - begin_); }

 private:
  Bytes part_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

struct SparseReader {
  using Sparse = VORTEN_Array::Sparse;

  Sparse& sparse;
  int nesting;

  static bool wants(const WireField& field) {
    return field.is(Sparse::kIrFieldNumber) || field.is(Sparse::kJcFieldNumber) ||
           field.is(Sparse::kQxsparsedoubleFieldNumber) || field.is(Sparse::kLogicalFieldNumber) ||
           field.is(Sparse::kQxsparsesingleFieldNumber);
  }

  bool read(const WireField& field) {
    const Bytes content = field.content;
    switch (field.number()) {
      case Sparse::kIrFieldNumber:
        return readPacked(content, *sparse.mutable_ir());
      case Sparse::kJcFieldNumber:
        return readPacked(content, *sparse.mutable_jc());
      case Sparse::kQxsparsedoubleFieldNumber:
        return readValues<DOUBLE_class>(*sparse.mutable_qxsparsedouble(), content);
      case Sparse::kLogicalFieldNumber:
        return readValues<LOGICAL_class>(*sparse.mutable_logical(), content);
      default:
        return readValues<SINGLE_class>(*sparse.mutable_qxsparsesingle(), content);
    }
  }

 private:
  template <class Class>
  bool readValues(typename Class::Message& values, Bytes content) const {
    if (nesting <= 0) return false;
    return readFields(values, content, PartReader<Class>(values), nesting - 1);
  }
};

// The class of an array, wherever it stands.
VORTEN_Array::QXType typeOf(Bytes array) {
  auto type = VORTEN_Array::UINT8;
  forEachField(array, [&](const WireField& field) {
    if (field.isVarint(VORTEN_Array::kTypeFieldNumber))
      type = static_cast<VORTEN_Array::QXType>(varintOf(array, field));
    return true;
  });
  return type;
}

class ArrayReader {
 public:
  // Without a source the bytes may be anything; with one they are canonical, and stay there.
  ArrayReader(ArrayTarget target, Bytes bytes, int nesting, const PackedArrays* source = nullptr)
      : target_(target), type_(typeOf(bytes)), bytes_(bytes), nesting_(nesting), source_(source) {}

  bool read() {
    bool isWhole = readOnce();
    // Bytes that are broken before the last type are read as what they were until then.
    if (target_.message.type() != type_) {
      type_ = target_.message.type();
      clear();
      isWhole = readOnce();
    }
    if (target_.message.type() != type_) clear();
    return isWhole;
  }

  bool wants(const WireField& field) const {
    return field.isVarint(VORTEN_Array::kTypeFieldNumber) ||
           field.is(VORTEN_Array::kDimensionFieldNumber) ||
           (field.isLengthDelimited() && field.number() >= kFirstPart &&
            field.number() <= kLastPart);
  }

  bool read(const WireField& field) {
    if (field.isVarint(VORTEN_Array::kTypeFieldNumber)) {
      target_.message.set_type(static_cast<VORTEN_Array::QXType>(varintOf(bytes_, field)));
      return true;
    }
    if (field.is(VORTEN_Array::kDimensionFieldNumber)) {
      return readPacked(field.content, *target_.message.mutable_dimension());
    }
    return dispatch_on_QXType(typeOfPart(field.number()), [&]<class Class>(Class) {
      // Names of fields come and go, which only the heap bears.
      auto& part =
          ContainerClass<Class> ? Class::write(target_.message) : Class::present(target_.message);
      return readPart<Class>(field.content, part);
    });
  }

 private:
  bool readOnce() {
    const bool isWhole = readFields(target_.message, bytes_, *this, nesting_);
    if (arrays_) target_.arrays = arrays_->build(true);
    return isWhole;
  }

  void clear() {
    target_.message.Clear();
    target_.arrays.reset();
    if (target_.narrow != nullptr) *target_.narrow = {};
    arrays_.reset();
  }

  template <class Class>
  bool readPart(Bytes part, typename Class::Message& message) {
    if constexpr (SparseClass<Class>) {
      return readFields(message, part, SparseReader{message, nesting_ - 1}, nesting_ - 1);
    } else if constexpr (ContainerClass<Class>) {
      if (type_ == Class::type) return readArrays<Class>(part, message);
      return mergePart(message, part, nesting_ - 1);
    } else {
      if constexpr (WidenedClass<Class>) {
        if (type_ == Class::type && target_.narrow != nullptr) {
          return readFields(message, part, NarrowReader<Class>(*target_.narrow, part),
                            nesting_ - 1);
        }
      }
      return readFields(message, part, PartReader<Class>(message), nesting_ - 1);
    }
  }

  template <class Class>
  bool readArrays(Bytes part, typename Class::Message& message) {
    if (source_ != nullptr) {
      ArraysFinder<Class> finder(part);
      readFields(message, part, finder, nesting_ - 1);
      target_.arrays =
          std::make_shared<PackedArrays>(source_->owner(), finder.fields(), source_->isReceived());
      return true;
    }
    // A second part goes on behind the first.
    if (!arrays_) arrays_.emplace(Class::Message::kElementsFieldNumber, part.size());
    return readFields(message, part, ArraysReader<Class>(*arrays_, nesting_ - 1), nesting_ - 1);
  }

  ArrayTarget target_;
  VORTEN_Array::QXType type_;
  Bytes bytes_;
  int nesting_;
  const PackedArrays* source_;
  std::optional<PackedArraysBuilder> arrays_;
};

template <class Class>
bool ArraysReader<Class>::addOther(Bytes array) {
  VORTEN_Array message;
  std::shared_ptr<const PackedArrays> arrays;
  const bool isWhole = ArrayReader({message, arrays}, array, nesting_ - 1).read();
  const PackedFields elements(arrays);
  const WrittenArray written(message, arrays ? &elements : nullptr);
  arrays_.add([&written](std::uint8_t* out) { written.write(out); }, written.size());
  return isWhole;
}

}  // namespace

bool readArray(ArrayTarget target, Bytes bytes) {
  return ArrayReader(target, bytes, kNesting).read();
}

void readPackedArray(ArrayTarget target, const PackedArrays& arrays, std::size_t index) {
  ArrayReader(target, arrays.array(index), kNesting, &arrays).read();
}

}  // namespace hcy
