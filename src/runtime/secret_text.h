// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstring>
#include <memory>

namespace hcy {

// A NUL-terminated string whose storage is wiped before it is released.
class SecretText {
 public:
  explicit SecretText(const char* text = "") : text_(new char[std::strlen(text) + 1]) {
    std::memcpy(text_.get(), text, std::strlen(text) + 1);
  }

  const char* c_str() const { return text_.get(); }

 private:
  struct WipingDeleter {
    void operator()(char* text) const {
      // Volatile, or the writes would be left out as dead.
      for (volatile char* byte = text; *byte != '\0'; ++byte) *byte = '\0';
      delete[] text;
    }
  };

  std::unique_ptr<char[], WipingDeleter> text_;
};

}  // namespace hcy
