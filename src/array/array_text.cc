// SPDX-License-Identifier: Apache-2.0
//
// The text of char arrays.

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "array/array_handle.h"
#include "array/narrow_array_proxy.h"
#include "wire/utf16.h"

namespace {

// The code units of an array whose class has been tested.
std::u16string_view codeUnitsOf(const hcyArray* array) {
  return static_cast<const hcy::VORTENCharArrayProxy&>(hcy::proxyOf(array)).codeUnits();
}

char* newUtf8(std::u16string_view text) {
  auto* const utf8 = static_cast<char*>(std::malloc(hcy::utf8Length(text) + 1));
  if (utf8 != nullptr) *hcy::writeUtf8(text, utf8) = '\0';
  return utf8;
}

}  // namespace

char* hcyArrayToString(const hcyArray* array) {
  if (!hcyIsChar(array) || codeUnitsOf(array).empty()) return nullptr;
  try {
    return newUtf8(codeUnitsOf(array));
  } catch (const std::exception&) {
    return nullptr;
  }
}

int hcyGetString(const hcyArray* array, char* buf, size_t buflen) {
  if (!hcyIsChar(array)) return 1;
  if (buflen == 0) return 0;
  const size_t total = hcyGetNumberOfElements(array);
  const size_t copied = std::min(total, buflen - 1);
  const std::u16string_view stored = codeUnitsOf(array).substr(0, copied);
  std::ranges::transform(stored, buf, [](char16_t unit) { return static_cast<char>(unit); });
  std::fill(buf + stored.size(), buf + copied + 1, '\0');
  return copied < total ? 1 : 0;
}
