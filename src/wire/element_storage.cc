// SPDX-License-Identifier: Apache-2.0

#include "wire/element_storage.h"

#include <string>

#include "wire/checked_size.h"

namespace hcy {
namespace {

void resize(std::string& bytes, std::uint64_t count) { bytes.resize(count, '\0'); }

template <class Element>
void resize(google::protobuf::RepeatedField<Element>& elements, std::uint64_t count) {
  elements.Resize(checkedSize(count), Element{});
}

void resize(google::protobuf::RepeatedPtrField<VORTEN_Array>& elements, std::uint64_t count) {
  const int size = checkedSize(count);
  if (elements.size() > size) elements.DeleteSubrange(size, elements.size() - size);
  while (elements.size() < size) makeEmptyDouble(*elements.Add());
}

void reserve(std::string& bytes, std::uint64_t count) { bytes.reserve(count); }

template <class Repeated>
void reserve(Repeated& elements, std::uint64_t count) {
  elements.Reserve(checkedSize(count));
}

template <class Message>
void sizeNew(Message& message, std::uint64_t count, bool complex) {
  resize(*message.mutable_elements(), count);
  if constexpr (requires { message.mutable_imag_elements(); }) {
    if (complex) resize(*message.mutable_imag_elements(), count);
  }
}

// Room for both parts is had before either changes: they stay of one length whatever fails.
template <class Message>
void resizeParts(Message& message, std::uint64_t count) {
  reserve(*message.mutable_elements(), count);
  if constexpr (requires { message.mutable_imag_elements(); }) {
    if (!message.imag_elements().empty()) {
      reserve(*message.mutable_imag_elements(), count);
      resize(*message.mutable_imag_elements(), count);
    }
  }
  resize(*message.mutable_elements(), count);
}

}  // namespace

template <class Class>
void InitialStorageSizer::operator()(Class) {
  sizeNew(Class::write(array), count, complex);
}

template <class Class>
void ElementStorageResizer::operator()(Class) {
  NewPart<Class> part(array);
  resizeParts(*part, count);
  part.keep();
}

void ElementStorageResizer::operator()(SPARSE_class) {
  const std::uint64_t columns = array.dimension_size() > 1 ? array.dimension(1) : 0;
  NewPart<SPARSE_class> part(array);
  resize(*part->mutable_jc(), columns == UINT64_MAX ? columns : columns + 1);
  part.keep();
}

void sizeInitialStorage(VORTEN_Array& array, std::uint64_t count, bool complex) {
  dispatch_on_QXType(array.type(), InitialStorageSizer{array, count, complex});
}

void resizeElementStorage(VORTEN_Array& array, std::uint32_t count) {
  dispatch_on_QXType(array.type(), ElementStorageResizer{array, count});
}

void makeEmptyDouble(VORTEN_Array& array) {
  array.Clear();
  array.set_type(VORTEN_Array::DOUBLE);
  array.mutable_dimension()->Resize(2, 0);
}

}  // namespace hcy
