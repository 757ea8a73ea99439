// SPDX-License-Identifier: Apache-2.0

#include "array/array_handle.h"

#include <cstdlib>
#include <new>
#include <utility>

#include "array/array_proxy_builder.h"

namespace hcy {

ArrayHandle allocateHandle() {
  void* const block = std::malloc(sizeof(hcyArray));
  if (block == nullptr) throw std::bad_alloc();
  return ArrayHandle(new (block) hcyArray{});
}

ArrayHandle wrapMessage(std::shared_ptr<VORTEN_Array> message) {
  ArrayHandle handle = allocateHandle();
  handle->proxy = ArrayProxyBuilder::over(std::move(message));
  return handle;
}

}  // namespace hcy

void hcyDestroyArray(hcyArray* array) {
  if (array == nullptr) return;
  array->~hcyArray();
  std::free(array);
}

hcyArray* hcyDuplicateArray(const hcyArray* array) {
  hcy::ArrayHandle copy = hcy::allocateHandle();
  copy->proxy = array->proxy->clone();
  return copy.release();
}

void hcyFree(void* memory) { std::free(memory); }
