// SPDX-License-Identifier: Apache-2.0
// What has happened to a ScriptServer so far; written by its threads, read by the test's.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "script_request.h"

namespace hcy::test {

class Journal {
 public:
  // Both return the position of the new entry, counted from 0.
  std::size_t addConnection();
  std::size_t addRequest(RawRequest request);

  void setBody(std::size_t request, std::string body);
  void addProblem(std::string problem);
  void addEnded();

  std::vector<RawRequest> requests() const;
  std::vector<std::string> problems() const;
  std::size_t connections() const;

  bool waitForConnections(std::size_t count, std::chrono::milliseconds timeout) const;
  bool waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const;
  bool waitForEnded(std::size_t count, std::chrono::milliseconds timeout) const;

 private:
  template <typename Change>
  auto update(Change change);
  template <typename Condition>
  bool waitUntil(std::chrono::milliseconds timeout, Condition condition) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<RawRequest> requests_;
  std::vector<std::string> problems_;
  std::size_t connections_ = 0;
  std::size_t ended_ = 0;
};

}  // namespace hcy::test
