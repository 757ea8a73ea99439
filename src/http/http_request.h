// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "http/request.h"
#include "http/transfer_handle.h"

namespace hcy {

// A POST on the transfer handle of the client that made it.
class HttpRequest : public Request {
 public:
  HttpRequest(TransferHandle handle, std::string url, std::uint32_t responseSizeLimit);

  void setBody(const void* data, std::uint64_t size) override;

  // Throws std::runtime_error with libcurl's text when the transfer fails, and what taking a
  // header line throws. The handle stays usable.
  std::unique_ptr<Response> perform() override;

  const std::vector<std::string>& headerLines() const { return headerLines_; }

 private:
  TransferHandle handle_;
  std::string url_;
  std::vector<std::string> headerLines_;
  std::uint32_t responseSizeLimit_;
};

}  // namespace hcy
