// SPDX-License-Identifier: Apache-2.0

#include "output/progress_bar.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "output/terminal.h"
#include "text/text.h"

namespace hcy::tools {

std::string progressLine(std::uint64_t done, std::uint64_t all, double seconds, std::size_t width) {
  // A file that grows while it is read has more lines than were counted.
  if (done > all) all = 0;
  const auto perSecond =
      static_cast<std::uint64_t>(seconds > 0 ? static_cast<double>(done) / seconds : 0);
  const std::string numbers = " " + std::to_string(done) +
                              (all == 0 ? "" : "/" + std::to_string(all)) + "  " +
                              std::to_string(perSecond) + " calls/s";
  constexpr std::size_t longest = 40;
  const std::size_t room = width > numbers.size() + 2 ? width - numbers.size() - 2 : 0;
  const std::size_t length = std::min(room, longest);
  if (length == 0 || all == 0)
    return cutToWidth(numbers.substr(1), std::max<std::size_t>(width, 1));
  const auto filled = static_cast<std::size_t>(
      static_cast<double>(length) * static_cast<double>(done) / static_cast<double>(all));
  return "[" + std::string(filled, '#') + std::string(length - filled, '.') + "]" + numbers;
}

ProgressBar::ProgressBar(std::uint64_t all) : all_(all), isTerminal_(isTerminal(STDERR_FILENO)) {}

void ProgressBar::show(std::uint64_t done, double seconds) {
  if (!isTerminal_) return;
  // The last column stays free: some terminals would go on to the next line.
  std::cerr << "\r" + progressLine(done, all_, seconds, widthOf(STDERR_FILENO) - 1) + "\033[K"
            << std::flush;
  isShown_ = true;
}

void ProgressBar::clear() {
  if (isShown_) std::cerr << "\r\033[K" << std::flush;
  isShown_ = false;
}

CallProgress::CallProgress(std::uint64_t all) : bar_(all), isShown_(!isTerminal(STDOUT_FILENO)) {}

void CallProgress::show(std::uint64_t done) {
  if (!isShown_ || Clock::now() - drawn_ < std::chrono::milliseconds(100)) return;
  drawn_ = Clock::now();
  bar_.show(done, std::chrono::duration<double>(drawn_ - start_).count());
}

}  // namespace hcy::tools
