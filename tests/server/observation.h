// SPDX-License-Identifier: Apache-2.0
//
// What a server takes of the machine, and waiting for it.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/local_server.h"

namespace hcy::test {

// False if that does not come true in a minute.
template <class Condition>
bool waitUntil(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// The processor time that a process has taken.
std::chrono::nanoseconds timeTaken(pid_t pid);

std::ptrdiff_t openFiles(pid_t pid);

// Of the descriptors that a limit below 100 leaves, those that are open.
rlim_t lowDescriptors(pid_t pid);

// The most bytes that have been resident at a time.
std::size_t peakMemory(pid_t pid);

// A server that may open no more files than that.
std::unique_ptr<LocalServer> serverOfFewFiles(rlim_t most, std::vector<std::string> arguments = {});

}  // namespace hcy::test
