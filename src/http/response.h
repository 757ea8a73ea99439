// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

namespace hcy {

// The answer to a request.
class Response {
 public:
  Response() = default;
  Response(const Response&) = delete;
  Response& operator=(const Response&) = delete;

  virtual const char* bodyData() const = 0;    // never null; what was kept of the body
  virtual std::uint64_t bodySize() const = 0;  // of all of it
  virtual std::uint32_t statusCode() const = 0;

  // What follows the status code in the first status line, line end included.
  virtual std::string statusMessage() const = 0;
  virtual ~Response() = default;
};

}  // namespace hcy
