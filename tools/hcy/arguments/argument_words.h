// SPDX-License-Identifier: Apache-2.0
//
// How an argument is written: [CLASS:]...[NOTATION:]SOURCE[COLUMNS].

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "notations/csv.h"
#include "text/source_text.h"

namespace hcy::tools {

enum class Notation { kJson, kText, kCsv, kTsv, kNpy };

struct ArgumentWords {
  std::vector<std::string_view> classes;  // the innermost first
  Notation notation = Notation::kJson;
  bool hasNotation = false;
  std::size_t length = 0;           // of everything before the source
  std::optional<std::string> file;  // "-" for the standard input
  std::string_view literal;         // if there is no file
  std::vector<CsvColumns> choices;  // each makes an array of its own
};

// The word before the colon is not a class. what() suggests a similar one.
class UnknownClass : public BadText {
 public:
  using BadText::BadText;
};

// Splits an argument. Without an explicit notation, a file has that of its ending. `~/` at the
// start of a file name is the home directory. Throws BadText, or UnknownClass, which is derived
// from it.
ArgumentWords argumentWords(std::string_view argument);

// The names of classes and of notations, each without its colon.
const std::vector<std::string_view>& classWords();
const std::vector<std::string_view>& notationWords();

}  // namespace hcy::tools
