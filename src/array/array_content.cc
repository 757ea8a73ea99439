// SPDX-License-Identifier: Apache-2.0

#include "array/array_content.h"

#include <utility>

#include "wire/element_storage.h"
#include "wire/read_array.h"

namespace hcy {

namespace {

ContentPtr withData(const ArrayContent& content, ArrayData&& data) {
  ContentPtr copy(new ArrayContent(std::move(data)));
  copy->isReceived = content.isReceived;
  copy->isCommitted = content.isCommitted;
  if (content.isPartShown()) copy->showPart();
  return copy;
}

}  // namespace

ContentPtr copyOf(const ArrayContent& content) { return withData(content, content.data.copy()); }

ContentPtr copyWithoutElements(const ArrayContent& content) {
  ContentPtr copy = withData(content, content.data.copyWithoutElements());
  copy->isCommitted = false;
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
