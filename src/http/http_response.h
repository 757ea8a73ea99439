// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "http/body_block.h"
#include "http/response.h"

namespace hcy {

// Filled piece by piece as a transfer delivers header lines and body.
class HttpResponse : public Response {
 public:
  // Refuses a body that is declared longer than the limit, in bytes. Takes the memory of the body
  // from the spare block, and returns it in the end.
  explicit HttpResponse(std::uint32_t responseSizeLimit,
                        std::shared_ptr<SpareBlock> spare = std::make_shared<SpareBlock>());
  ~HttpResponse() override { spare_->giveBack(std::move(body_)); }

  const char* bodyData() const override { return body_.data(); }
  std::uint64_t bodySize() const override { return bodyLength_; }
  std::shared_ptr<void> takeBody() override;
  std::uint32_t statusCode() const override { return statusCode_; }
  std::string statusMessage() const override { return statusMessage_; }

  // Counts the bytes, and keeps those within the limit: nothing behind it is ever read. Returns
  // false, and has done nothing, if the declared length is over the limit or there is no memory.
  bool appendBody(const char* bytes, std::size_t count);

  // Takes memory for a large body, which must not have begun, in the place of its own.
  void takeMemory(BodyBlock& memory);

  // Keeps no more than that from now on.
  void keepAtMost(std::size_t size) { mostKept_ = size; }

  // Takes one line as it arrived, line end included. Throws boost::bad_lexical_cast for a
  // Content-Length that is not a number.
  void addHeaderLine(std::string_view line);

  void setStatusCode(std::uint32_t code) { statusCode_ = code; }
  std::uint64_t declaredLength() const { return declaredLength_; }

 private:
  std::uint32_t statusCode_ = 0;
  std::string statusMessage_;
  bool hasStatusLine_ = false;
  std::shared_ptr<SpareBlock> spare_;
  BodyBlock body_;
  std::uint64_t bodyLength_ = 0;
  std::uint64_t mostKept_;
  std::uint64_t declaredLength_ = 0;
  std::uint32_t responseSizeLimit_;
};

}  // namespace hcy
