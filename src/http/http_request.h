// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "http/body_block.h"
#include "http/request.h"
#include "http/transfer_handle.h"

namespace hcy {

// A POST on the transfer handle of the client that made it.
class HttpRequest : public Request {
 public:
  // A header without a value leaves out the one that libcurl would add of its own: no wait for an
  // interim 100 (Continue).
  static constexpr const char* headerLines[] = {"Content-Type: application/x-google-protobuf",
                                                "User-Agent: Halcyon C client", "Expect: "};

  // The spare block is where the memory of the reply's body comes from and goes to.
  HttpRequest(TransferHandle handle, std::string url, std::uint32_t responseSizeLimit,
              std::shared_ptr<SpareBlock> spareReply);

  void setBody(const void* data, std::uint64_t size) override;
  void lendMemory(BodyBlock& memory) override { lent_ = &memory; }

  // Throws std::runtime_error with libcurl's text when the transfer fails, and what taking a
  // header line throws. The handle stays usable.
  std::unique_ptr<Response> perform() override;

 private:
  TransferHandle handle_;
  std::string url_;
  std::uint64_t bodySize_ = 0;
  BodyBlock* lent_ = nullptr;
  std::uint32_t responseSizeLimit_;
  std::shared_ptr<SpareBlock> spareReply_;
};

}  // namespace hcy
