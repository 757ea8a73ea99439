/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file slot.hpp
 * @brief The place of an element in a cell or struct array. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_SLOT_HPP
#define HCY_CPP_SLOT_HPP

#include <hcy/hcyclient.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/input.hpp>
#include <hcy/cpp/text.hpp>
#include <hcy/cpp/whole.hpp>
#include <initializer_list>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

/**
 * The place of an element in a cell array or of a field in a struct array.
 *
 * It is for use where it is written: `cell[0] = 2.0`, `Array name = s("name")`,
 * `s(1, "list")[2].scalar()`. One that was stored (`auto slot = cell[0]`) does not compile when it
 * is used, for it does not keep its container alive.
 *
 * An assignment behind more than one index or name stores each array on the way back into its
 * container, and so copies what they hold: where there is much to set, take the inner array out,
 * fill it, and store it once.
 */
class Slot {
 public:
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;
  ~Slot() = default;

  /** Stores the value, which is shared with the container; throws UsageError when there is no such
   *  element or field, IncompleteReply when the container came with a reply that ended before it.
   */
  void operator=(const Array& value) && { store(value.handle()); }
  /** Stores what another place holds. */
  void operator=(Slot&& other) && { store(std::move(other).get().handle()); }

  /** A handle over the element; throws UsageError when there is none, IncompleteReply when it did
   * not arrive or not as a whole, or is of a class that the library does not serve. */
  Array get() && { return fetch(); }
  /** As get(). */
  operator Array() && { return fetch(); }

  double scalar() && { return fetch().scalar(); }          /**< As Array::scalar(). */
  std::string toString() && { return fetch().toString(); } /**< As Array::toString(). */
  /** As Array::toVector(). */
  template <class T>
  std::vector<T> toVector() && {
    return fetch().toVector<T>();
  }

  /** Element i of the cell array in this place. */
  Slot operator[](std::size_t i) && { return {fetch(), this, i, nullptr}; }
  /** A field of the struct array in this place. */
  Slot operator()(const CString& field) && { return {fetch(), this, 0, field.c_str()}; }
  /** A field of element i of the struct array in this place. */
  Slot operator()(std::size_t i, const CString& field) && {
    return {fetch(), this, i, field.c_str()};
  }

 private:
  friend class Array;

  // The name is null for an element of a cell array. All that is pointed to lives until the end of
  // the full expression.
  Slot(hcyArray* container, std::size_t index, const char* field) noexcept
      : container_(container), index_(index), field_(field) {}
  Slot(Array container, const Slot* outer, std::size_t index, const char* field) noexcept
      : owned_(std::move(container)),
        outer_(outer),
        container_(owned_.get()),
        index_(index),
        field_(field) {}

  hcyArray* find() const {
    return field_ == nullptr ? hcyGetCell(container_, index_)
                             : hcyGetField(container_, index_, field_);
  }

  Array fetch() const {
    Array element = Array::adopt(find());
    if (!element) {
      require();
      throwMissing();
    }
    if (!detail::isWhole(element.get())) {
      throw IncompleteReply(place() + " is incomplete: " + detail::lackOf(element.get()) +
                            detail::limitMayHaveCut);
    }
    return element;
  }

  void store(hcyArray* value) const {
    require();
    put(value);
    // Nothing is stored beyond the elements that arrived.
    requireArrived();
    // Where a container was got from, it can be put back.
    for (const Slot* inner = this; inner->outer_ != nullptr; inner = inner->outer_) {
      inner->outer_->put(inner->container_);
    }
  }

  void requireArrived() const {
    if (!Array::adopt(find())) throwMissing();
  }

  void put(hcyArray* value) const {
    if (field_ == nullptr) {
      hcySetCell(container_, index_, value);
    } else {
      hcySetField(container_, index_, field_, value);
    }
  }

  // "element 2 in field sides of element 0"
  std::string place() const {
    const std::string element = "element " + std::to_string(index_);
    return (field_ == nullptr ? element : "field " + std::string(field_) + " of " + element) +
           (outer_ == nullptr ? "" : " in " + outer_->place());
  }

  [[noreturn]] void throwMissing() const {
    throw IncompleteReply(
        place() +
        " did not come with the reply, or is of a class that the library does not "
        "serve" +
        detail::limitMayHaveCut);
  }

  // Throws unless there is such an element or field.
  void require() const {
    if (!(field_ == nullptr ? hcyIsCell(container_) : hcyIsStruct(container_))) {
      throw UsageError("the array is " + std::string(hcyGetClassName(container_)) + ", not " +
                       (field_ == nullptr ? "cell" : "struct"));
    }
    if (index_ >= hcyGetNumberOfElements(container_)) {
      throw UsageError("there is no element " + std::to_string(index_));
    }
    if (field_ != nullptr && hcyGetFieldNumber(container_, field_) < 0) {
      throw UsageError("there is no field " + std::string(field_));
    }
  }

  Array owned_;
  const Slot* outer_ = nullptr;
  hcyArray* container_;
  std::size_t index_;
  const char* field_;
};

inline Slot Array::operator[](std::size_t i) & { return {handle(), i, nullptr}; }
inline Array Array::operator[](std::size_t i) const& { return Slot(handle(), i, nullptr); }
inline Slot Array::operator()(const CString& field) & { return (*this)(0, field); }
inline Slot Array::operator()(std::size_t i, const CString& field) & {
  return {handle(), i, field.c_str()};
}
inline Array Array::operator()(std::size_t i, const CString& field) const& {
  return Slot(handle(), i, field.c_str());
}

inline Array::Array(const std::vector<std::string>& texts) : Array(cells({texts.size(), 1})) {
  for (std::size_t i = 0; i < texts.size(); ++i) (*this)[i] = texts[i];
}

inline Array Array::cellOf(std::initializer_list<Input> elements) {
  Array made = cells({elements.size(), 1});
  std::size_t i = 0;
  for (const Input& element : elements) hcySetCell(made.get(), i++, element.get());
  return made;
}

inline Array Array::structs(const Shape& shape, const std::vector<std::string>& fields) {
  if (fields.size() > detail::largestSize) throw UsageError("there are too many fields");
  std::vector<const char*> names;
  names.reserve(fields.size());
  for (const std::string& field : fields) names.push_back(CString(field).c_str());
  detail::requireSizes(shape.data(), shape.size(), false, fields.size());
  return adopt(hcyCreateStructArray(shape.size(), shape.data(), static_cast<int>(names.size()),
                                    names.data()));
}

inline Array Array::structOf(std::initializer_list<Field> fields) {
  std::vector<std::string> names;
  names.reserve(fields.size());
  for (const Field& field : fields) names.push_back(field.name);
  Array made = structs({1, 1}, names);
  int number = 0;
  for (const Field& field : fields) {
    if (hcyGetFieldNumber(made.get(), field.name.c_str()) != number++) {
      throw UsageError("two fields have the same name: " + field.name);
    }
    hcySetField(made.get(), 0, field.name.c_str(), field.value.get());
  }
  return made;
}

inline void Array::requireElements() const {
  requireWhole();
  if (size() == 0) return;
  const std::size_t last = size() - 1;
  if (isCell()) {
    Slot(get(), last, nullptr).requireArrived();
  } else if (const int fields = hcyGetNumberOfFields(get()); fields > 0) {
    Slot(get(), last, hcyGetFieldNameByNumber(get(), fields - 1)).requireArrived();
  }
}

inline void Array::resize(const Shape& shape) {
  if (shape.empty()) throw UsageError("the shape has no dimensions");
  // Checked before the library writes any dimension, which it would not take back.
  const int fields = std::max(hcyGetNumberOfFields(handle()), 1);
  detail::requireSizes(shape.data(), shape.size(), false, static_cast<std::uint64_t>(fields));
  if (isSparse()) detail::requireSizes(shape.data(), shape.size(), true);
  requireElements();
  if (hcySetDimensions(handle(), shape.data(), shape.size()) != 0) throw std::bad_alloc();
}

template <class T>
std::vector<T> Array::toVector() const {
  if constexpr (std::is_same_v<T, std::string>) {
    std::vector<std::string> texts;
    if (!isCell()) throw wrongClass("cell");
    for (std::size_t i = 0; i < size(); ++i) texts.push_back((*this)[i].toString());
    return texts;
  } else {
    using Stored = typename detail::Element<detail::Part<T>>::Stored;
    const Span<const Stored> real = span<Stored>();
    std::vector<T> values(real.begin(), real.end());
    if constexpr (detail::Parts<T>::areTwo) {
      const Span<const Stored> parts = imaginary<Stored>();
      for (std::size_t i = 0; i < parts.size(); ++i) values[i].imag(parts[i]);
    }
    return values;
  }
}

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_SLOT_HPP
