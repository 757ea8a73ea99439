// SPDX-License-Identifier: Apache-2.0
//
// The main program of every client. It is told on standard input what to do, so that one program
// can let several clients take turns:
//
//   check      calls once and compares the reply in full
//   run N      calls N times on every thread
//   memory     tells what was resident before the first call, and at most since
//
// and answers each line with one: "ok"; the median of the calls and the time that all of them took
// together, in nanoseconds; two numbers of KiB. It ends with its standard input.

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <fstream>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "peer.h"

namespace {

using hcy::bench::Peer;
using Clock = std::chrono::steady_clock;
using Peers = std::vector<std::unique_ptr<Peer>>;

std::int64_t nanosecondsSince(Clock::time_point start) {
  return std::chrono::nanoseconds(Clock::now() - start).count();
}

std::vector<std::int64_t> timesOfCalls(Peer& peer, std::size_t count) {
  std::vector<std::int64_t> times(count);
  for (std::int64_t& time : times) {
    const Clock::time_point start = Clock::now();
    peer.call();
    time = nanosecondsSince(start);
  }
  return times;
}

std::int64_t median(std::vector<std::int64_t>& times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

// One thread a peer; the first one is this thread.
void run(const Peers& peers, std::size_t count) {
  std::vector<std::vector<std::int64_t>> times(peers.size());
  const Clock::time_point start = Clock::now();
  std::vector<std::jthread> threads;
  for (std::size_t i = 1; i < peers.size(); ++i) {
    threads.emplace_back([&, i] { times[i] = timesOfCalls(*peers[i], count); });
  }
  times[0] = timesOfCalls(*peers[0], count);
  threads.clear();
  const std::int64_t together = nanosecondsSince(start);
  for (std::size_t i = 1; i < times.size(); ++i) {
    times[0].insert(times[0].end(), times[i].begin(), times[i].end());
  }
  std::cout << median(times[0]) << ' ' << together << std::endl;
}

void check(const Peers& peers) {
  for (const auto& peer : peers) {
    if (!peer->callAndCompare()) throw std::runtime_error("the reply is not what was sent");
  }
  std::cout << "ok" << std::endl;
}

// A line of /proc/self/status, in KiB.
long statusLine(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    if (word == name + ":") {
      long kibibytes = 0;
      status >> kibibytes;
      return kibibytes;
    }
    status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  throw std::runtime_error("no " + name + " in /proc/self/status");
}

// Returns what is resident; from here on the peak counts anew.
long startPeak() {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << 5 << std::flush;
  return statusLine("VmRSS");
}

void serve(const Peers& peers) {
  const long before = startPeak();
  std::string command;
  while (std::cin >> command) {
    std::size_t count = 0;
    if (command == "check") {
      check(peers);
    } else if (command == "run" && std::cin >> count && count > 0) {
      run(peers, count);
    } else if (command == "memory") {
      std::cout << before << ' ' << statusLine("VmHWM") << std::endl;
    } else {
      throw std::runtime_error("no command: " + command);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::cerr << "usage: " << argv[0] << " PORT WORKLOAD [THREADS]\n";
    return EXIT_FAILURE;
  }
  try {
    const auto port = static_cast<hcy::bench::Port>(std::stoul(argv[1]));
    Peers peers(argc == 4 ? std::stoul(argv[3]) : 1);
    for (auto& peer : peers) {
      peer = hcy::bench::makePeer(port, hcy::bench::workloadOf(argv[2]));
    }
    serve(peers);
  } catch (const std::exception& exception) {
    std::cerr << argv[0] << ": " << exception.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
