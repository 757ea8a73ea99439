// SPDX-License-Identifier: Apache-2.0
//
// A reply that is not sent as a whole: the header, which promises all of the body, and then the
// body up to some length, or slowly.

#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "http_replies.h"

namespace hcy::server {

// The reply lives longer.
class PartialReply {
 public:
  using Clock = std::chrono::steady_clock;

  explicit PartialReply(const Reply& reply);

  const std::string& head() const { return head_; }

  // What of the body may be sent now; perhaps nothing.
  std::string_view due() const;
  void countSent(std::size_t count) { sent_ += count; }

  bool isWhole() const { return sent_ == body_.size(); }
  // Whether nothing more comes, although the body is not whole.
  bool isCut() const { return !isDripped() && sent_ >= delivery_.bytes && !isWhole(); }

  // When more of a slow one may be sent.
  Clock::time_point nextTime() const;

 private:
  bool isDripped() const { return delivery_.way == Delivery::Way::kDripped; }
  std::size_t allowedUntilNow() const;

  const Delivery& delivery_;
  const std::string_view body_;
  const std::string head_;
  const Clock::time_point begin_ = Clock::now();
  std::size_t sent_ = 0;
};

}  // namespace hcy::server
