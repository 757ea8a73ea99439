// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace hcy::server {

// The SHA-256 of the bytes, in lower-case hexadecimal digits.
std::string sha256(std::string_view bytes);

}  // namespace hcy::server
