// SPDX-License-Identifier: Apache-2.0
//
// Any bytes as header lines and body pieces of a reply: a declared length is a number or the
// conversion error, and a body is refused or kept up to the limit.

#include <algorithm>
#include <boost/lexical_cast.hpp>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "http/http_response.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint32_t limit = 1000;
  hcy::HttpResponse response(limit);
  std::string body;
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size() - 1) + 1;
    const std::string line(rest.substr(0, end));
    rest.remove_prefix(end);
    try {
      response.addHeaderLine(line);
    } catch (const boost::bad_lexical_cast&) {
      if (line.find("Content-Length:") == std::string::npos) std::abort();
    }
    const bool accepted = response.appendBody(line.data(), line.size());
    if (accepted != (response.declaredLength() <= limit)) std::abort();
    if (accepted) body += line;
    // Bytes behind the limit are counted and not kept.
    const std::size_t kept = std::min<std::size_t>(body.size(), limit);
    if (response.bodySize() != body.size()) std::abort();
    if (body.compare(0, kept, response.bodyData(), kept) != 0) std::abort();
  }
  return response.statusMessage().size() > size ? std::abort(), 1 : 0;
}
