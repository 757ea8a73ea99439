// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

namespace hcy {

using Bytes = std::span<const std::uint8_t>;

// Returns the end of what was written.
inline std::uint8_t* copyBytes(Bytes bytes, std::uint8_t* out) {
  return std::copy(bytes.begin(), bytes.end(), out);
}

}  // namespace hcy
