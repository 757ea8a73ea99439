// SPDX-License-Identifier: Apache-2.0
//
// Many calls on many threads: a context for each thread, made from one configuration.
//
// Usage: threads SERVER_URL

#include <atomic>
#include <csignal>
#include <hcy/hcyclient.hpp>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int threads = 8, calls = 100;

// Adds numbers on the server and counts the correct sums.
void work(hcyclient::Context context, const std::string& url, int number, std::atomic<int>& right) {
  for (int i = 0; i < calls; ++i) {
    const double a = number, b = i;
    try {
      if (context.feval(url, {a, b}).at(0).scalar() == a + b) ++right;
    } catch (const hcyclient::Error& error) {
      std::cerr << error.what() << '\n';  // an exception must not leave a thread
    }
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) throw hcyclient::UsageError("usage: threads SERVER_URL");
  std::signal(SIGPIPE, SIG_IGN);  // libcurl needs this if several threads make calls
  const hcyclient::Library library;
  const hcyclient::Config config(library);
  const std::string url = std::string(argv[1]) + "/math/plus";
  std::atomic<int> right = 0;
  std::vector<std::thread> workers;
  for (int i = 0; i < threads; ++i) {
    workers.emplace_back(work, hcyclient::Context(config), url, 1000 * i, std::ref(right));
  }
  for (std::thread& worker : workers) worker.join();
  std::cout << workers.size() << " threads, " << right << " of " << threads * calls
            << " sums are right\n";
  return right == threads * calls ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
