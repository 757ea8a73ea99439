// SPDX-License-Identifier: Apache-2.0
//
// Progress on the last line of a terminal.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace hcy::tools {

// The line has no bar if `all`, the total, is 0 (not known) or less than `done`. It takes at most
// `width` columns, but at least one.
std::string progressLine(std::uint64_t done, std::uint64_t all, double seconds, std::size_t width);

// Shown on standard error, if that is a terminal.
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

// The same for calls whose results are lines. Shown only if the standard output is not a terminal,
// and at most ten times a second.
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
