// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>

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

  // Sends the request and waits for the whole answer, whatever its status; throws when there is
  // none.
  virtual std::unique_ptr<Response> perform() = 0;
  virtual ~Request() = default;
};

}  // namespace hcy
