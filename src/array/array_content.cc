// SPDX-License-Identifier: Apache-2.0

#include "array/array_content.h"

#include "wire/element_storage.h"
#include "wire/read_array.h"

namespace hcy {

ContentPtr copyOf(const ArrayContent& content) {
  ContentPtr copy(new ArrayContent(content.data.copy()));
  copy->isReceived = content.isReceived;
  copy->isCommitted = content.isCommitted;
  if (content.isPartShown()) copy->showPart();
  return copy;
}

void unpack(const PackedArrays& arrays, std::size_t index, ArrayContent& content) {
  readPackedArray(content.data, arrays, index);
  content.isReceived = arrays.isReceived();
}

ContentPtr emptyDouble() {
  ContentPtr content(new ArrayContent);
  makeEmptyDouble(content->data);
  return content;
}

}  // namespace hcy
