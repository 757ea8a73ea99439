// SPDX-License-Identifier: Apache-2.0
//
// How far something has come, on the last line of a terminal.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace hcy::tools {

// No longer than `width` columns, of which one is taken at the least.
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

}  // namespace hcy::tools
