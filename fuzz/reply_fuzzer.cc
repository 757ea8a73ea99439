// SPDX-License-Identifier: Apache-2.0
//
// Any bytes as the body of a reply.

#include <cstdint>
#include <string>

#include "reply_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  hcy::fuzz::checkReply({reinterpret_cast<const char*>(data), size});
  return 0;
}
