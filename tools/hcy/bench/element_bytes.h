// SPDX-License-Identifier: Apache-2.0
//
// The size of arrays in bytes.

#pragma once

#include <cstdint>
#include <hcy/hcyclient.hpp>

namespace hcy::tools {

// The bytes of all elements, including those in containers, and of the indices of sparse arrays.
// The array must have passed requireWhole().
std::uint64_t elementBytes(const hcyclient::Array& array);

}  // namespace hcy::tools
