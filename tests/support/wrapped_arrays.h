// SPDX-License-Identifier: Apache-2.0
//
// Handles over messages, as the outputs of a call are wrapped.

#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "array/array_handle.h"
#include "array/array_proxy_builder.h"
#include "array/array_to_send.h"
#include "support/array_messages.h"
#include "wire/read_array.h"

namespace hcy::test {

inline Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// What a handle is over that shares it.
inline ContentPtr contentOf(const VORTEN_Array& array) {
  const ContentPtr content(new ArrayContent);
  readArray(content->data, bytesOf(array.SerializeAsString()));
  content->isReceived = true;
  return content;
}

inline ArrayHandle wrapped(const VORTEN_Array& array) {
  ReceivedArray received;
  readReceived(received, bytesOf(array.SerializeAsString()));
  return ArrayProxyBuilder::over(std::move(received));
}

// Takes over what an exported function returned.
inline ArrayHandle owned(hcyArray* array) {
  return ArrayHandle(static_cast<VORTENArrayProxy*>(array));
}

inline VORTEN_Array parsed(const SentArray& array) {
  std::string bytes(array.size(), '\0');
  array.write(reinterpret_cast<std::uint8_t*>(bytes.data()));
  VORTEN_Array message;
  EXPECT_TRUE(message.ParseFromString(bytes));
  EXPECT_EQ(message.SerializeAsString(), bytes) << "not what the message library would write";
  return message;
}

// What the array's content holds by now.
inline VORTEN_Array messageOf(const hcyArray* array) {
  VORTEN_Array message;
  EXPECT_TRUE(message.ParseFromString(writtenBytes(proxyOf(array).data())));
  return message;
}

// What is sent of the array.
inline VORTEN_Array sent(const ArrayHandle& array) {
  return parsed(SentArray(array->toSend(SendingOrder())));
}

// What the array shows of itself once its elements have been committed.
inline VORTEN_Array committed(const ArrayHandle& array) {
  array->commit();
  return parsed(SentArray({array->content(), nullptr}));
}

// A cell array of the given shape with 1-by-1 int32 arrays for elements, or a struct array with
// the given fields and these as its slots.
inline VORTEN_Array cellOf(std::initializer_list<std::uint64_t> dimensions,
                           std::initializer_list<int> elements) {
  VORTEN_Array array = arrayOf(VORTEN_Array::CELL, dimensions);
  for (const int element : elements) {
    *array.mutable_cell()->add_elements() = rowOf<INT32_class>({element});
  }
  return array;
}
inline VORTEN_Array structOf(std::initializer_list<std::uint64_t> dimensions,
                             std::initializer_list<const char*> names,
                             std::initializer_list<int> slots) {
  VORTEN_Array array = arrayOf(VORTEN_Array::STRUCT, dimensions);
  for (const char* const name : names) array.mutable_struct_()->add_field_names(name);
  for (const int slot : slots) {
    *array.mutable_struct_()->add_elements() = rowOf<INT32_class>({slot});
  }
  return array;
}

// The scalars of the elements of a container's message.
template <class Elements>
Numbers scalarsOf(const Elements& elements) {
  Numbers values;
  for (const VORTEN_Array& element : elements) {
    values.push_back(element.int32().elements_size() > 0 ? element.int32().elements(0) : 0.0);
  }
  return values;
}

}  // namespace hcy::test
