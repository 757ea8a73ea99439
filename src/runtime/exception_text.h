// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <exception>
#include <new>
#include <string>

namespace hcy {

// Stores what an exception says; if memory runs out, a shorter text.
inline void storeText(const std::exception& exception, std::string& text) noexcept {
  try {
    text = exception.what();
  } catch (const std::bad_alloc& exhausted) {
    // Short enough to be stored without memory of its own.
    text = exhausted.what();
  }
}

}  // namespace hcy
