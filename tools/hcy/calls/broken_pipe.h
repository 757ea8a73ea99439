// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <csignal>
#include <system_error>

namespace hcy::tools {

// Ignores SIGPIPE until it is destroyed: with several transfers at a time, libcurl does not do this
// reliably.
class IgnoredBrokenPipes {
 public:
  IgnoredBrokenPipes() : before_(std::signal(SIGPIPE, SIG_IGN)) {}
  IgnoredBrokenPipes(const IgnoredBrokenPipes&) = delete;
  IgnoredBrokenPipes& operator=(const IgnoredBrokenPipes&) = delete;
  ~IgnoredBrokenPipes() { static_cast<void>(std::signal(SIGPIPE, before_)); }

  // Ends the program as the write would have ended it, if this is the failure of a write to a pipe
  // that nobody reads.
  void endIfBroken(const std::system_error& failure) const {
    if (failure.code() != std::errc::broken_pipe) return;
    static_cast<void>(std::signal(SIGPIPE, before_));
    static_cast<void>(std::raise(SIGPIPE));
  }

 private:
  void (*before_)(int);
};

}  // namespace hcy::tools
