// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "wire/bytes.h"

namespace hcy {

// Arrays in wire form, as the elements of a container are kept while nobody looks at them: the
// repeated field of the container's part, tags and lengths included, exactly as the message library
// writes it. It never changes, so any number of threads may read it, and containers may share it.
class PackedArrays {
 public:
  // Fields with tags of one byte, well-formed; the owner keeps them alive. `isReceived` tells
  // whether any of the arrays came from a server.
  PackedArrays(std::shared_ptr<const void> owner, Bytes fields, bool isReceived);

  std::size_t size() const { return begins_.size(); }
  bool isReceived() const { return isReceived_; }
  const std::shared_ptr<const void>& owner() const { return owner_; }

  Bytes fields() const { return fields_; }
  // The fields from one array to before another one.
  Bytes fields(std::size_t from, std::size_t to) const;
  // An array without its tag and length.
  Bytes array(std::size_t index) const;

 private:
  std::size_t beginOf(std::size_t index) const {
    return index < begins_.size() ? begins_[index] : fields_.size();
  }

  std::shared_ptr<const void> owner_;
  Bytes fields_;
  bool isReceived_;
  std::vector<std::size_t> begins_;
};

}  // namespace hcy
