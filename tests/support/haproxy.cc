// SPDX-License-Identifier: Apache-2.0
#include "haproxy.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace hcy::test {
namespace {

// Becomes HAProxy, which takes over the listening socket. Runs between fork and exec: no memory is
// allocated here.
[[noreturn]] void becomeHAProxy(char* const* arguments, char* const* environment, int listener,
                                int log, pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  ::fcntl(listener, F_SETFD, 0);
  ::dup2(log, STDERR_FILENO);
  if (::getppid() == parent) ::execve(HCY_HAPROXY, arguments, environment);
  ::_exit(127);
}

}  // namespace

// The socket listens before HAProxy runs: clients wait in its queue until HAProxy takes them, and
// are refused if HAProxy ends instead.
HAProxy::HAProxy(const std::string& configurationFile, std::uint16_t firstPort,
                 std::uint16_t secondPort) {
  const FileDescriptor listener = listenOn(port_.number(), 64);
  const FileDescriptor log(
      ::open(directory_.file("log").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  std::string program = HCY_HAPROXY, db = "-db", q = "-q", f = "-f", file = configurationFile;
  const std::array<char*, 6> arguments = {program.data(), db.data(),   q.data(),
                                          f.data(),       file.data(), nullptr};
  std::string listen = "LISTENER=fd@" + std::to_string(listener.get());
  std::string admin = "ADMIN_SOCKET=" + directory_.file("admin");
  std::string first = "FIRST_PORT=" + std::to_string(firstPort);
  std::string second = "SECOND_PORT=" + std::to_string(secondPort);
  const std::array<char*, 5> environment = {listen.data(), admin.data(), first.data(),
                                            second.data(), nullptr};
  const pid_t parent = ::getpid();
  pid_ = ::fork();
  if (pid_ < 0) throw std::system_error(errno, std::system_category(), "fork");
  if (pid_ == 0) {
    becomeHAProxy(arguments.data(), environment.data(), listener.get(), log.get(), parent);
  }
}

HAProxy::~HAProxy() {
  ::kill(pid_, SIGTERM);
  int status = 0;
  while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) continue;
  // The signal itself ends a HAProxy that has not come to the point of taking it.
  if (status == 0 || (WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM)) return;
  std::fprintf(stderr, "HAProxy ended with status %d.\n%s", status,
               contentsOf(directory_.file("log")).c_str());
  std::abort();
}

}  // namespace hcy::test
