// SPDX-License-Identifier: Apache-2.0

#include "array/array_proxy_builder.h"

#include <utility>

#include "array/char_array_proxy.h"
#include "array/integer16_array_proxy.h"
#include "array/struct_cell_array_proxy.h"
#include "wire/dispatch_on_QXType.h"

namespace hcy {
namespace {

template <class Class>
struct ProxyOf {
  using type = VORTENArrayProxy;
};
template <WidenedClass Class>
struct ProxyOf<Class> {
  using type = VORTEN16BitIntegerArrayProxy<Class>;
};
template <>
struct ProxyOf<CHAR_class> {
  using type = VORTENCharArrayProxy;
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

std::unique_ptr<VORTENArrayProxy> ArrayProxyBuilder::over(std::shared_ptr<VORTEN_Array> message) {
  const VORTEN_Array::QXType type = message->type();
  return makeProxy(type, std::move(message));
}

std::unique_ptr<VORTENArrayProxy> ArrayProxyBuilder::create(VORTEN_Array::QXType type,
                                                            Dimensions dimensions, bool complex,
                                                            std::uint64_t count) {
  return makeProxy(type, type, dimensions, complex, count);
}

}  // namespace hcy
