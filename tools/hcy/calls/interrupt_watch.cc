// SPDX-License-Identifier: Apache-2.0

#include "calls/interrupt_watch.h"

#include <pthread.h>

#include <utility>

namespace hcy::tools {

InterruptWatch::InterruptWatch(std::function<void()> use) : use_(std::move(use)) {
  sigemptyset(&interrupt_);
  sigaddset(&interrupt_, SIGINT);
  pthread_sigmask(SIG_BLOCK, &interrupt_, &before_);
  thread_ = std::thread([this] { run(); });
}

InterruptWatch::~InterruptWatch() {
  isOver_ = true;
  ::pthread_kill(thread_.native_handle(), SIGINT);
  thread_.join();
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void InterruptWatch::run() {
  int signal = 0;
  ::sigwait(&interrupt_, &signal);
  if (isOver_) return;
  use_();
  static_cast<void>(std::signal(SIGINT, SIG_DFL));
  pthread_sigmask(SIG_UNBLOCK, &interrupt_, nullptr);
  static_cast<void>(std::raise(SIGINT));
}

}  // namespace hcy::tools
