// SPDX-License-Identifier: Apache-2.0
//
// Failures on demand: which calls fail, or are slow, and how.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace hcy::server {

class BadFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Fault {
  enum class Kind { kStatus, kDelay, kReset, kClose, kTruncate, kDrip, kHtml, kError };
  Kind kind = Kind::kStatus;
  // As it was asked for.
  std::string text;
  unsigned status = 0;                // kStatus
  std::chrono::nanoseconds delay{0};  // kDelay
  std::uint64_t bytes = 0;            // kTruncate
  double bytesPerSecond = 0;          // kDrip
  std::string identifier, message;    // kError
};

struct FaultRule {
  // Of function names, with * and ? as in file names.
  std::string pattern;
  Fault fault;
  // Of the calls that match: the first so many, and of those a share from 0 to 1.
  std::uint64_t first = UINT64_MAX;
  double share = 1;
};

// "PATTERN=WHAT", behind which "@3" or "@10%" may stand. Throws BadFault.
FaultRule faultRuleFrom(const std::string& text);

// What happens to one call: it waits so long, and then this, if anything.
struct ScheduledFault {
  std::chrono::nanoseconds delay{0};
  const Fault* fault = nullptr;
  // What happens, for the log; empty for nothing.
  std::string text;
};

// Which of the calls of a rule fail depends on nothing but the seed and their number. All functions
// may be called by several threads at once.
class FaultSchedule {
 public:
  FaultSchedule(std::vector<FaultRule> rules, std::uint64_t seed);

  // For the next call of this function. Delays of several rules add up; of other faults, the first
  // one happens.
  ScheduledFault next(std::string_view function);

 private:
  struct Counted {
    FaultRule rule;
    std::uint64_t calls = 0;
  };

  bool hits(Counted& counted, std::size_t index) const;

  const std::uint64_t seed_;
  std::mutex mutex_;
  std::vector<Counted> rules_;
};

}  // namespace hcy::server
