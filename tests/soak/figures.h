// SPDX-License-Identifier: Apache-2.0
//
// What the process takes of the machine, over a long run.

#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace hcy::soak {

// Bytes of memory that are resident now.
std::size_t residentMemory();

// Descriptors that are open now.
std::size_t openDescriptors();

// The figures of one phase of `calls` calls: the first tenth warms up, and from then on nothing may
// grow.
class Figures {
 public:
  Figures(std::string phase, std::size_t calls);

  // After each call, with nothing of it left.
  void count();

  // Prints the figures. Whether memory stayed within so many percent of what it was after the
  // warm-up, and no descriptor more is open than then.
  bool areFlat(std::size_t percent) const;

 private:
  const std::string phase_;
  const std::size_t calls_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::size_t done_ = 0;
  std::size_t warmMemory_ = 0, mostMemory_ = 0;
  std::size_t warmDescriptors_ = 0, mostDescriptors_ = 0;
};

}  // namespace hcy::soak
