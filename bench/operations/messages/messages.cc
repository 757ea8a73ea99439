// SPDX-License-Identifier: Apache-2.0

#include "operations/messages/messages.h"

#include "operations/points.h"

namespace hcy::bench {
namespace {

VORTEN_Array::Struct& addStruct(VORTEN_Array& array, int fields) {
  auto& made = *array.mutable_struct_();
  for (int i = 0; i < fields; ++i) made.add_field_names(fieldName(i));
  return made;
}

void addEmpty(google::protobuf::RepeatedPtrField<VORTEN_Array>& elements, int count) {
  elements.Reserve(count);
  for (int i = 0; i < count; ++i) elements.Add();
}

void addElements(VORTEN_Array& array, int count) {
  const auto size = static_cast<std::size_t>(count);
  switch (array.type()) {
    case VORTEN_Array::UINT8:
      return array.mutable_uint8()->mutable_elements()->resize(size);
    case VORTEN_Array::INT8:
      return array.mutable_int8()->mutable_elements()->resize(size);
    case VORTEN_Array::UINT16:
      return array.mutable_uint16()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::INT16:
      return array.mutable_int16()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::UINT32:
      return array.mutable_uint32()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::INT32:
      return array.mutable_int32()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::UINT64:
      return array.mutable_uint64()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::INT64:
      return array.mutable_int64()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::SINGLE:
      return array.mutable_single()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::DOUBLE:
      return array.mutable_qxdouble()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::LOGICAL:
      return array.mutable_logical()->mutable_elements()->Resize(count, false);
    case VORTEN_Array::CHAR:
      return array.mutable_qxchar()->mutable_elements()->Resize(count, 0);
    case VORTEN_Array::STRUCT:
      return addEmpty(*addStruct(array, fewFields).mutable_elements(), count * fewFields);
    case VORTEN_Array::CELL:
      return addEmpty(*array.mutable_cell()->mutable_elements(), count);
    default:
      return;
  }
}

void setDouble(VORTEN_Array& array, double value) {
  array.set_type(VORTEN_Array::DOUBLE);
  array.add_dimension(1);
  array.add_dimension(1);
  array.mutable_qxdouble()->add_elements(value);
}

}  // namespace

Message makeMessage(VORTEN_Array::QXType type, std::size_t count) {
  auto message = std::make_unique<VORTEN_Array>();
  message->set_type(type);
  message->add_dimension(count);
  message->add_dimension(1);
  addElements(*message, static_cast<int>(count));
  return message;
}

Message makeStructMessage(int fields) {
  auto message = std::make_unique<VORTEN_Array>();
  message->set_type(VORTEN_Array::STRUCT);
  message->add_dimension(1);
  message->add_dimension(1);
  auto& made = addStruct(*message, fields);
  for (int i = 0; i < fields; ++i) setDouble(*made.add_elements(), i);
  return message;
}

}  // namespace hcy::bench
