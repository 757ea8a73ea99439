/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file walk.hpp
 * @brief Iterates over the fields of a struct array. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_WALK_HPP
#define HCY_CPP_WALK_HPP

#include <hcy/hcyclient.h>

#include <cstddef>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/slot.hpp>
#include <iterator>
#include <string_view>
#include <utility>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

/** A field of a struct array. */
struct NamedValue {
  std::string_view
      name;    /**< in the storage of the array; valid until a field is added or removed */
  Array value; /**< a new handle */
};

/** The fields of one element of a struct array: see Array::fields(). */
class Fields {
 public:
  /** Iterates over the fields. */
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag; /**< each field is read once */
    using value_type = NamedValue;                     /**< name and value */
    using difference_type = std::ptrdiff_t;            /**< between numbers of fields */
    using pointer = void;                              /**< there is nothing to point to */
    using reference = NamedValue;                      /**< a new one each time */

    Iterator() noexcept = default;
    /** At the field with this number. */
    Iterator(const Fields& fields, int number) noexcept : fields_(&fields), number_(number) {}
    /** The field; throws like Array::operator(). */
    NamedValue operator*() const { return fields_->at(number_); }
    /** To the next field. */
    Iterator& operator++() noexcept {
      ++number_;
      return *this;
    }
    /** The same. */
    void operator++(int) noexcept { ++number_; }
    /** Whether both are at the same field. */
    friend bool operator==(Iterator a, Iterator b) noexcept { return a.number_ == b.number_; }
    /** Whether they are not. */
    friend bool operator!=(Iterator a, Iterator b) noexcept { return a.number_ != b.number_; }

   private:
    const Fields* fields_ = nullptr;
    int number_ = 0;
  };

  /** The fields of element i of the array with this handle, which must outlive the Fields. */
  Fields(hcyArray* array, std::size_t i) noexcept : array_(array), i_(i) {}
  /** The fields of element i of an array, which the Fields keep. */
  Fields(Array array, std::size_t i) noexcept
      : owned_(std::move(array)), array_(owned_.get()), i_(i) {}

  /** The first field. */
  Iterator begin() const noexcept { return {*this, 0}; }
  /** After the last field. */
  Iterator end() const noexcept { return {*this, hcyGetNumberOfFields(array_)}; }

 private:
  NamedValue at(int number) const {
    const char* const name = hcyGetFieldNameByNumber(array_, number);
    return {name, Slot(array_, i_, name)};
  }

  Array owned_;
  hcyArray* array_;
  std::size_t i_;
};

inline Array CellIterator::operator*() const { return (*cell_)[i_]; }
inline CellIterator Array::begin() const {
  if (!isCell()) throw wrongClass("a cell array");
  return {*this, 0};
}
inline CellIterator Array::end() const { return {*this, size()}; }

inline Fields Array::fields() const& { return fields(0); }
inline Fields Array::fields(Size i) const& {
  if (!isStruct()) throw wrongClass("a struct array");
  if (i >= size()) throw detail::noElement(get(), i);
  return {get(), i};
}
inline Fields Slot::fields(Size i) && {
  Array array = fetch();
  static_cast<void>(std::as_const(array).fields(i));
  return {std::move(array), i};
}
inline Fields Array::fields() && {
  static_cast<void>(fields(0));
  return {std::move(*this), 0};
}

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_WALK_HPP
