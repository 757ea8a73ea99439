// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>

#include "wire/array_class_traits.h"

// What the caller's handles point to.
struct hcyArray {
  virtual ~hcyArray() = default;
};

namespace hcy {

// The dimensions of an array, two or more.
using Dimensions = std::span<const std::uint64_t>;

// An array behind a handle: shared ownership of its message, and the operations that differ from
// class to class. This class serves those whose elements lie in the message in the caller's own
// form; the classes derived from it keep elements of their own, which reach the message by
// commit().
class VORTENArrayProxy : public hcyArray {
 public:
  // A new array of zeros. Throws positive overflow when a dimension is over 2147483647.
  VORTENArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                   std::uint64_t count);

  // An array over a message that it shares. Throws std::invalid_argument when the type of the
  // message is not served.
  explicit VORTENArrayProxy(std::shared_ptr<VORTEN_Array> message);

  VORTENArrayProxy(const VORTENArrayProxy&) = delete;
  VORTENArrayProxy& operator=(const VORTENArrayProxy&) = delete;
  ~VORTENArrayProxy() override = default;

  virtual void resize(std::int32_t count);
  virtual std::size_t getElementSize() const;
  // Null where the storage holds fewer elements than the dimensions say, and when there are none.
  virtual void* getData();
  virtual void* getImagData();
  virtual double getScalar();

  // Writes elements that are kept outside the message into it.
  virtual void commit() {}

  // Brings all elements into the message for as long as it takes to read it: from beginReading(),
  // which may throw and may be called again, to endReading(), which may come without it.
  virtual void beginReading() { commit(); }
  virtual void endReading() {}

  // A deep copy, with a message of its own.
  virtual std::unique_ptr<VORTENArrayProxy> clone();

  const std::shared_ptr<VORTEN_Array>& sharedMessage() const { return message_; }
  VORTEN_Array& message() const { return *message_; }
  bool isComplex() const { return complex_; }

  // Whether the index arrays of a sparse array are handed out: those of a reply only where they
  // describe a matrix of the array's dimensions.
  bool hasIndices() const { return hasIndices_; }

  // Looks again at index arrays that were not handed out, once they have changed.
  void recheckIndices();

 protected:
  // How many elements the storage must hold to be handed out.
  std::size_t requiredElements() const;

 private:
  std::shared_ptr<VORTEN_Array> message_;
  bool complex_;
  bool isChecked_ = false;  // a sparse array of a reply
  bool hasIndices_ = true;
};

}  // namespace hcy
