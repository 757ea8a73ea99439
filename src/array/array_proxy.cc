// SPDX-License-Identifier: Apache-2.0

#include "array/array_proxy.h"

#include <algorithm>
#include <utility>

#include "array/array_proxy_builder.h"
#include "array/array_to_send.h"
#include "wire/array_attributes.h"
#include "wire/checked_size.h"
#include "wire/element_count.h"
#include "wire/element_storage.h"
#include "wire/sparse_storage.h"

namespace hcy {

VORTENArrayProxy::VORTENArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex)
    : content_(new ArrayContent), complex_(complex) {
  checkedSize(dimensions.size());
  for (const std::uint64_t dimension : dimensions) checkedSize(dimension);
  data().setType(type);
  data().dimensions.assign(dimensions.begin(), dimensions.end());
}

VORTENArrayProxy::VORTENArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                                   std::uint64_t count)
    : VORTENArrayProxy(type, dimensions, complex && count != 0) {
  if (count != 0) sizeInitialStorage(data(), count, complex_);
}

VORTENArrayProxy::VORTENArrayProxy(ContentPtr content, bool complex)
    : content_(std::move(content)), complex_(complex) {}

VORTENArrayProxy::VORTENArrayProxy(const ContentPtr& content)
    : VORTENArrayProxy(content, attributesOf(content->data).isComplex) {
  if (content_->isReceived) checkIndices();
}

void VORTENArrayProxy::checkIndices() {
  if (data().type() != VORTEN_Array::SPARSE) return;
  const auto described = describedElements(data());
  hasIndices_ = described.has_value();
  requiredValues_ = described.value_or(SIZE_MAX);
}

// Storage that the program has completed counts as its own from then on, unless an index that was
// received is outside the array.
void VORTENArrayProxy::storageChanged() {
  if (!hasIndices_) checkIndices();
  if (!hasIndices_) return;
  requiredValues_ = 0;
  content_->isReceived = false;
}

std::size_t VORTENArrayProxy::storedElements() const {
  auto stored = static_cast<std::size_t>(data().sparse().ir_size());
  if (!content_->isReceived) return stored;
  const DataAccessor access = accessData(data(), false);
  for (const std::size_t values : {access.realCount, access.imagCount}) {
    const bool areHandedOut = values != 0 && values >= requiredValues_;
    if (areHandedOut) stored = std::min(stored, values);
  }
  return stored;
}

std::size_t VORTENArrayProxy::requiredElements() const {
  if (!content_->isReceived) return 0;
  return data().type() == VORTEN_Array::SPARSE ? requiredValues_ : elementCount(data());
}

void VORTENArrayProxy::resize(std::int32_t count) {
  resizeElementStorage(data(), static_cast<std::uint32_t>(count));
  storageChanged();
}

std::size_t VORTENArrayProxy::getElementSize() const { return attributesOf(data()).elementSize; }

// Asking for elements has their part sent from then on, unless it should have arrived.
DataAccessor VORTENArrayProxy::elements() const {
  const DataAccessor access = accessData(data(), complex_);
  if (!access.isPresent && requiredElements() == 0) content_->showPart();
  return access;
}

void* VORTENArrayProxy::getData() const {
  const DataAccessor access = elements();
  return access.realCount < requiredElements() ? nullptr : access.realData;
}

void* VORTENArrayProxy::getImagData() const {
  const DataAccessor access = elements();
  return access.imagCount < requiredElements() ? nullptr : access.imagData;
}

double VORTENArrayProxy::getScalar() const { return elements().scalar; }

std::unique_ptr<VORTENArrayProxy> VORTENArrayProxy::clone() {
  // Whoever shares the content is to see what is copied.
  if (content_->use_count() > 1) commit();
  return copied();
}

std::unique_ptr<VORTENArrayProxy> VORTENArrayProxy::copied() const {
  const ContentPtr copy = copyOf(*content_);
  commitTo(*copy);
  return ArrayProxyBuilder::over(copy);
}

ArrayToSend VORTENArrayProxy::toSend(const SendingOrder& /*order*/) const {
  return {content_, nullptr};
}

}  // namespace hcy
