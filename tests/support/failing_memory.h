// SPDX-License-Identifier: Apache-2.0
//
// Memory that runs out, and memory that is counted. In a program that failing_memory.cc is part
// of, every malloc, calloc, realloc, aligned allocation and operator new goes through it: its own,
// and those of all shared libraries.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hcy::test {

// How long memory stays exhausted.
enum class Exhaustion { OneAllocation, FromThenOn };

// While it lives, allocations of this thread fail: the one after `working` others, or all from that
// one on.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t working,
                             Exhaustion exhaustion = Exhaustion::OneAllocation);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  // Whether it came to that.
  bool hasFailed() const;

  // The functions that were running when the first of them failed, innermost first, by the names
  // of the dynamic symbol tables, each with the file that it is in.
  static std::vector<std::string> callers();
};

// While it lives, the blocks that this thread allocates are noted, until whoever frees them.
class BlockWatch {
 public:
  BlockWatch();
  BlockWatch(const BlockWatch&) = delete;
  BlockWatch& operator=(const BlockWatch&) = delete;
  ~BlockWatch();

  // How many have not been freed.
  std::size_t count() const;

  // The blocks that have not been freed, for a person: sizes, and where they were allocated.
  std::string list() const;

  // Takes what has not been freed for lost: nobody shall report it again.
  void giveUp();
};

}  // namespace hcy::test
