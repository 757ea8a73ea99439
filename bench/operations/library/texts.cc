// SPDX-License-Identifier: Apache-2.0
//
// Char arrays from texts, and texts from char arrays.

#include <cstring>
#include <string>
#include <string_view>

#include "operations/library/arrays.h"
#include "operations/library/operations.h"
#include "operations/points.h"

namespace hcy::bench {
namespace {

// What each kind of text repeats, and the bytes of that in UTF-8.
struct TextKind {
  const char* name;
  std::u16string_view pattern;
  std::size_t utf8Size;
};
constexpr TextKind kinds[] = {
    {"ascii", u"The quick brown fox ", 20},
    {"accents", u"Falsches \u00dcben von ", 21},
    {"chinese", u"\u6570\u503c\u8ba1\u7b97", 12},
    {"pairs", u"\U0001d54f\U0001d550", 8},
};

// An even number of code units, so that no pair is cut.
std::u16string textOf(const TextKind& kind, std::size_t size) {
  std::u16string text;
  while (text.size() < size) text += kind.pattern;
  text.resize(size);
  return text;
}

Array charsOf(const std::u16string& text) {
  Array array = makeArray(hcyCHAR_CLASS, text.size());
  std::memcpy(hcyGetChars(array.get()), text.data(), text.size() * sizeof(char16_t));
  return array;
}

void addCreateString(Operations& operations, std::size_t size) {
  operations.push_back(operation(
      operationName("create_string", "ascii", size),
      [=] {
        return [text = std::string(size, 'a')] { hcyDestroyArray(hcyCreateString(text.c_str())); };
      },
      size));
}

void addToString(Operations& operations, const TextKind& kind, std::size_t size) {
  operations.push_back(operation(
      operationName("to_string", kind.name, size),
      [=] {
        return [array = charsOf(textOf(kind, size))] { hcyFree(hcyArrayToString(array.get())); };
      },
      size * kind.utf8Size / kind.pattern.size()));
}

}  // namespace

void addTexts(Operations& operations) {
  for (const std::size_t size : textSizes) {
    addCreateString(operations, size);
    for (const TextKind& kind : kinds) addToString(operations, kind, size);
  }
}

}  // namespace hcy::bench
