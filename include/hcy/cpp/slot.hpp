/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file slot.hpp
 * @brief A reference to an element of a cell or struct array. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_SLOT_HPP
#define HCY_CPP_SLOT_HPP

#include <hcy/hcyclient.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/describe.hpp>
#include <hcy/cpp/input.hpp>
#include <hcy/cpp/text.hpp>
#include <hcy/cpp/whole.hpp>
#include <initializer_list>
#include <iosfwd>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

/**
 * A reference to an element of a cell array or a field of a struct array.
 *
 * Use it at once: `cell[0] = 2.0`, `Array name = s("name")`, `s(1, "list")[2].scalar()`. It has
 * every reader of an Array. It does not keep its container alive, so using one that was kept
 * (`auto slot = cell[0]`) does not compile: write `Array x = cell[0]`.
 *
 * An assignment through several indices or names stores each inner array in its container again,
 * which copies the contents of these arrays. If you have much to set, take the inner array out,
 * fill it, and store it once.
 */
class Slot {
 public:
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;
  ~Slot() = default;

  /** Stores the value, which is shared with the container. Throws UsageError if the container has
   * no such element or field, and IncompleteReply if the element did not arrive with the reply. */
  void operator=(const Array& value) && { store(value.handle()); }
  /** Stores a column of the values in an initializer list. */
  template <class T, detail::IfValue<T> = 0>
  void operator=(std::initializer_list<T> values) && {
    store(Array(values).handle());
  }
  /** Stores the element that the other Slot refers to. */
  void operator=(Slot&& other) && { store(std::move(other).get().handle()); }

  /** A new handle to the element. Throws UsageError if the container has no such element or field,
   * and IncompleteReply if the element did not arrive, is incomplete, or is of a class that the
   * library does not support. */
  Array get() && { return fetch(); }
  Array get() & = delete; /**< Write `Array x = cell[0];`. */
  /** Same as get(). */
  operator Array() && { return fetch(); }
  operator Array() & = delete; /**< Write `Array x = cell[0];`. */

  /** @name Readers
   *  The readers of Array, applied to the element. They throw like get() and like the reader.
   *  @{ */
  hcyClassID classId() && { return fetch().classId(); } /**< Same as Array::classId(). */
  hcyClassID classId() & = delete;                      /**< Write `Array x = cell[0];`. */
  /** Same as Array::className(). */
  std::string_view className() && { return fetch().className(); }
  std::string_view className() & = delete;                 /**< Write `Array x = cell[0];`. */
  bool isText() && { return fetch().isText(); }            /**< Same as Array::isText(). */
  bool isText() & = delete;                                /**< Write `Array x = cell[0];`. */
  bool isCell() && { return fetch().isCell(); }            /**< Same as Array::isCell(). */
  bool isCell() & = delete;                                /**< Write `Array x = cell[0];`. */
  bool isStruct() && { return fetch().isStruct(); }        /**< Same as Array::isStruct(). */
  bool isStruct() & = delete;                              /**< Write `Array x = cell[0];`. */
  bool isSparse() && { return fetch().isSparse(); }        /**< Same as Array::isSparse(). */
  bool isSparse() & = delete;                              /**< Write `Array x = cell[0];`. */
  bool isComplex() && { return fetch().isComplex(); }      /**< Same as Array::isComplex(). */
  bool isComplex() & = delete;                             /**< Write `Array x = cell[0];`. */
  bool isEmpty() && { return fetch().isEmpty(); }          /**< Same as Array::isEmpty(). */
  bool isEmpty() & = delete;                               /**< Write `Array x = cell[0];`. */
  std::size_t rows() && { return fetch().rows(); }         /**< Same as Array::rows(). */
  std::size_t rows() & = delete;                           /**< Write `Array x = cell[0];`. */
  std::size_t columns() && { return fetch().columns(); }   /**< Same as Array::columns(). */
  std::size_t columns() & = delete;                        /**< Write `Array x = cell[0];`. */
  std::size_t size() && { return fetch().size(); }         /**< Same as Array::size(). */
  std::size_t size() & = delete;                           /**< Write `Array x = cell[0];`. */
  Shape shape() && { return fetch().shape(); }             /**< Same as Array::shape(). */
  Shape shape() & = delete;                                /**< Write `Array x = cell[0];`. */
  double scalar() && { return fetch().scalar(); }          /**< Same as Array::scalar(). */
  double scalar() & = delete;                              /**< Write `Array x = cell[0];`. */
  std::string toString() && { return fetch().toString(); } /**< Same as Array::toString(). */
  std::string toString() & = delete;                       /**< Write `Array x = cell[0];`. */
  std::vector<std::string> fieldNames() && {
    return fetch().fieldNames();
  }                                                 /**< Same as Array::fieldNames(). */
  std::vector<std::string> fieldNames() & = delete; /**< Write `Array x = cell[0];`. */
  Array copy() && { return fetch().copy(); }        /**< Same as Array::copy(). */
  Array copy() & = delete;                          /**< Write `Array x = cell[0];`. */
  /** Same as Array::is(). */
  template <class T>
  bool is() && {
    return fetch().is<T>();
  }
  /** Same as Array::index(). */
  template <class... Sizes>
  std::size_t index(Sizes... subscripts) && {
    return fetch().index(subscripts...);
  }
  /** Same as Array::index(). */
  template <class T>
  std::size_t index(std::initializer_list<T> subscripts) && {
    return fetch().index(subscripts);
  }
  /** Same as Array::at(). */
  template <class T, class... Sizes>
  T at(Sizes... subscripts) && {
    return fetch().at<T>(subscripts...);
  }
  /** Same as Array::scalar(). */
  template <class T>
  T scalar() && {
    return fetch().scalar<T>();
  }
  /** Same as Array::toVector(). */
  template <class T>
  std::vector<T> toVector() && {
    return fetch().toVector<T>();
  }
  /** Same as Array::convertTo(). */
  template <class T>
  Array convertTo() && {
    return fetch().convertTo<T>();
  }
  /** Same as Array::entries(). */
  template <class T>
  std::vector<Entry<T>> entries() && {
    return fetch().entries<T>();
  }
  /** Same as Array::value_or(). */
  template <class T>
  auto value_or(T fallback) && {
    return fetch().value_or(std::move(fallback));
  }
  /** Same as Array::value_or(). */
  template <class T>
  auto value_or(const CString& field, T fallback) && {
    return fetch().value_or(field, std::move(fallback));
  }
  /** Same as Array::hasField(). */
  bool hasField(const CString& field) && { return fetch().hasField(field); }
  /** Same as Array::fields(). */
  Fields fields(Size i = 0) &&;
  /** Same as operator== of arrays. */
  friend bool operator==(Slot&& a, const Array& b) { return a.fetch() == b; }
  /** Same as operator== of arrays. */
  friend bool operator==(Slot&& a, Slot&& b) { return a.fetch() == b.fetch(); }
  /** Same as operator!= of arrays. */
  friend bool operator!=(Slot&& a, const Array& b) { return a.fetch() != b; }
  /** Same as operator!= of arrays. */
  friend bool operator!=(Slot&& a, Slot&& b) { return a.fetch() != b.fetch(); }
  /** Same as operator<< of arrays. */
  friend std::ostream& operator<<(std::ostream& out, Slot&& slot) { return out << slot.fetch(); }
  /** @} */

  /** @name What a Slot cannot do
   *  The elements would not outlive the expression.
   *  @{ */
  template <class T>
  Span<const T> span() const = delete; /**< Write `Array x = cell[0];`. */
  template <class T>
  Span<const T> imaginary() const = delete;              /**< Write `Array x = cell[0];`. */
  Span<const std::size_t> rowIndices() const = delete;   /**< Write `Array x = cell[0];`. */
  Span<const std::size_t> columnStarts() const = delete; /**< Write `Array x = cell[0];`. */
  Span<const std::size_t> dimensions() const = delete;   /**< Write `Array x = cell[0];`. */
  void begin() const = delete; /**< Write `for (Array element : cell[0].get())`. */
  void end() const = delete;   /**< Write `for (Array element : cell[0].get())`. */
  /** @} */

  template <class Name, detail::IfName<Name> = 0>
  void operator[](const Name&) const = delete; /**< A field is s("name"). */
  template <class T, detail::IfIntegers<T> = 0>
  void operator()(T) const =
      delete; /**< A cell is cell[i], and an element cell[0].at<double>(i). */
  template <class T, detail::IfIntegers<T> = 0>
  void operator()(T) = delete; /**< A cell is cell[i], and an element cell[0].at<double>(i). */
  template <class T, class U, detail::IfIntegers<T, U> = 0>
  void operator()(T, U) const = delete; /**< An element is cell[0].at<double>(i, j). */

  /** Element i of the cell array that this Slot refers to. */
  Slot operator[](Size i) && { return {fetch(), this, i, nullptr}; }
  /** A field of the struct array that this Slot refers to; of its first element if it has several.
   */
  Slot operator()(const CString& field) && { return {fetch(), this, 0, field.c_str()}; }
  /** A field of element i of the struct array that this Slot refers to. */
  Slot operator()(Size i, const CString& field) && { return {fetch(), this, i, field.c_str()}; }

 private:
  friend class Array;
  friend class Fields;

  // The name is null for an element of a cell array. Everything that is pointed to lives until the
  // end of the full expression.
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
    // The library stores nothing beyond the elements that arrived.
    requireArrived();
    // A container can be stored where it came from.
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
        " did not arrive with the reply, or is of a class that the library does not support" +
        detail::limitMayHaveCut);
  }

  // Throws unless there is such an element or field.
  void require() const {
    if (!(field_ == nullptr ? hcyIsCell(container_) : hcyIsStruct(container_))) {
      throw detail::isNot(container_, field_ == nullptr ? "a cell array" : "a struct array");
    }
    if (index_ >= hcyGetNumberOfElements(container_)) {
      throw detail::noElement(container_, index_);
    }
    if (field_ != nullptr && hcyGetFieldNumber(container_, field_) < 0) {
      throw detail::noField(container_, field_);
    }
  }

  Array owned_;
  const Slot* outer_ = nullptr;
  hcyArray* container_;
  std::size_t index_;
  const char* field_;
};

inline Slot Array::operator[](Size i) & { return {handle(), i, nullptr}; }
inline Array Array::operator[](Size i) const& { return Slot(handle(), i, nullptr); }
inline Slot Array::operator()(const CString& field) & { return (*this)(0, field); }
inline Slot Array::operator()(Size i, const CString& field) & {
  return {handle(), i, field.c_str()};
}
inline Array Array::operator()(Size i, const CString& field) const& {
  return Slot(handle(), i, field.c_str());
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
  // Checked first, because the library would write the dimensions before it fails.
  const int fields = std::max(hcyGetNumberOfFields(handle()), 1);
  detail::requireSizes(shape.data(), shape.size(), false, static_cast<std::uint64_t>(fields));
  if (isSparse()) detail::requireSizes(shape.data(), shape.size(), true);
  requireElements();
  if (hcySetDimensions(handle(), shape.data(), shape.size()) != 0) throw std::bad_alloc();
}

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_SLOT_HPP
