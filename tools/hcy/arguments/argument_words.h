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
  bool isNotationSaid = false;
  std::size_t length = 0;           // of what stands before the source
  std::optional<std::string> file;  // "-" for the standard input
  std::string_view literal;         // if there is no file
  std::vector<CsvColumns> choices;  // each makes an array of its own
};

// What stands before the colon is no class. what() says which word is near.
class UnknownClass : public BadText {
 public:
  using BadText::BadText;
};

// Takes an argument apart. The notation of a file that is not said is that of its ending. `~/` at
// the start of a file name is the home directory. Throws BadText, of which UnknownClass is one.
ArgumentWords argumentWords(std::string_view argument);

// The names of classes and of notations that may stand before a colon.
const std::vector<std::string_view>& classWords();
const std::vector<std::string_view>& notationWords();

}  // namespace hcy::tools
