// SPDX-License-Identifier: Apache-2.0
//
// One traits type a class, made from the list of array classes.

#pragma once

#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

#include "hcy.client.VORTENArray.pb.h"
#include "wire/array_classes.h"

namespace hcy {

using client::VORTEN_Array;

// read() gives the typed sub-message, the schema's empty one if it is absent. write() makes it
// present, and allocates before it touches the message: the generated accessor would mark a
// sub-message present that it then fails to allocate.
#define HCY_ARRAY_CLASS_TRAITS(type_, name_, storage_, field, Message_, Element_, is_numeric_) \
  struct type_##_class {                                                                       \
    using Message = VORTEN_Array::Message_;                                                    \
    using Element = Element_;                                                                  \
    static constexpr VORTEN_Array::QXType type = VORTEN_Array::type_;                          \
    static constexpr const char* name = name_;                                                 \
    static constexpr ElementStorage storage = ElementStorage::storage_;                        \
    static constexpr bool is_numeric = is_numeric_;                                            \
    static const Message& read(const VORTEN_Array& array) { return array.field(); }            \
    static Message& write(VORTEN_Array& array) {                                               \
      if (!array.has_##field()) array.set_allocated_##field(new Message());                    \
      return *array.mutable_##field();                                                         \
    }                                                                                          \
  };
HCY_ARRAY_CLASSES(HCY_ARRAY_CLASS_TRAITS)
#undef HCY_ARRAY_CLASS_TRAITS

template <class Class>
concept ByteClass = Class::storage == ElementStorage::String;
template <class Class>
concept PackedClass = Class::storage == ElementStorage::Packed;
template <class Class>
concept WidenedClass = Class::storage == ElementStorage::Widened;
template <class Class>
concept ContainerClass = Class::storage == ElementStorage::Arrays;
template <class Class>
concept SparseClass = Class::storage == ElementStorage::Sparse;
template <class Class>
concept NumericClass = Class::is_numeric;

// Classes whose elements are a repeated field of numbers in the message.
template <class Class>
concept RepeatedClass = PackedClass<Class> || WidenedClass<Class>;

// The type that a repeated field of the class holds on the wire.
template <RepeatedClass Class>
using WireElement = std::remove_const_t<
    std::remove_pointer_t<decltype(std::declval<typename Class::Message>().elements().data())>>;

}  // namespace hcy
