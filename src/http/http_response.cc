// SPDX-License-Identifier: Apache-2.0

#include "http/http_response.h"

#include <algorithm>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <boost/throw_exception.hpp>
#include <charconv>
#include <cstring>
#include <locale>
#include <new>
#include <string_view>
#include <utility>

namespace hcy {
namespace {

// Everything behind the second blank of a status line.
std::string statusMessageOf(std::string_view statusLine) {
  const std::size_t first = statusLine.find(' ');
  if (first == std::string_view::npos) return {};
  const std::size_t second = statusLine.find(' ', first + 1);
  if (second == std::string_view::npos) return {};
  return std::string(statusLine.substr(second + 1));
}

// An optional sign and decimal digits, whatever the process's locale is; a number behind a minus
// sign is negated modulo 2 to the 64th.
std::uint64_t unsignedNumber(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    boost::throw_exception(boost::bad_lexical_cast());
  }
  return negative ? 0 - number : number;
}

// Asks the locale only where every locale does not give the same answer.
bool isSpace(char character) {
  if (character == ' ') return true;
  if (character >= '0' && character <= '9') return false;
  return std::isspace(character, std::locale());
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
  return text;
}

// The key is looked for anywhere in the line; a line that names the field without a colon behind
// it declares 0.
std::uint64_t declaredLengthOf(std::string_view line) {
  constexpr std::string_view key = "Content-Length:";
  const std::size_t found = line.find(key);
  if (found == std::string_view::npos) return 0;
  line.remove_prefix(found + key.size());
  return unsignedNumber(trimmed(line.substr(0, line.find("\r\n"))));
}

}  // namespace

HttpResponse::HttpResponse(std::uint32_t responseSizeLimit, std::shared_ptr<SpareBlock> spare)
    : spare_(std::move(spare)),
      body_(spare_->take()),
      mostKept_(responseSizeLimit),
      responseSizeLimit_(responseSizeLimit) {
  if (!body_.reserve(1)) throw std::bad_alloc();
}

void HttpResponse::takeMemory(BodyBlock& memory) {
  const std::uint64_t expected = std::min(declaredLength_, mostKept_);
  if (expected <= SpareBlock::kMostKept || memory.capacity() <= SpareBlock::kMostKept) return;
  spare_->giveBack(std::move(body_));
  body_ = std::move(memory);
  body_.trim(expected);
}

// What the spare block would not keep.
std::shared_ptr<void> HttpResponse::takeBody() {
  if (body_.capacity() <= SpareBlock::kMostKept) return nullptr;
  return std::make_shared<BodyBlock>(std::move(body_));
}

bool HttpResponse::appendBody(const char* bytes, std::size_t count) {
  if (declaredLength_ > responseSizeLimit_) return false;
  const std::uint64_t room = bodyLength_ < mostKept_ ? mostKept_ - bodyLength_ : 0;
  const std::size_t kept = std::min<std::uint64_t>(count, room);
  if (kept != 0) {
    // A declared length is room in advance: within the limit, and no memory until it is touched.
    if (bodyLength_ == 0) static_cast<void>(body_.reserve(std::min(declaredLength_, mostKept_)));
    if (!body_.reserve(bodyLength_ + kept)) return false;
    std::memcpy(body_.data() + bodyLength_, bytes, kept);
  }
  bodyLength_ += count;
  return true;
}

void HttpResponse::addHeaderLine(std::string_view line) {
  if (!hasStatusLine_) statusMessage_ = statusMessageOf(line);
  hasStatusLine_ = true;
  if (line.find("Content-Length") != std::string_view::npos) {
    declaredLength_ = declaredLengthOf(line);
  }
}

}  // namespace hcy
