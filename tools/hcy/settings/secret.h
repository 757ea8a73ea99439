// SPDX-License-Identifier: Apache-2.0
//
// Pass phrases, which are wiped from memory.

#pragma once

#include <string.h>  // NOLINT: explicit_bzero is not in <cstring>

#include <string>
#include <utility>

namespace hcy::tools {

// A string whose memory is wiped when it is destroyed.
class Secret {
 public:
  // Reserved at once: growing would leave copies.
  static constexpr std::size_t kLongest = 1023;

  Secret() { text_.reserve(kLongest); }
  Secret(Secret&& other) noexcept : text_(std::move(other.text_)) {}
  Secret& operator=(Secret&&) = delete;
  ~Secret() { ::explicit_bzero(text_.data(), text_.capacity()); }

  // Appends a character; false if the string is full.
  bool append(char c) {
    if (text_.size() == kLongest) return false;
    text_ += c;
    return true;
  }
  // Removes the last character, which in UTF-8 may be several bytes.
  void removeLast() {
    const auto isContinued = [this] {
      return !text_.empty() && (static_cast<unsigned char>(text_.back()) & 0xC0U) == 0x80;
    };
    while (isContinued()) text_.pop_back();
    if (!text_.empty()) text_.pop_back();
  }
  void clear() { text_.clear(); }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace hcy::tools
