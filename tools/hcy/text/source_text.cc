// SPDX-License-Identifier: Apache-2.0

#include "text/source_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "text/text.h"

namespace hcy::tools {
namespace {

// No request can be larger.
constexpr std::size_t kLongestFile = 2147483647;

// How many bytes of a line are shown on either side of the mistake.
constexpr std::size_t kExcerpt = 36;

// The end of the text, at most kExcerpt bytes, beginning at a code point.
std::string_view lastOf(std::string_view text) {
  if (text.size() <= kExcerpt) return text;
  text.remove_prefix(text.size() - kExcerpt);
  while (!text.empty() && (static_cast<unsigned char>(text.front()) & 0xC0U) == 0x80) {
    text.remove_prefix(1);
  }
  return text;
}

std::string_view firstOf(std::string_view text) {
  std::size_t length = std::min(text.size(), kExcerpt);
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80) {
    ++length;
  }
  return text.substr(0, length);
}

struct FileCloser {
  void operator()(std::FILE* file) const noexcept {
    if (file != stdin) static_cast<void>(std::fclose(file));
  }
};

}  // namespace

void refuseFile(const std::string& name) {
  throw BadInput(printable(name) + ": " + std::generic_category().message(errno));
}

std::string located(const std::string& name, std::string_view text, const BadText& problem) {
  const std::string_view before = text.substr(0, std::min(problem.offset, text.size()));
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  return name + ", line " + std::to_string(line) + ", " + locatedInLine(text, problem);
}

std::string locatedInLine(std::string_view text, const BadText& problem) {
  const std::size_t offset = std::min(problem.offset, text.size());
  const std::string_view before = text.substr(0, offset);
  const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
  const std::string_view head = before.substr(lineStart);
  const std::string_view tail = text.substr(offset, text.find('\n', offset) - offset);
  std::size_t column = 1;
  for (std::string_view rest = head; !rest.empty(); ++column) takeCodePoint(rest);

  const std::string_view shownHead = lastOf(head);
  const std::string_view shownTail = firstOf(tail);
  const std::string start = (shownHead.size() < head.size() ? "…" : "") + printable(shownHead);
  return "column " + std::to_string(column) + ": " + problem.what() + "\n  " + start +
         printable(shownTail) + (shownTail.size() < tail.size() ? "…" : "") + "\n  " +
         std::string(displayWidth(start), ' ') + "^";
}

std::string expandedHome(std::string_view file) {
  const char* const home = std::getenv("HOME");
  if (!file.starts_with("~/") || home == nullptr || *home == '\0') return std::string(file);
  return home + std::string(file.substr(1));
}

std::string contentsOf(const std::string& file, const FileCheck& check) {
  const bool isStandardInput = file == "-";
  const std::string name = isStandardInput ? "standard input" : file;
  const std::unique_ptr<std::FILE, FileCloser> stream(
      isStandardInput ? stdin : std::fopen(file.c_str(), "rb"));
  if (!stream) refuseFile(name);
  if (check) check(::fileno(stream.get()), name);
  std::string contents;
  std::array<char, 65536> piece{};
  errno = 0;
  // Another read after the end would wait on a terminal for a second one.
  while (std::feof(stream.get()) == 0) {
    const std::size_t count = std::fread(piece.data(), 1, piece.size(), stream.get());
    if (count == 0) break;
    contents.append(piece.data(), count);
    if (contents.size() > kLongestFile) {
      throw BadInput(printable(name) + ": the file is larger than " + std::to_string(kLongestFile) +
                     " bytes");
    }
  }
  if (std::ferror(stream.get()) != 0) refuseFile(name);
  return contents;
}

}  // namespace hcy::tools
