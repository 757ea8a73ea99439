// SPDX-License-Identifier: Apache-2.0

#include "wire/read_array.h"

#include <bit>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>

#include "wire/canonical_array.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/packed_arrays_builder.h"
#include "wire/packed_varints.h"
#include "wire/read_message.h"
#include "wire/varint.h"
#include "wire/write_array.h"

namespace hcy {
namespace {

// Whether the message library would hold the value as a number of the class's own width.
template <class Class>
bool isNarrow(std::uint64_t varint) {
  using Element = typename Class::Element;
  const auto value = static_cast<WireElement<Class>>(varint);
  return value >= std::numeric_limits<Element>::min() &&
         value <= std::numeric_limits<Element>::max();
}

template <class Class>
bool areNarrow(Bytes packed) {
  std::uint8_t all = 0;
  for (const std::uint8_t byte : packed) all |= byte;
  if (all < 0x80) return true;
  const std::uint8_t* position = packed.data();
  const std::uint8_t* const end = position + packed.size();
  while (position != nullptr && position != end) {
    const std::uint64_t varint = readVarint(position, end);
    if (position != nullptr && !isNarrow<Class>(varint)) return false;
  }
  return true;
}

// Elements that are to stay in the memory of the bytes that they were read from.
struct StayingElements {
  // From this size on, copying them costs more than the memory around them.
  static constexpr std::size_t kLeast = std::size_t{1} << 20;

  const std::shared_ptr<void>& owner;
  Bytes real;
  Bytes imaginary;
  std::size_t elementSize = 1;

  void clear() { real = imaginary = {}; }

  // The part that lies first is moved first, so that none is written over before it is moved.
  void putInto(ArrayData& array) const {
    const bool isRealFirst = real.data() < imaginary.data();
    if (isRealFirst && !real.empty()) array.real = moved(real);
    if (!imaginary.empty()) array.imaginary = moved(imaginary);
    if (!isRealFirst && !real.empty()) array.real = moved(real);
  }

 private:
  // What stands before elements is longer than what they are moved by, or stands behind elements
  // that have been moved by as much.
  ElementBuffer moved(Bytes elements) const {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the owner's memory may be written
    auto* const begin = const_cast<std::uint8_t*>(elements.data());
    std::uint8_t* const target = begin - reinterpret_cast<std::uintptr_t>(begin) % elementSize;
    if (target != begin) std::memmove(target, begin, elements.size());
    return ElementBuffer::inside(owner, reinterpret_cast<std::byte*>(target), elements.size());
  }
};

// Reads the elements of a full class in the caller's own form. Those of a repeated field may be
// packed or each in a field of its own.
template <class Class>
class ElementsReader {
 public:
  ElementsReader(ArrayData& array, StayingElements* staying) : array_(array), staying_(staying) {}

  static bool wants(const WireField& field) {
    return isElement(field, 1) || (NumericClass<Class> && isElement(field, 2));
  }

  bool read(const WireField& field) {
    ElementBuffer& buffer = field.number() == 1 ? array_.real : array_.imaginary;
    if constexpr (ByteClass<Class>) {
      field.number() == 1 ? array_.showReal() : array_.showImaginary();
      buffer.truncate(0);
      if (staying_ != nullptr) (field.number() == 1 ? staying_->real : staying_->imaginary) = {};
      return add(field, buffer);
    } else if constexpr (isVarint<Class>) {
      if (field.isLengthDelimited()) {
        if constexpr (WidenedClass<Class>) hasWide_ = hasWide_ || !areNarrow<Class>(field.content);
        return readPacked<Element>(field.content, buffer);
      }
      if constexpr (WidenedClass<Class>) hasWide_ = hasWide_ || !isNarrow<Class>(field.value);
      const auto element = std::is_same_v<Element, bool> ? static_cast<Element>(field.value != 0)
                                                         : static_cast<Element>(field.value);
      std::memcpy(buffer.extend(sizeof element), &element, sizeof element);
      return true;
    } else {
      return add(field, buffer);
    }
  }

  bool hasWide() const { return hasWide_; }

 private:
  using Element = typename Class::Element;

  static bool isElement(const WireField& field, int number) {
    if (field.is(number)) return true;
    if constexpr (ByteClass<Class>) return false;
    if constexpr (isVarint<Class>) return field.isVarint(number);
    return sizeof(Element) == 8 ? field.isFixed64(number) : field.isFixed32(number);
  }

  // Elements of fixed width: those that are there whole.
  bool add(const WireField& field, ElementBuffer& buffer) {
    static_assert(std::endian::native == std::endian::little);
    const std::size_t cut = field.content.size() % sizeof(Element);
    const Bytes elements = field.content.first(field.content.size() - cut);
    if (!stay(elements, field.number(), buffer)) append(elements, buffer);
    return cut == 0;
  }

  static void append(Bytes elements, ElementBuffer& buffer) {
    if (elements.empty()) return;
    std::memcpy(buffer.extend(elements.size()), elements.data(), elements.size());
  }

  // Only one stretch of elements can stay where it is.
  bool stay(Bytes elements, int number, ElementBuffer& buffer) {
    if (staying_ == nullptr) return false;
    Bytes& place = number == 1 ? staying_->real : staying_->imaginary;
    if (place.empty() && buffer.empty() && elements.size() >= StayingElements::kLeast) {
      place = elements;
      staying_->elementSize = sizeof(Element);
      return true;
    }
    append(place, buffer);
    place = {};
    return false;
  }

  ArrayData& array_;
  StayingElements* staying_;
  bool hasWide_ = false;
};

// What reads the elements of a container, and the names of its fields.
template <class Class>
class NamesReader {
 public:
  static constexpr bool isStruct = Class::type == VORTEN_Array::STRUCT;

  static bool isName(const WireField& field) {
    return isStruct && field.is(STRUCT_class::Message::kFieldNamesFieldNumber);
  }
  static bool wants(const WireField& field) {
    return isName(field) || field.is(Class::Message::kElementsFieldNumber);
  }

  explicit NamesReader(ArrayData& array) : array_(array) {}

  bool readName(const WireField& field) {
    if (!field.isWhole) return false;
    const auto* const name = reinterpret_cast<const char*>(field.content.data());
    array_.writeContainer().fieldNames.Add()->assign(name, field.content.size());
    return true;
  }

 private:
  ArrayData& array_;
};

// Collects the elements of a container.
template <class Class>
class ArraysReader : public NamesReader<Class> {
 public:
  ArraysReader(ArrayData& array, Bytes part, PackedArraysBuilder& arrays, int nesting)
      : NamesReader<Class>(array), part_(part), arrays_(arrays), nesting_(nesting) {}

  bool read(const WireField& field) {
    if (this->isName(field)) return this->readName(field);
    if (!field.isWhole || nesting_ <= 0) return false;
    if (!isCanonical(field.content, nesting_ - 1)) return addOther(field.content);
    const std::size_t size = field.content.size();
    if (field.end - field.begin == lengthDelimitedSize(size)) {
      arrays_.addField(part_.subspan(field.begin, field.end - field.begin));
    } else {
      arrays_.add(field.content);
    }
    return true;
  }

 private:
  // What the message library would have written otherwise is kept as it writes it.
  bool addOther(Bytes array);

  Bytes part_;
  PackedArraysBuilder& arrays_;
  int nesting_;
};

// Finds where the elements of a container that is kept as it is lie.
template <class Class>
class ArraysFinder : public NamesReader<Class> {
 public:
  ArraysFinder(ArrayData& array, Bytes part) : NamesReader<Class>(array), part_(part) {}

  bool read(const WireField& field) {
    if (this->isName(field)) return this->readName(field);
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

bool readDimensions(Bytes packed, DimensionList& dimensions) {
  const std::uint8_t* position = packed.data();
  const std::uint8_t* const end = position + packed.size();
  if (packed.size() > 2) dimensions.reserve(dimensions.size() + countVarints(packed));
  while (position != end) {
    const std::uint64_t dimension = readVarint(position, end);
    if (position == nullptr) return false;
    dimensions.push_back(dimension);
  }
  return true;
}

// The class of an array, wherever it stands; in a canonical one it comes first.
VORTEN_Array::QXType typeOf(Bytes array, bool isCanonical) {
  auto type = VORTEN_Array::UINT8;
  forEachField(array, [&](const WireField& field) {
    if (field.isVarint(VORTEN_Array::kTypeFieldNumber))
      type = static_cast<VORTEN_Array::QXType>(field.value);
    return !isCanonical;
  });
  return type;
}

class ArrayReader {
 public:
  // Without a source the bytes may be anything; with one they are canonical, and stay there.
  ArrayReader(ArrayData& target, Bytes bytes, bool keepsWide, int nesting,
              const PackedArrays* source = nullptr, StayingElements* staying = nullptr)
      : target_(target),
        type_(typeOf(bytes, source != nullptr)),
        bytes_(bytes),
        keepsWide_(keepsWide),
        nesting_(nesting),
        source_(source),
        staying_(staying) {}

  bool read() {
    bool isWhole = readOnce();
    // Bytes that are broken before the last type are read as what they were until then.
    if (target_.type() != type_) {
      type_ = target_.type();
      clear();
      isWhole = readOnce();
    }
    if (target_.type() != type_) clear();
    if (staying_ != nullptr) staying_->putInto(target_);
    return isWhole;
  }

  static bool wants(const WireField& field) {
    return field.isVarint(VORTEN_Array::kTypeFieldNumber) ||
           field.is(VORTEN_Array::kDimensionFieldNumber) ||
           field.isVarint(VORTEN_Array::kDimensionFieldNumber) ||
           (field.isLengthDelimited() && field.number() >= kFirstPart &&
            field.number() <= kLastPart);
  }

  bool read(const WireField& field) {
    if (field.isVarint(VORTEN_Array::kTypeFieldNumber)) {
      target_.setType(static_cast<VORTEN_Array::QXType>(field.value));
      return true;
    }
    if (field.is(VORTEN_Array::kDimensionFieldNumber)) {
      return readDimensions(field.content, target_.dimensions);
    }
    if (field.isVarint(VORTEN_Array::kDimensionFieldNumber)) {
      target_.dimensions.push_back(field.value);
      return true;
    }
    partsEnd_ = field.end;
    return dispatch_on_QXType(typeOfPart(field.number()), [&]<class Class>(Class) {
      if constexpr (!SparseClass<Class>) {
        if (type_ == Class::type) return readPart<Class>(field.content);
      }
      return readOther<Class>(field.content);
    });
  }

 private:
  bool readOnce() {
    const bool isWhole = readFields(bytes_, *this, [this](Bytes others) {
      return mergePart(target_.writeRest(), others, nesting_);
    });
    if (arrays_) target_.writeContainer().arrays = arrays_->build(true);
    if (hasWide_ && keepsWide_) keepWide();
    return isWhole;
  }

  void clear() {
    target_ = {};
    arrays_.reset();
    hasWide_ = false;
    if (staying_ != nullptr) staying_->clear();
  }

  // The part of the array's own class.
  template <class Class>
  bool readPart(Bytes part) {
    target_.showPart();
    const auto merge = [&](Bytes others) {
      return mergePart(Class::present(target_.writeRest()), others, nesting_ - 1);
    };
    if constexpr (ContainerClass<Class>) {
      if (source_ != nullptr) {
        ArraysFinder<Class> finder(target_, part);
        readFields(part, finder, merge);
        target_.writeContainer().arrays = std::make_shared<PackedArrays>(
            source_->owner(), finder.fields(), source_->isReceived());
        return true;
      }
      // A second part goes on behind the first.
      if (!arrays_) arrays_.emplace(Class::Message::kElementsFieldNumber, part.size());
      return readFields(part, ArraysReader<Class>(target_, part, *arrays_, nesting_ - 1), merge);
    } else {
      ElementsReader<Class> reader(target_, staying_);
      const bool isWhole = readFields(part, reader, merge);
      hasWide_ = hasWide_ || reader.hasWide();
      return isWhole;
    }
  }

  // A part of another class, or of a sparse array.
  template <class Class>
  bool readOther(Bytes part) {
    typename Class::Message& message = Class::present(target_.writeRest());
    if constexpr (SparseClass<Class>) {
      return SparseReader::readPart(message, part, nesting_ - 1);
    } else if constexpr (ContainerClass<Class>) {
      return mergePart(message, part, nesting_ - 1);
    } else {
      return MessageReader<Class>::readPart(message, part, nesting_ - 1);
    }
  }

  // Reads the parts of the array's class once more, as the message library holds them.
  void keepWide() {
    target_.setWide();
    dispatch_on_QXType(type_, [this]<class Class>(Class) {
      if constexpr (WidenedClass<Class>) {
        typename Class::Message& message = Class::present(target_.writeRest());
        message.Clear();
        forEachField(bytes_.first(partsEnd_), [&](const WireField& field) {
          return !field.is(partNumber(Class::type)) ||
                 MessageReader<Class>::readPart(message, field.content, nesting_ - 1);
        });
      }
    });
  }

  ArrayData& target_;
  VORTEN_Array::QXType type_;
  Bytes bytes_;
  bool keepsWide_;
  int nesting_;
  const PackedArrays* source_;
  StayingElements* staying_;
  std::optional<PackedArraysBuilder> arrays_;
  std::size_t partsEnd_ = 0;
  bool hasWide_ = false;
};

template <class Class>
bool ArraysReader<Class>::addOther(Bytes bytes) {
  ArrayData array;
  const bool isWhole = ArrayReader(array, bytes, true, nesting_ - 1).read();
  const WrittenArray written(array);
  arrays_.add([&written](std::uint8_t* out) { written.write(out); }, written.size());
  return isWhole;
}

}  // namespace

bool readArray(ArrayData& target, Bytes bytes) {
  return ArrayReader(target, bytes, false, kNesting).read();
}

bool readArrayInPlace(ArrayData& target, Bytes bytes, const std::shared_ptr<void>& owner) {
  StayingElements staying{owner, {}, {}};
  return ArrayReader(target, bytes, false, kNesting, nullptr, &staying).read();
}

void readPackedArray(ArrayData& target, const PackedArrays& arrays, std::size_t index) {
  ArrayReader(target, arrays.array(index), true, kNesting, &arrays).read();
}

}  // namespace hcy
