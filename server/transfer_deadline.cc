// SPDX-License-Identifier: Apache-2.0

#include "transfer_deadline.h"

#include <algorithm>
#include <utility>

namespace hcy::server {
namespace {

// A transfer that is slower on the whole is given up.
constexpr std::size_t kSlowestBytesPerSecond = std::size_t{1} << 20;

}  // namespace

void TransferDeadline::watch(std::weak_ptr<void> owner, std::function<void()> onLate) {
  owner_ = std::move(owner);
  onLate_ = std::move(onLate);
}

void TransferDeadline::beginTransfer(double patienceSeconds) {
  patience_ =
      std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(patienceSeconds));
  begin_ = Clock::now();
  transferred_ = 0;
  continueTransfer(0);
}

void TransferDeadline::continueTransfer(std::size_t count) {
  transferred_ += count;
  const auto credit = std::chrono::seconds(transferred_ / kSlowestBytesPerSecond);
  set(std::min(Clock::now(), begin_ + credit) + patience_);
}

// The timer is not started again each time: that would cost more than reading does.
void TransferDeadline::set(Clock::time_point deadline) {
  deadline_ = deadline;
  if (deadline < timer_.expiry() || !isTimed_) startTimer();
}

void TransferDeadline::startTimer() {
  isTimed_ = deadline_ != Clock::time_point::max();
  if (!isTimed_) return;
  timer_.expires_at(deadline_);
  timer_.async_wait([this, owner = owner_](boost::system::error_code ec) {
    if (const auto alive = owner.lock(); alive && !ec) check();
  });
}

void TransferDeadline::check() {
  if (Clock::now() >= deadline_) return onLate_();
  startTimer();
}

}  // namespace hcy::server
