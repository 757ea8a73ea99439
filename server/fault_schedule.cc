// SPDX-License-Identifier: Apache-2.0

#include "fault_schedule.h"

#include <fnmatch.h>

#include <charconv>
#include <cmath>
#include <utility>

namespace hcy::server {
namespace {

constexpr double kLongestDelay = 3600;
constexpr double kFastestDrip = 1e12;

// The number that all of the text is; nothing if it is none or negative.
template <class Number>
std::optional<Number> numberFrom(std::string_view text) {
  Number number{};
  const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failed != std::errc() || end != text.data() + text.size() || !(number >= 0)) {
    return std::nullopt;
  }
  return number;
}

bool takeEnd(std::string_view& text, std::string_view end) {
  if (!text.ends_with(end)) return false;
  text.remove_suffix(end.size());
  return true;
}

bool takeBeginning(std::string_view& text, std::string_view beginning) {
  if (!text.starts_with(beginning)) return false;
  text.remove_prefix(beginning.size());
  return true;
}

std::chrono::nanoseconds delayFrom(std::string_view text) {
  double unit = 0;
  if (takeEnd(text, "ms")) {
    unit = 1e-3;
  } else if (takeEnd(text, "s")) {
    unit = 1;
  }
  const auto number = numberFrom<double>(text);
  if (unit == 0 || !number || *number * unit > kLongestDelay) {
    throw BadFault("a delay is 2s, 0.5s or 200ms, and one hour at most");
  }
  return std::chrono::nanoseconds(std::llround(*number * unit * 1e9));
}

double speedFrom(std::string_view text) {
  double unit = 1;
  const bool isSpeed = takeEnd(text, "B/s");
  if (takeEnd(text, "k")) unit = 1e3;
  if (takeEnd(text, "M")) unit = 1e6;
  const auto number = numberFrom<double>(text);
  if (!isSpeed || !number || *number <= 0 || *number > kFastestDrip) {
    throw BadFault("a speed is 10B/s, 1.5kB/s or 2MB/s");
  }
  return *number * unit;
}

// An identifier is words with colons between them; what follows is the message, in which a blank
// stands behind a colon.
void setError(Fault& fault, std::string_view text) {
  constexpr std::string_view letters =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
  std::size_t begin = 0;
  for (;;) {
    const std::size_t end = text.find_first_not_of(letters, begin);
    if (end == begin || end == std::string_view::npos || text[end] != ':') break;
    if (text.substr(end + 1).starts_with(' ')) break;
    begin = end + 1;
  }
  if (begin == 0 || begin == text.size()) {
    throw BadFault(
        "an error is error:IDENTIFIER:MESSAGE, such as error:shop:closed:Come back later");
  }
  fault.identifier = text.substr(0, begin - 1);
  fault.message = text.substr(begin);
}

Fault faultFrom(std::string_view text) {
  Fault fault;
  fault.text = text;
  if (takeBeginning(text, "delay:")) {
    fault.kind = Fault::Kind::kDelay;
    fault.delay = delayFrom(text);
  } else if (takeBeginning(text, "truncate:")) {
    fault.kind = Fault::Kind::kTruncate;
    const auto bytes = numberFrom<std::uint64_t>(text);
    if (!bytes) throw BadFault("truncate is followed by a number of bytes, such as truncate:1000");
    fault.bytes = *bytes;
  } else if (takeBeginning(text, "drip:")) {
    fault.kind = Fault::Kind::kDrip;
    fault.bytesPerSecond = speedFrom(text);
  } else if (takeBeginning(text, "error:")) {
    fault.kind = Fault::Kind::kError;
    setError(fault, text);
  } else if (text == "reset" || text == "close" || text == "html") {
    fault.kind = text == "reset"   ? Fault::Kind::kReset
                 : text == "close" ? Fault::Kind::kClose
                                   : Fault::Kind::kHtml;
  } else if (const auto status = numberFrom<unsigned>(text);
             status && *status >= 200 && *status <= 599) {
    if (*status == 204 || *status == 304) {
      throw BadFault(fault.text + " cannot be a fault, since such a reply has no body");
    }
    fault.status = *status;
  } else {
    throw BadFault(fault.text +
                   " is not a fault: an HTTP status, delay:2s, reset, close, truncate:1000, "
                   "drip:10B/s, html or error:IDENTIFIER:MESSAGE");
  }
  return fault;
}

// Takes "@3" or "@10%" off the end, if it is there.
void takeSelection(std::string_view& what, FaultRule& rule) {
  const std::size_t sign = what.rfind('@');
  if (sign == std::string_view::npos) return;
  std::string_view selection = what.substr(sign + 1);
  if (takeEnd(selection, "%")) {
    const auto percent = numberFrom<double>(selection);
    if (!percent || *percent > 100) throw BadFault("a share of the calls is from @0% to @100%");
    rule.share = *percent / 100;
  } else if (const auto count = numberFrom<std::uint64_t>(selection)) {
    rule.first = *count;
  } else {
    return;
  }
  what = what.substr(0, sign);
}

// A number from 0 to 1 that depends on these three alone.
double chance(std::uint64_t seed, std::uint64_t rule, std::uint64_t call) {
  std::uint64_t x = seed * 0x9E3779B97F4A7C15 + rule * 0xD1B54A32D192ED03 + call;
  for (int i = 0; i < 3; ++i) {
    x += 0x9E3779B97F4A7C15;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
    x ^= x >> 31;
  }
  return static_cast<double>(x >> 11) * 0x1p-53;
}

}  // namespace

FaultRule faultRuleFrom(const std::string& text) {
  const std::size_t sign = text.find('=');
  if (sign == std::string::npos || sign == 0) throw BadFault(text + " is not PATTERN=WHAT");
  FaultRule rule;
  rule.pattern = text.substr(0, sign);
  if (rule.pattern.starts_with('/')) rule.pattern.erase(0, 1);
  std::string_view what = std::string_view(text).substr(sign + 1);
  takeSelection(what, rule);
  rule.fault = faultFrom(what);
  return rule;
}

FaultSchedule::FaultSchedule(std::vector<FaultRule> rules, std::uint64_t seed) : seed_(seed) {
  for (FaultRule& rule : rules) rules_.push_back({std::move(rule)});
}

bool FaultSchedule::hits(Counted& counted, std::size_t index) const {
  const std::uint64_t call = counted.calls++;
  if (call >= counted.rule.first) return false;
  return counted.rule.share >= 1 || chance(seed_, index, call) < counted.rule.share;
}

ScheduledFault FaultSchedule::next(std::string_view function) {
  ScheduledFault scheduled;
  if (rules_.empty()) return scheduled;
  const std::string name(function);
  const std::lock_guard lock(mutex_);
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    Counted& counted = rules_[i];
    if (::fnmatch(counted.rule.pattern.c_str(), name.c_str(), 0) != 0) continue;
    const Fault& fault = counted.rule.fault;
    if (!hits(counted, i)) continue;
    if (fault.kind == Fault::Kind::kDelay) {
      scheduled.delay += fault.delay;
    } else if (scheduled.fault == nullptr) {
      scheduled.fault = &fault;
    } else {
      continue;
    }
    scheduled.text += (scheduled.text.empty() ? "" : ", ") + fault.text;
  }
  return scheduled;
}

}  // namespace hcy::server
