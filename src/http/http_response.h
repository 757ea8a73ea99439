// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

#include "http/response.h"

namespace hcy {

// Filled piece by piece as a transfer delivers header lines and body.
class HttpResponse : public Response {
 public:
  // Refuses a body that is declared longer than the limit, in bytes.
  explicit HttpResponse(std::uint32_t responseSizeLimit);

  const char* bodyData() const override { return body_.get(); }
  std::uint64_t bodySize() const override { return bodyLength_; }
  std::uint32_t statusCode() const override { return statusCode_; }
  std::string statusMessage() const override { return statusMessage_; }

  // Returns false, and keeps nothing, when the declared length is over the limit or memory cannot
  // be had. The length received so far is not limited.
  bool appendBody(const char* bytes, std::size_t count);

  // Takes one line as it arrived, line end included. Throws boost::bad_lexical_cast for a
  // Content-Length that is no number.
  void addHeaderLine(std::string line);

  void setStatusCode(std::uint32_t code) { statusCode_ = code; }
  const std::vector<std::string>& headerLines() const { return headerLines_; }
  std::uint64_t declaredLength() const { return declaredLength_; }

 private:
  struct Free {
    void operator()(char* block) const { std::free(block); }
  };

  std::uint32_t statusCode_ = 0;
  std::string statusMessage_;
  std::unique_ptr<char, Free> body_;
  std::uint64_t bodyLength_ = 0;
  std::vector<std::string> headerLines_;
  std::uint64_t declaredLength_ = 0;
  std::uint32_t responseSizeLimit_;
};

}  // namespace hcy
