// SPDX-License-Identifier: Apache-2.0
//
// What arrays hold, in bytes.

#pragma once

#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <vector>

namespace hcy::tools {

// The bytes of all elements, in containers too, and of the indices of sparse arrays. Of a reply
// whose arrays are larger than what came, as their dimensions say.
std::uint64_t elementBytes(const hcyclient::Array& array);

// Throws hcyclient::UsageError when the arrays say that they hold more than could have come in a
// reply of so many bytes: reading them would make it up with zeros.
void requireNoMoreThanCame(const std::vector<hcyclient::Array>& arrays, std::uint64_t replyBytes);

}  // namespace hcy::tools
