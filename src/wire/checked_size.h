// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/numeric/conversion/cast.hpp>
#include <cstdint>

namespace hcy {

// A count or dimension as the signed 32-bit size that the message library holds; throws
// boost::numeric::positive_overflow, "bad numeric conversion: positive overflow".
inline std::int32_t checkedSize(std::uint64_t count) {
  return boost::numeric_cast<std::int32_t>(count);
}

}  // namespace hcy
