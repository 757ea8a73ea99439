// SPDX-License-Identifier: Apache-2.0
#include "script_request.h"

#include <strings.h>

#include <algorithm>
#include <charconv>

namespace hcy::test {
namespace {

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::size_t parseSize(std::string_view digits, int base) {
  std::size_t size = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, size, base);
  if (error != std::errc{} || stop != end) {
    throw ScriptFailure("the request gives a malformed size: '" + std::string(digits) + "'");
  }
  return size;
}

std::string receiveChunks(Channel& channel) {
  std::string body;
  while (true) {
    const std::string line = channel.readThrough("\r\n");
    const std::size_t size = parseSize(trimmed(line.substr(0, line.find(';'))), 16);
    if (size == 0) break;
    body += channel.readExactly(size);
    if (channel.readExactly(2) != "\r\n") throw ScriptFailure("a chunk of the request overruns");
  }
  while (channel.readThrough("\r\n") != "\r\n") {
  }
  return body;
}

}  // namespace

std::optional<std::string> RawRequest::header(std::string_view name) const {
  std::string_view rest(head);
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size() - 1);
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    const std::size_t colon = line.find(':');
    if (colon != std::string_view::npos && equalIgnoringCase(line.substr(0, colon), name)) {
      return std::string(trimmed(line.substr(colon + 1)));
    }
  }
  return std::nullopt;
}

std::string receiveRequestHead(Channel& channel) { return channel.readThrough("\r\n\r\n"); }

std::string receiveRequestBody(Channel& channel, const RawRequest& request) {
  const auto coding = request.header("Transfer-Encoding");
  if (coding && equalIgnoringCase(*coding, "chunked")) return receiveChunks(channel);
  const auto length = request.header("Content-Length");
  return length ? channel.readExactly(parseSize(*length, 10)) : std::string();
}

}  // namespace hcy::test
