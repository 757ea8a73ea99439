// SPDX-License-Identifier: Apache-2.0
#include "local_server.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace hcy::test {
namespace {

constexpr int kPatienceMilliseconds = 30'000;
constexpr std::string_view kGreeting = "listening on ";

struct Pipe {
  FileDescriptor readEnd, writeEnd;
};

// Closed in other children, which would keep the pipe open otherwise.
Pipe makePipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0)
    throw std::system_error(errno, std::system_category(), "pipe2");
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

pid_t spawn(const std::string& program, const std::vector<std::string>& arguments, int input,
            int output) {
  std::vector<char*> argv = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t pid = -1;
  const int failure = ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) throw std::system_error(failure, std::system_category(), program);
  return pid;
}

// False at the end of the output, or when nothing comes in time.
bool readSome(int descriptor, std::string& text) {
  pollfd readable{descriptor, POLLIN, 0};
  int ready = 0;
  do ready = ::poll(&readable, 1, kPatienceMilliseconds);
  while (ready < 0 && errno == EINTR);
  if (ready <= 0) return false;
  char bytes[256];
  const ssize_t count = ::read(descriptor, bytes, sizeof bytes);
  if (count > 0) text.append(bytes, static_cast<std::size_t>(count));
  return count > 0;
}

}  // namespace

ServerProcess::ServerProcess(const std::string& program, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--port", "0", "--stop-on-eof"});
  Pipe input = makePipe();
  Pipe output = makePipe();
  pid_ = spawn(program, arguments, input.readEnd.get(), output.writeEnd.get());
  output.writeEnd.close();
  input_ = std::move(input.writeEnd);
  output_ = std::move(output.readEnd);
  std::string line;
  while (line.find('\n') == std::string::npos && readSome(output_.get(), line)) continue;
  if (!line.starts_with(kGreeting) || !line.ends_with('\n')) {
    const int status = stopByEndOfInput();
    throw std::runtime_error(program + " does not listen (status " + std::to_string(status) +
                             "): " + line);
  }
  url_ = line.substr(kGreeting.size(), line.size() - kGreeting.size() - 1);
}

ServerProcess::~ServerProcess() {
  if (pid_ < 0) return;
  const int status = stop(SIGTERM);
  if (status == 0) return;
  std::fprintf(stderr, "The server at %s ended with status %d.\n", url_.c_str(), status);
  std::abort();
}

std::uint16_t ServerProcess::port() const {
  return static_cast<std::uint16_t>(std::stoi(url_.substr(url_.rfind(':') + 1)));
}

int ServerProcess::stop(int signal) {
  ::kill(pid_, signal);
  return awaitExit();
}

int ServerProcess::stopByEndOfInput() {
  input_.close();
  return awaitExit();
}

int ServerProcess::awaitExit() {
  // The end of the server is the end of its output.
  std::string rest;
  pollfd ended{output_.get(), POLLIN, 0};
  while (readSome(output_.get(), rest)) continue;
  if (::poll(&ended, 1, 0) == 0) ::kill(pid_, SIGKILL);
  int status = 0;
  while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) continue;
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace hcy::test
