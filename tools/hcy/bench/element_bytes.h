// SPDX-License-Identifier: Apache-2.0
//
// What arrays hold, in bytes.

#pragma once

#include <cstdint>
#include <hcy/hcyclient.hpp>

namespace hcy::tools {

// The bytes of all elements, those in containers included, and of the indices of sparse arrays. The
// array holds what its dimensions name, as requireWhole() finds out.
std::uint64_t elementBytes(const hcyclient::Array& array);

}  // namespace hcy::tools
