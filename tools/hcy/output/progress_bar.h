// SPDX-License-Identifier: Apache-2.0
//
// How far something has come, on the last line of a terminal.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace hcy::tools {

// Without a bar if it is not known, by 0, how many there are. No longer than `width` columns, of
// which one is taken at the least.
std::string progressLine(std::uint64_t done, std::uint64_t all, double seconds, std::size_t width);

// On standard error, when that is a terminal.
class ProgressBar {
 public:
  explicit ProgressBar(std::uint64_t all);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() { clear(); }

  void show(std::uint64_t done, double seconds);
  void clear();

 private:
  std::uint64_t all_;
  bool isShown_ = false;
  bool isTerminal_;
};

// The same for calls whose results are lines, 0 being a number of them that is not known. Shown
// only if the lines go elsewhere, and ten times a second at the most.
class CallProgress {
 public:
  explicit CallProgress(std::uint64_t all);

  void show(std::uint64_t done);
  void clear() { bar_.clear(); }

 private:
  using Clock = std::chrono::steady_clock;

  ProgressBar bar_;
  bool isShown_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point drawn_ = start_;
};

}  // namespace hcy::tools
