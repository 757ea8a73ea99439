// SPDX-License-Identifier: Apache-2.0

#include "array/array_proxy.h"

#include <utility>

#include "array/array_proxy_builder.h"
#include "array/message_copy.h"
#include "wire/array_attributes.h"
#include "wire/checked_size.h"
#include "wire/data_accessor.h"
#include "wire/element_count.h"
#include "wire/element_storage.h"
#include "wire/sparse_storage.h"

namespace hcy {
namespace {

// All elements are in the message while it lives.
class MessageReading {
 public:
  explicit MessageReading(VORTENArrayProxy& array) : array_(array) { array.beginReading(); }
  MessageReading(const MessageReading&) = delete;
  MessageReading& operator=(const MessageReading&) = delete;
  ~MessageReading() { array_.endReading(); }

 private:
  VORTENArrayProxy& array_;
};

}  // namespace

VORTENArrayProxy::VORTENArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                                   std::uint64_t count)
    : message_(std::make_shared<VORTEN_Array>()), complex_(complex && count != 0) {
  message_->set_type(type);
  message_->mutable_dimension()->Reserve(checkedSize(dimensions.size()));
  for (const std::uint64_t dimension : dimensions) {
    message_->add_dimension(static_cast<std::uint64_t>(checkedSize(dimension)));
  }
  if (count != 0) sizeInitialStorage(*message_, count, complex_);
}

VORTENArrayProxy::VORTENArrayProxy(std::shared_ptr<VORTEN_Array> message)
    : message_(std::move(message)),
      complex_(attributesOf(*message_).isComplex),
      isChecked_(message_->type() == VORTEN_Array::SPARSE) {
  if (isChecked_) hasIndices_ = describedElements(*message_).has_value();
}

void VORTENArrayProxy::recheckIndices() {
  if (!hasIndices_) hasIndices_ = describedElements(*message_).has_value();
}

std::size_t VORTENArrayProxy::requiredElements() const {
  if (message_->type() != VORTEN_Array::SPARSE) return elementCount(*message_);
  if (!isChecked_) return 0;
  const VORTEN_Array& array = *message_;
  return hasIndices_ ? array.sparse().jc(static_cast<int>(array.dimension(1))) : SIZE_MAX;
}

void VORTENArrayProxy::resize(std::int32_t count) {
  resizeElementStorage(*message_, static_cast<std::uint32_t>(count));
  recheckIndices();
}

std::size_t VORTENArrayProxy::getElementSize() const { return attributesOf(*message_).elementSize; }

void* VORTENArrayProxy::getData() {
  const DataAccessor access = accessData(*message_, complex_);
  return access.realCount >= requiredElements() ? access.realData : nullptr;
}

void* VORTENArrayProxy::getImagData() {
  const DataAccessor access = accessData(*message_, complex_);
  return access.imagCount >= requiredElements() ? access.imagData : nullptr;
}

double VORTENArrayProxy::getScalar() { return accessData(*message_, complex_).scalar; }

std::unique_ptr<VORTENArrayProxy> VORTENArrayProxy::clone() {
  const MessageReading reading(*this);
  return ArrayProxyBuilder::over(copyOf(*message_));
}

}  // namespace hcy
