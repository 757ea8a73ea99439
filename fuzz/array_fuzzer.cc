// SPDX-License-Identifier: Apache-2.0
//
// Any bytes as a sequence of calls of array functions: each does what the public header says.

#include <cstddef>
#include <cstdint>

#include "array_program.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  hcy::fuzz::ArrayProgram(std::span(data, size)).run();
  return 0;
}
