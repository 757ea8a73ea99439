// SPDX-License-Identifier: Apache-2.0
//
// Replies in all the encodings that mean the same, and in some that mean nothing.

#include <cstddef>
#include <cstdint>

#include "reply_check.h"
#include "reply_program.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  hcy::fuzz::checkReply(hcy::fuzz::ReplyProgram({data, size}).reply());
  return 0;
}
