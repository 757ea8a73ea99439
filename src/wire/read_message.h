// SPDX-License-Identifier: Apache-2.0
//
// Reading parts of an array into generated messages.

#pragma once

#include <google/protobuf/io/coded_stream.h>

#include <string>

#include "wire/array_class_traits.h"
#include "wire/bytes.h"
#include "wire/fixed_width.h"
#include "wire/packed_varints.h"
#include "wire/wire_fields.h"
#include "wire/wire_parts.h"

namespace hcy {

// How many levels of messages an array of a reply may hold: one less than the message library
// allows, for the reply itself is one.
inline constexpr int kNesting = 99;

// Adds what can be read of the bytes to a message; false if that is not all.
template <class Message>
bool mergePart(Message& message, Bytes bytes, int nesting = kNesting) {
  google::protobuf::io::CodedInputStream input(bytes.data(), static_cast<int>(bytes.size()));
  input.SetRecursionLimit(nesting);
  return message.MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
}

// Reads the fields that reader.wants(field) by reader.read(field), and passes the others on to
// merge(bytes), in their order. A field that is cut and that nobody wants is left out.
template <class Reader, class Merge>
bool readFields(Bytes bytes, Reader&& reader, Merge merge) {
  std::size_t merged = 0;
  std::size_t whole = 0;
  const auto mergeUpTo = [&](std::size_t end) {
    const Bytes others = bytes.subspan(merged, end - merged);
    return others.empty() || merge(others);
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

// Reads the part of a class into its message.
template <class Class>
class MessageReader {
 public:
  using Message = typename Class::Message;

  static bool readPart(Message& message, Bytes part, int nesting) {
    return readFields(part, MessageReader(message),
                      [&](Bytes others) { return mergePart(message, others, nesting); });
  }

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
  explicit MessageReader(Message& message) : message_(message) {}

  bool add(Bytes content, std::string& bytes) {
    bytes.assign(reinterpret_cast<const char*>(content.data()), content.size());
    return true;
  }
  template <class Element>
  bool add(Bytes content, google::protobuf::RepeatedField<Element>& list) {
    if constexpr (isVarint<Class>) {
      return readPacked(content, list);
    } else {
      return addFixed(content, list);
    }
  }
  // Elements of fixed width: those that are there whole.
  template <class Element>
  static bool addFixed(Bytes packed, google::protobuf::RepeatedField<Element>& list) {
    const auto count = static_cast<int>(packed.size() / sizeof(Element));
    list.Reserve(list.size() + count);
    if (count != 0) {
      const auto size = static_cast<std::size_t>(count) * sizeof(Element);
      auto* const added = reinterpret_cast<std::uint8_t*>(list.AddNAlreadyReserved(count));
      copyFixedWidth<Element>(packed.first(size), added);
    }
    return packed.size() % sizeof(Element) == 0;
  }

  Message& message_;
};

// Reads the part of a sparse array.
class SparseReader {
 public:
  using Sparse = VORTEN_Array::Sparse;

  static bool readPart(Sparse& sparse, Bytes part, int nesting) {
    return readFields(part, SparseReader(sparse, nesting),
                      [&](Bytes others) { return mergePart(sparse, others, nesting); });
  }

  static bool wants(const WireField& field) {
    return field.is(Sparse::kIrFieldNumber) || field.is(Sparse::kJcFieldNumber) ||
           field.is(Sparse::kQxsparsedoubleFieldNumber) || field.is(Sparse::kLogicalFieldNumber) ||
           field.is(Sparse::kQxsparsesingleFieldNumber);
  }

  bool read(const WireField& field) {
    const Bytes content = field.content;
    switch (field.number()) {
      case Sparse::kIrFieldNumber:
        return readPacked(content, *sparse_.mutable_ir());
      case Sparse::kJcFieldNumber:
        return readPacked(content, *sparse_.mutable_jc());
      case Sparse::kQxsparsedoubleFieldNumber:
        return readValues<DOUBLE_class>(*sparse_.mutable_qxsparsedouble(), content);
      case Sparse::kLogicalFieldNumber:
        return readValues<LOGICAL_class>(*sparse_.mutable_logical(), content);
      default:
        return readValues<SINGLE_class>(*sparse_.mutable_qxsparsesingle(), content);
    }
  }

 private:
  SparseReader(Sparse& sparse, int nesting) : sparse_(sparse), nesting_(nesting) {}

  template <class Class>
  bool readValues(typename Class::Message& values, Bytes content) const {
    return nesting_ > 0 && MessageReader<Class>::readPart(values, content, nesting_ - 1);
  }

  Sparse& sparse_;
  int nesting_;
};

}  // namespace hcy
