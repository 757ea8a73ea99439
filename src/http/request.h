// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>

#include "http/body_block.h"
#include "http/response.h"

namespace hcy {

// One HTTP POST.
class Request {
 public:
  Request() = default;
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;

  // The bytes are not copied: they must stay unchanged until perform() returns.
  virtual void setBody(const void* data, std::uint64_t size) = 0;

  // The memory that holds the body. The reply may take it once the body has been sent; then the
  // request cannot be performed again.
  virtual void lendMemory(BodyBlock& /*memory*/) {}

  // Sends the request and waits for the whole answer, whatever its status; throws when there is
  // none.
  virtual std::unique_ptr<Response> perform() = 0;
  virtual ~Request() = default;
};

}  // namespace hcy
