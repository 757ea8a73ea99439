// SPDX-License-Identifier: Apache-2.0
//
// Everything in the C++ header that only an instance shows to the compiler.

#include <hcy/hcyclient.hpp>

namespace hcyclient {

template class Span<double>;
template class Span<const bool>;

template <class T>
void useElement(Array& array, const Array& seen) {
  array = Array(T{});
  array = Array(std::vector<T>(4));
  array = Array{T{}, T{}};
  array = Array({T{}, T{}}, {1, 2});
  array = Array(std::vector<T>(4), {2, 2});
  array = Array::zeros<T>(2, 2);
  array = Array::fromRows<T>({{T{}, T{}}, {T{}, T{}}});
  array = Array::zeros<T>({2, 2});
  array = Array(std::vector<T>(4), 2, 2);
  array = Array({T{}, T{}}, 1, 2);
  array = array.value_or(std::vector<T>(1));
  array.toVector<T>();
  if constexpr (!detail::Parts<T>::areTwo) {
    array.span<T>()[0] = seen.span<T>()[0];
    if constexpr (detail::isNumeric<T>) array.imaginary<T>() = array.imaginary<T>();
  }
}

template <class T>
void useInteger(Array& array, const Array& seen) {
  useElement<T>(array, seen);
  useElement<std::complex<T>>(array, seen);
}

template <class T>
void useSparse(Array& array) {
  array = Array::sparse<T>(2, 2, 1);
  array = Array::sparse<T>(2, 2, {{0, 0, T{}}});
  array.entries<T>();
}

void useAll(Context& context, Array& array, const Array& seen);
void useAll(Context& context, Array& array, const Array& seen) {
  useElement<double>(array, seen);
  useElement<float>(array, seen);
  useElement<bool>(array, seen);
  useElement<char16_t>(array, seen);
  useElement<std::complex<double>>(array, seen);
  useElement<std::complex<float>>(array, seen);
  useInteger<std::int8_t>(array, seen);
  useInteger<std::uint8_t>(array, seen);
  useInteger<std::int16_t>(array, seen);
  useInteger<std::uint16_t>(array, seen);
  useInteger<std::int32_t>(array, seen);
  useInteger<std::uint32_t>(array, seen);
  useInteger<std::int64_t>(array, seen);
  useInteger<std::uint64_t>(array, seen);
  useSparse<double>(array);
  useSparse<std::complex<double>>(array);
  useSparse<bool>(array);
  array.toVector<std::string>();
  array[0].toVector<double>();
  context.feval("", {array, 2.0, 1, true, "text", {1.0}, seen[0], array("name"), u"units"}, 2);
  context.feval("", std::vector<Array>(), 0);
  context.feval("");
  array = context.call("", array, 2.0, "text");
  auto [first, second] = context.feval<2>("", array);
  first = context.function("")(second);
  first = Retry{}.run([&] { return context.call(""); });
}

void usePool(Pool& pool, Array& array);
void usePool(Pool& pool, Array& array) {
  array = pool.call("", array, 2.0).get();
  std::vector<Array> arrays = pool.feval("", std::vector<Array>()).get();
  arrays = pool.feval("", {array, 2.0, "text", {1.0}}, 2).get();
  auto [first, second] = pool.feval<2>("", array).get();
  first = pool.function("")(second, 2.0).get();
  arrays = pool.map("", {1.0, 2.0});
  arrays = pool.map("", arrays);
}

}  // namespace hcyclient
