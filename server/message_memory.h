// SPDX-License-Identifier: Apache-2.0
//
// The memory for messages of all calls: bodies that arrive, arguments, outputs, and replies until
// the client has read them. Two bytes of a request can stand for an array that takes hundreds, so
// what all calls together may take is bounded: at the bound std::bad_alloc is thrown, and the one
// call fails instead of the system ending the program.

#pragma once

#include <cstddef>
#include <cstdint>

#include "budget.h"

namespace hcy::server {

// That much of each message is not counted, so that small calls succeed while large ones have
// taken all.
inline constexpr std::size_t kUncountedMemory = std::size_t{64} << 10;

Budget& messageMemory();

// Room for a few of the longest bodies, but never more than half of what the machine has.
std::size_t messageMemoryLimitFor(std::uint64_t maxBody);

// What one owner has taken of it; returned when the share is destroyed.
class MessageMemoryShare {
 public:
  // Counts what is about to be allocated, beside what has been counted before. Throws
  // std::bad_alloc if calls take too much already.
  void count(std::size_t bytes);

  // The same for all that has been allocated and is about to be. Less than before changes nothing.
  void countTo(std::size_t bytes);

 private:
  BudgetShare share_{messageMemory()};
  std::size_t counted_ = 0;
};

}  // namespace hcy::server
