// SPDX-License-Identifier: Apache-2.0
//
// Memory for the messages of all calls: bodies that arrive, arguments, outputs, and replies until
// the client has read them. Two bytes of a request can stand for an array that takes hundreds, so
// what all calls together may take is bounded: at the bound an allocation throws std::bad_alloc,
// and the one call fails instead of the system ending the program.

#pragma once

#include <google/protobuf/arena.h>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "budget.h"

namespace hcy::server {

// That much of each message is not counted, so that small calls succeed while large ones have
// taken all.
inline constexpr std::size_t kUncountedMemory = std::size_t{64} << 10;

Budget& messageMemory();

// Room for a few of the longest bodies, but never more than half of what the machine has.
std::size_t messageMemoryLimitFor(std::uint64_t maxBody);

// An arena whose blocks count, but for the first one.
class BoundedArena {
 public:
  BoundedArena();
  google::protobuf::Arena& operator*() { return arena_; }

 private:
  std::unique_ptr<char[]> firstBlock_;
  google::protobuf::Arena arena_;
};

}  // namespace hcy::server
