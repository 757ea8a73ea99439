// SPDX-License-Identifier: Apache-2.0

#include "array/array_proxy_builder.h"

#include <utility>

#include "array/narrow_array_proxy.h"
#include "array/struct_cell_array_proxy.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/read_array.h"

namespace hcy {
namespace {

template <class Class>
struct ProxyOf {
  using type = VORTENArrayProxy;
};
template <WidenedClass Class>
struct ProxyOf<Class> {
  using type = NarrowArrayProxy<Class>;
};
template <ContainerClass Class>
struct ProxyOf<Class> {
  using type = VORTENStructCellArrayProxy<Class>;
};

// Constructs the proxy class of the type from the arguments.
template <class... Arguments>
std::unique_ptr<VORTENArrayProxy> makeProxy(VORTEN_Array::QXType type, Arguments&&... arguments) {
  return dispatch_on_QXType(type, [&]<class Class>(Class) -> std::unique_ptr<VORTENArrayProxy> {
    return std::make_unique<typename ProxyOf<Class>::type>(std::forward<Arguments>(arguments)...);
  });
}

}  // namespace

std::unique_ptr<VORTENArrayProxy> ArrayProxyBuilder::over(const ContentPtr& content) {
  const VORTEN_Array::QXType type = content->data.type();
  return makeProxy(type, content);
}

std::unique_ptr<VORTENArrayProxy> ArrayProxyBuilder::over(ReceivedArray&& array) {
  const VORTEN_Array::QXType type = array.content->data.type();
  return dispatch_on_QXType(type, [&]<class Class>(Class) -> std::unique_ptr<VORTENArrayProxy> {
    using Proxy = typename ProxyOf<Class>::type;
    if constexpr (WidenedClass<Class>) {
      ArrayData& data = array.content->data;
      NarrowElements elements{std::move(data.real), std::move(data.imaginary)};
      return std::make_unique<Proxy>(std::move(array.content), std::move(elements));
    } else {
      return std::make_unique<Proxy>(array.content);
    }
  });
}

std::unique_ptr<VORTENArrayProxy> ArrayProxyBuilder::create(VORTEN_Array::QXType type,
                                                            Dimensions dimensions, bool complex,
                                                            std::uint64_t count) {
  return makeProxy(type, type, dimensions, complex, count);
}

bool readReceived(ReceivedArray& array, Bytes bytes, const std::shared_ptr<void>& owner) {
  array.content = new ArrayContent;
  array.content->isReceived = true;
  array.content->isCommitted = false;
  ArrayData& data = array.content->data;
  return owner ? readArrayInPlace(data, bytes, owner) : readArray(data, bytes);
}

}  // namespace hcy
