// SPDX-License-Identifier: Apache-2.0
//
// How long a client may keep the server waiting.

#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace hcy::server {

// All functions are called, and onLate is, by the executor, one at a time.
class TransferDeadline {
 public:
  explicit TransferDeadline(const boost::asio::any_io_executor& executor) : timer_(executor) {}

  // To be called first: what happens at a deadline, if the owner, which holds this, lives then.
  void watch(std::weak_ptr<void> owner, std::function<void()> onLate);

  // A message begins to be sent. The client may pause that long, but more than once only as long as
  // it is fast on the whole.
  void beginTransfer(double patienceSeconds);
  // So many more bytes of it have been sent.
  void continueTransfer(std::size_t count);

  // The client may take that long, whatever it sends.
  void setIn(std::chrono::seconds time) { set(Clock::now() + time); }
  void clear() { set(Clock::time_point::max()); }

 private:
  using Clock = std::chrono::steady_clock;

  void set(Clock::time_point deadline);
  void startTimer();
  void check();

  boost::asio::steady_timer timer_;
  bool isTimed_ = false;
  Clock::time_point deadline_ = Clock::time_point::max();
  Clock::time_point begin_;
  Clock::duration patience_{};
  std::size_t transferred_ = 0;
  std::weak_ptr<void> owner_;
  std::function<void()> onLate_;
};

}  // namespace hcy::server
