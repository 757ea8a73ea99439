// SPDX-License-Identifier: Apache-2.0

#include "wire/read_array.h"

#include <optional>

#include "wire/dispatch_on_QXType.h"
#include "wire/packed_varints.h"
#include "wire/read_container.h"
#include "wire/read_elements.h"
#include "wire/read_message.h"
#include "wire/write_array.h"

namespace hcy {
namespace {

bool readDimensions(Bytes packed, DimensionList& dimensions) {
  const std::uint8_t* position = packed.data();
  const std::uint8_t* const end = position + packed.size();
  // Reserving for each of many fields would copy all dimensions each time.
  if (packed.size() > 2 && dimensions.empty()) dimensions.reserve(countVarints(packed));
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
    if (hasWide_) keepWide();
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
      return mergePart(Class::write(target_.writeRest()), others, nesting_ - 1);
    };
    if constexpr (ContainerClass<Class>) {
      if (source_ != nullptr) {
        ArraysFinder<Class> finder(target_, part);
        readFields(part, finder, merge);
        target_.writeContainer().arrays = std::make_shared<PackedArrays>(
            source_->owner(), finder.fields(), source_->isReceived());
        return true;
      }
      // A second part continues the first.
      if (!arrays_) arrays_.emplace(Class::Message::kElementsFieldNumber, part.size());
      return readFields(part, ArraysReader<Class>(target_, part, *arrays_, nesting_ - 1), merge);
    } else {
      ElementsReader<Class> reader(target_, staying_, keepsWide_);
      const bool isWhole = readFields(part, reader, merge);
      hasWide_ = hasWide_ || reader.hasWide();
      return isWhole;
    }
  }

  // A part of another class, or of a sparse array.
  template <class Class>
  bool readOther(Bytes part) {
    typename Class::Message& message = Class::write(target_.writeRest());
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
        typename Class::Message& message = Class::write(target_.writeRest());
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

}  // namespace

template <class Class>
bool ArraysReader<Class>::addOther(Bytes bytes) {
  ArrayData array;
  const bool isWhole = ArrayReader(array, bytes, true, nesting_ - 1).read();
  const WrittenArray written(array);
  arrays_.add([&written](std::uint8_t* out) { written.write(out); }, written.size());
  return isWhole;
}

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
