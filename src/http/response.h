// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
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

  // Hands over the memory of a large body, which may be written, to an owner that releases it in
  // the end: the bytes stay where they are, and the response has none any more. Null, and nothing
  // has changed, for another body.
  virtual std::shared_ptr<void> takeBody() { return nullptr; }

  virtual std::uint32_t statusCode() const = 0;

  // What follows the status code in the first status line, line end included.
  virtual std::string statusMessage() const = 0;
  virtual ~Response() = default;
};

}  // namespace hcy
