// SPDX-License-Identifier: Apache-2.0
#include "observation.h"

#include <gtest/gtest.h>
#include <time.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace hcy::test {

std::chrono::nanoseconds timeTaken(pid_t pid) {
  clockid_t clock;
  timespec time{};
  if (clock_getcpuclockid(pid, &clock) == 0) clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::ptrdiff_t openFiles(pid_t pid) {
  return std::distance(std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd"),
                       std::filesystem::directory_iterator());
}

rlim_t lowDescriptors(pid_t pid) {
  rlim_t count = 0;
  for (const auto& file :
       std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd")) {
    count += std::stoi(file.path().filename().string()) < 100;
  }
  return count;
}

std::size_t peakMemory(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stoul(line.substr(6)) << 10;
  }
  ADD_FAILURE() << "The system does not tell the memory of process " << pid;
  return 0;
}

std::unique_ptr<LocalServer> serverOfFewFiles(rlim_t most, std::vector<std::string> arguments) {
  rlimit files{};
  ::getrlimit(RLIMIT_NOFILE, &files);
  const rlimit few{most, files.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &few);
  auto server = std::make_unique<LocalServer>(std::move(arguments));
  ::setrlimit(RLIMIT_NOFILE, &files);
  return server;
}

}  // namespace hcy::test
