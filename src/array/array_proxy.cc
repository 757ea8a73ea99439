// SPDX-License-Identifier: Apache-2.0

#include "array/array_proxy.h"

#include <utility>

#include "array/array_proxy_builder.h"
#include "array/message_copy.h"
#include "wire/array_attributes.h"
#include "wire/checked_size.h"
#include "wire/data_accessor.h"
#include "wire/element_storage.h"

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
    : message_(std::move(message)), complex_(attributesOf(*message_).isComplex) {}

void VORTENArrayProxy::resize(std::int32_t count) {
  resizeElementStorage(*message_, static_cast<std::uint32_t>(count));
}

std::size_t VORTENArrayProxy::getElementSize() const { return attributesOf(*message_).elementSize; }

void* VORTENArrayProxy::getData() { return accessData(*message_, complex_).realData; }

void* VORTENArrayProxy::getImagData() { return accessData(*message_, complex_).imagData; }

double VORTENArrayProxy::getScalar() { return accessData(*message_, complex_).scalar; }

std::unique_ptr<VORTENArrayProxy> VORTENArrayProxy::clone() {
  const MessageReading reading(*this);
  return ArrayProxyBuilder::over(copyOf(*message_));
}

}  // namespace hcy
