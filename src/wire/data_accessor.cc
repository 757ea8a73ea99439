// SPDX-License-Identifier: Apache-2.0

#include "wire/data_accessor.h"

#include <string>

#include "wire/sparse_values.h"

namespace hcy {
namespace {

void* firstOf(std::string& bytes) { return bytes.empty() ? nullptr : bytes.data(); }

template <class Element>
void* firstOf(google::protobuf::RepeatedField<Element>& elements) {
  return elements.empty() ? nullptr : elements.mutable_data();
}

}  // namespace

template <class Message>
void DataAccessor::accessBytes(Message& message) {
  std::string& elements = *message.mutable_elements();
  // Both byte classes read the first element as a signed byte: 200 is -56.
  scalar = elements.empty() ? 0.0 : static_cast<double>(static_cast<signed char>(elements[0]));
  realData = firstOf(elements);
  if (complex) imagData = firstOf(*message.mutable_imag_elements());
}

template <class Message>
void DataAccessor::accessRepeated(Message& message) {
  auto& elements = *message.mutable_elements();
  scalar = elements.empty() ? 0.0 : static_cast<double>(elements[0]);
  realData = firstOf(elements);
  if constexpr (requires { message.mutable_imag_elements(); }) {
    if (complex) imagData = firstOf(*message.mutable_imag_elements());
  }
}

void DataAccessor::operator()(SPARSE_class) {
  VORTEN_Array::Sparse& sparse = SPARSE_class::write(array);
  complex = true;  // a sparse array hands out the imaginary parts that it has
  if (sparse.type() == VORTEN_Array::Sparse::DOUBLE) {
    accessRepeated(sparseDoubles(sparse));
  } else {
    accessRepeated(sparseLogicals(sparse));
  }
}

DataAccessor accessData(VORTEN_Array& array, bool complex) {
  DataAccessor accessor{array, complex};
  dispatch_on_QXType(array.type(), accessor);
  return accessor;
}

}  // namespace hcy
