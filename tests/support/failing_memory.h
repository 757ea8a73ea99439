// SPDX-License-Identifier: Apache-2.0
//
// Memory that runs out. A program linked with failing_memory.cc and the linker options of
// hcy_let_memory_fail() allocates through it in all its own objects, not in shared libraries.

#pragma once

#include <cstddef>

namespace hcy::test {

// While it lives, one allocation of this thread fails: the one after `working` others.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t working);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  // Whether it came to that.
  bool hasFailed() const;
};

}  // namespace hcy::test
