// SPDX-License-Identifier: Apache-2.0

#include "command_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>

namespace hcy::server {
namespace {

using std::chrono::steady_clock;

constexpr std::size_t kLongestLine = std::size_t{64} << 20;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::system_category(), what);
}

struct Pipe {
  Pipe() {
    if (::pipe2(ends, O_CLOEXEC) != 0) fail("a pipe for a command");
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    for (const int end : ends) {
      if (end >= 0) ::close(end);
    }
  }
  int take(int index) { return std::exchange(ends[index], -1); }
  int ends[2] = {-1, -1};
};

struct FileActions {
  FileActions() { ::posix_spawn_file_actions_init(&actions); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions); }
  posix_spawn_file_actions_t actions{};
};

struct Attributes {
  Attributes() { ::posix_spawnattr_init(&attributes); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { ::posix_spawnattr_destroy(&attributes); }
  posix_spawnattr_t attributes{};
};

pid_t spawn(const std::string& command, int input, int output) {
  FileActions files;
  ::posix_spawn_file_actions_adddup2(&files.actions, input, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&files.actions, output, STDOUT_FILENO);
  // A connection would stay open as long as the command has it, too.
  ::posix_spawn_file_actions_addclosefrom_np(&files.actions, STDERR_FILENO + 1);
  Attributes own;
  sigset_t none, usual;
  ::sigemptyset(&none);
  ::sigemptyset(&usual);
  for (const int number : {SIGPIPE, SIGINT, SIGTERM}) ::sigaddset(&usual, number);
  ::posix_spawnattr_setsigmask(&own.attributes, &none);
  ::posix_spawnattr_setsigdefault(&own.attributes, &usual);
  ::posix_spawnattr_setpgroup(&own.attributes, 0);
  ::posix_spawnattr_setflags(
      &own.attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  std::string words[] = {"sh", "-c", command};
  char* const argv[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
  pid_t pid = -1;
  errno = ::posix_spawn(&pid, "/bin/sh", &files.actions, &own.attributes, argv, environ);
  if (errno != 0) fail("a command");
  return pid;
}

int millisecondsUntil(steady_clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - steady_clock::now());
  return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 1'000'000));
}

}  // namespace

CommandProcess::CommandProcess(const std::string& command) {
  Pipe input, output;
  pid_ = spawn(command, input.ends[0], output.ends[1]);
  input_ = input.take(1);
  output_ = output.take(0);
  // Neither may block while the other end waits for the opposite.
  ::fcntl(input_, F_SETFL, O_NONBLOCK);
  ::fcntl(output_, F_SETFL, O_NONBLOCK);
}

CommandProcess::~CommandProcess() {
  ::close(input_);
  ::close(output_);
  signal(SIGKILL);
  if (pid_ > 0) {
    while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) continue;
  }
}

bool CommandProcess::isReady() {
  pollfd unread{output_, POLLIN, 0};
  return ::poll(&unread, 1, 0) == 0 && !hasEnded();
}

ByteBuffer CommandProcess::ask(std::string_view line, std::chrono::duration<double> patience) {
  const auto deadline =
      steady_clock::now() + std::chrono::duration_cast<steady_clock::duration>(patience);
  ByteBuffer answer;
  char bytes[64 << 10];
  for (;;) {
    pollfd ends[] = {{output_, POLLIN, 0}, {input_, POLLOUT, 0}};
    const int ready = ::poll(ends, line.empty() ? 1 : 2, millisecondsUntil(deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) throw CommandFailure("The command did not answer in time.");
    if (!line.empty() && ends[1].revents != 0) {
      const ssize_t count = ::write(input_, line.data(), line.size());
      if (count > 0) line.remove_prefix(static_cast<std::size_t>(count));
      // What it wrote before it stopped reading may be the answer.
      if (count < 0 && errno != EAGAIN && errno != EINTR) line = {};
    }
    if (ends[0].revents == 0) continue;
    const ssize_t count = ::read(output_, bytes, sizeof bytes);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (count <= 0) throw CommandFailure(howItEnded());
    const auto* const lineEnd =
        static_cast<const char*>(std::memchr(bytes, '\n', static_cast<std::size_t>(count)));
    const auto taken = static_cast<std::size_t>(lineEnd != nullptr ? lineEnd - bytes : count);
    if (answer.size() + taken > kLongestLine) {
      throw CommandFailure("The command wrote a line of more than 64 MiB.");
    }
    answer.append(bytes, taken);
    if (lineEnd == nullptr) continue;
    if (taken + 1 < static_cast<std::size_t>(count)) {
      throw CommandFailure("The command wrote more than one line.");
    }
    return answer;
  }
}

std::string CommandProcess::howItEnded() {
  // Its output has ended; the process itself does soon, if at all.
  for (int i = 0; i < 100 && !hasEnded(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  const std::lock_guard lock(mutex_);
  siginfo_t end{};
  if (::waitid(P_PID, static_cast<id_t>(pid_), &end, WEXITED | WNOWAIT | WNOHANG) != 0 ||
      end.si_pid == 0) {
    return "The command closed its standard output.";
  }
  if (end.si_code == CLD_EXITED) {
    // That is how a shell says that a signal ended its command.
    const bool isSignal = end.si_status > 128 && end.si_status <= 128 + SIGSYS;
    return "The command ended with exit status " + std::to_string(end.si_status) +
           (isSignal ? std::string(" (") + ::strsignal(end.si_status - 128) + ")." : ".");
  }
  return std::string("The command was ended by a signal: ") + ::strsignal(end.si_status) + ".";
}

void CommandProcess::signal(int number) {
  const std::lock_guard lock(mutex_);
  if (pid_ > 0) ::kill(-pid_, number);
}

bool CommandProcess::hasEnded() {
  const std::lock_guard lock(mutex_);
  siginfo_t end{};
  return ::waitid(P_PID, static_cast<id_t>(pid_), &end, WEXITED | WNOWAIT | WNOHANG) != 0 ||
         end.si_pid != 0;
}

}  // namespace hcy::server
