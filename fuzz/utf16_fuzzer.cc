// SPDX-License-Identifier: Apache-2.0
//
// Any code units as a char array: the text is what a second, slower encoder makes of them.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "hcy/hcyclient.h"

namespace {

void append(std::string& text, std::uint32_t c) {
  const auto tail = [&text](std::uint32_t bits) {
    text += static_cast<char>(0x80 + (bits & 0x3F));
  };
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0 + (c >> 6));
    tail(c);
  } else if (c < 0x10000) {
    text += static_cast<char>(0xE0 + (c >> 12));
    tail(c >> 6);
    tail(c);
  } else {
    text += static_cast<char>(0xF0 + (c >> 18));
    tail(c >> 12);
    tail(c >> 6);
    tail(c);
  }
}

// None where the text ends in half a pair, or has no code units.
std::optional<std::string> expectedText(const std::uint16_t* units, std::size_t count) {
  if (count == 0) return std::nullopt;
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t c = units[i];
    if (c >= 0xD800 && c <= 0xDFFF) {
      if (++i == count) return std::nullopt;
      c = (((c - 0xD800) * 1024) | (units[i] - std::uint32_t{0xDC00})) + 0x10000;
    }
    append(text, c);
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::size_t dims[] = {1, size / 2};
  const std::unique_ptr<hcyArray, decltype(&hcyDestroyArray)> array(hcyCreateCharArray(2, dims),
                                                                    hcyDestroyArray);
  std::uint16_t* const units = hcyGetChars(array.get());
  if (units != nullptr) std::memcpy(units, data, size / 2 * 2);
  const auto expected = expectedText(units, size / 2);
  const std::unique_ptr<char, decltype(&hcyFree)> text(hcyArrayToString(array.get()), hcyFree);
  if ((text != nullptr) != expected.has_value()) std::abort();
  if (text && std::memcmp(text.get(), expected->c_str(), expected->size() + 1) != 0) std::abort();
  return 0;
}
