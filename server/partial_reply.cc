// SPDX-License-Identifier: Apache-2.0

#include "partial_reply.h"

#include <algorithm>
#include <boost/beast/http/write.hpp>
#include <sstream>

namespace hcy::server {
namespace {

constexpr std::chrono::milliseconds kShortestPause{10};
// A slow reply takes no longer, however slow it is to be.
constexpr double kLongestSeconds = 1e6;

std::string headOf(const HttpResponse& message) {
  std::ostringstream head;
  head << message.base();
  return head.str();
}

}  // namespace

PartialReply::PartialReply(const Reply& reply)
    : delivery_(reply.delivery),
      body_(reply.message.body().data(), reply.message.body().size()),
      head_(headOf(reply.message)) {}

std::string_view PartialReply::due() const {
  const std::size_t allowed = allowedUntilNow();
  return body_.substr(sent_, allowed > sent_ ? allowed - sent_ : 0);
}

std::size_t PartialReply::allowedUntilNow() const {
  if (!isDripped()) return std::min<std::size_t>(delivery_.bytes, body_.size());
  const std::chrono::duration<double> time = Clock::now() - begin_;
  const double bytes = time.count() * delivery_.bytesPerSecond;
  return bytes < static_cast<double>(body_.size()) ? static_cast<std::size_t>(bytes) : body_.size();
}

PartialReply::Clock::time_point PartialReply::nextTime() const {
  const double seconds = static_cast<double>(sent_ + 1) / delivery_.bytesPerSecond;
  const std::chrono::duration<double> time(std::min(seconds, kLongestSeconds));
  return std::max(Clock::now() + kShortestPause,
                  begin_ + std::chrono::duration_cast<Clock::duration>(time));
}

}  // namespace hcy::server
