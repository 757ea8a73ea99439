// SPDX-License-Identifier: Apache-2.0

#include "soak/figures.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace hcy::soak {
namespace {

constexpr std::size_t kSamples = 100;
constexpr double kMiB = 1024.0 * 1024.0;

double percentOver(std::size_t value, std::size_t reference) {
  return 100.0 * (static_cast<double>(value) / static_cast<double>(reference) - 1.0);
}

}  // namespace

std::size_t residentMemory() {
  std::ifstream statm("/proc/self/statm");
  std::size_t total = 0, resident = 0;
  statm >> total >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  // One of them is that of the directory.
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors))) - 1;
}

Figures::Figures(std::string phase, std::size_t calls) : phase_(std::move(phase)), calls_(calls) {
  // To look takes pages of its own at first.
  residentMemory();
  openDescriptors();
}

void Figures::count() {
  ++done_;
  const std::size_t warm = std::max<std::size_t>(calls_ / 10, 1);
  const bool isSample = done_ == calls_ || done_ % std::max<std::size_t>(calls_ / kSamples, 1) == 0;
  if (done_ < warm || (done_ != warm && !isSample)) return;
  mostMemory_ = std::max(mostMemory_, residentMemory());
  mostDescriptors_ = std::max(mostDescriptors_, openDescriptors());
  if (done_ == warm) {
    warmMemory_ = mostMemory_;
    warmDescriptors_ = mostDescriptors_;
  }
}

bool Figures::areFlat(std::size_t percent) const {
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
  const double growth = percentOver(mostMemory_, warmMemory_);
  std::printf(
      "%s: %zu calls in %.1f s (%.0f per second)\n"
      "  resident memory: %.2f MiB after the warm-up, at most %.2f MiB from then on (%+.2f %%)\n"
      "  open descriptors: %zu after the warm-up, at most %zu from then on\n",
      phase_.c_str(), done_, time.count(), static_cast<double>(done_) / time.count(),
      static_cast<double>(warmMemory_) / kMiB, static_cast<double>(mostMemory_) / kMiB, growth,
      warmDescriptors_, mostDescriptors_);
  std::fflush(stdout);
  return growth <= static_cast<double>(percent) && mostDescriptors_ <= warmDescriptors_;
}

}  // namespace hcy::soak
