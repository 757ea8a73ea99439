// SPDX-License-Identifier: Apache-2.0
//
// Takes the terminal from the process and the input from its standard input, for whoever would ask
// a person there. The terminal does not come back: each test runs in a process of its own.

#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "support/loopback.h"

namespace hcy::test {

class WithoutTerminal {
 public:
  WithoutTerminal() : input_(::dup(STDIN_FILENO)) {
    ::signal(SIGHUP, SIG_IGN);  // comes with it, for the leader of a session
    const FileDescriptor terminal(::open("/dev/tty", O_RDWR | O_CLOEXEC));
    if (terminal.isOpen()) ::ioctl(terminal.get(), TIOCNOTTY);
    const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    ::dup2(nothing.get(), STDIN_FILENO);
  }
  WithoutTerminal(const WithoutTerminal&) = delete;
  WithoutTerminal& operator=(const WithoutTerminal&) = delete;
  ~WithoutTerminal() { ::dup2(input_.get(), STDIN_FILENO); }

 private:
  FileDescriptor input_;
};

}  // namespace hcy::test
