// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>

namespace hcy {

using Bytes = std::span<const std::uint8_t>;

}  // namespace hcy
