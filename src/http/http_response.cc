// SPDX-License-Identifier: Apache-2.0

#include "http/http_response.h"

#include <boost/algorithm/string/trim.hpp>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <boost/throw_exception.hpp>
#include <charconv>
#include <cstring>
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

// The key is looked for anywhere in the line; a line that names the field without a colon behind
// it declares 0.
std::uint64_t declaredLengthOf(std::string_view line) {
  constexpr std::string_view key = "Content-Length:";
  const std::size_t found = line.find(key);
  if (found == std::string_view::npos) return 0;
  line.remove_prefix(found + key.size());
  const std::string value(line.substr(0, line.find("\r\n")));
  return unsignedNumber(boost::algorithm::trim_copy(value));
}

}  // namespace

HttpResponse::HttpResponse(std::uint32_t responseSizeLimit)
    : body_(static_cast<char*>(std::malloc(1))), responseSizeLimit_(responseSizeLimit) {
  if (!body_) throw std::bad_alloc();
}

bool HttpResponse::appendBody(const char* bytes, std::size_t count) {
  if (declaredLength_ > responseSizeLimit_) return false;
  if (count == 0) return true;
  auto* const grown = static_cast<char*>(std::realloc(body_.get(), bodyLength_ + count));
  if (grown == nullptr) return false;
  static_cast<void>(body_.release());  // realloc has taken the block over
  body_.reset(grown);
  std::memcpy(grown + bodyLength_, bytes, count);
  bodyLength_ += count;
  return true;
}

void HttpResponse::addHeaderLine(std::string line) {
  headerLines_.push_back(std::move(line));
  const std::string& added = headerLines_.back();
  if (headerLines_.size() == 1) statusMessage_ = statusMessageOf(added);
  if (added.find("Content-Length") != std::string::npos) declaredLength_ = declaredLengthOf(added);
}

}  // namespace hcy
