// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "array/array_content.h"
#include "array/served_array.h"
#include "wire/data_accessor.h"

namespace hcy {

class SendingOrder;
struct ArrayToSend;

// The dimensions of an array, two or more.
using Dimensions = std::span<const std::uint64_t>;

// An array behind a handle: shared ownership of its content, and the operations that differ from
// class to class. This class serves those whose elements lie in the content; the classes derived
// from it keep elements of their own, which reach the content by commit(). Any number of threads
// may call the const functions of one array at once.
class VORTENArrayProxy : public ServedArray {
 public:
  // A new array of zeros. Throws positive overflow when a dimension is over 2147483647.
  VORTENArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                   std::uint64_t count);

  // An array over content that it shares. Throws std::invalid_argument if the library does not
  // support the type.
  explicit VORTENArrayProxy(const ContentPtr& content);

  VORTENArrayProxy(const VORTENArrayProxy&) = delete;
  VORTENArrayProxy& operator=(const VORTENArrayProxy&) = delete;
  ~VORTENArrayProxy() override = default;

  virtual void resize(std::int32_t count);
  virtual std::size_t getElementSize() const;
  // Null if the storage holds fewer elements than the dimensions say, and if there are none.
  virtual void* getData() const;
  virtual void* getImagData() const;
  virtual double getScalar() const;

  // Writes elements that are kept outside the content into it.
  void commit() { commitTo(*content_); }

  // A deep copy, with content of its own.
  std::unique_ptr<VORTENArrayProxy> clone();

  // What is sent of the array when its turn comes; changes nothing.
  virtual ArrayToSend toSend(const SendingOrder& order) const;

  const ServerBridge& serverBridge() const override;

  const ContentPtr& content() const { return content_; }
  ArrayData& data() const { return content_->data; }
  bool isComplex() const { return complex_; }

  // Whether the caller gets the index arrays of a sparse array: those of a reply only if they
  // describe a matrix of the array's dimensions.
  bool hasIndices() const { return hasIndices_; }

  // How many elements a sparse array has room for: in a reply, no more than there are values for.
  std::size_t storedElements() const;

  // To be called when the program has given the array storage for its dimensions.
  void storageChanged();

 protected:
  VORTENArrayProxy(ContentPtr content, bool complex);
  // A new array without storage.
  VORTENArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex);

  virtual void commitTo(ArrayContent& /*content*/) const {}
  virtual std::unique_ptr<VORTENArrayProxy> copied() const;

  // How many elements the storage must hold for the caller to get it; 0 for what the program has
  // made.
  std::size_t requiredElements() const;

 private:
  void checkIndices();
  DataAccessor elements() const;

  ContentPtr content_;
  bool complex_;
  bool hasIndices_ = true;
  std::size_t requiredValues_ = 0;  // of a sparse array
};

}  // namespace hcy
