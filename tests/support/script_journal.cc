// SPDX-License-Identifier: Apache-2.0
#include "script_journal.h"

#include <utility>

namespace hcy::test {

template <typename Change>
auto Journal::update(Change change) {
  const std::lock_guard lock(mutex_);
  changed_.notify_all();
  return change();
}

template <typename Condition>
bool Journal::waitUntil(std::chrono::milliseconds timeout, Condition condition) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, timeout, condition);
}

std::size_t Journal::addConnection() {
  return update([&] { return connections_++; });
}

std::size_t Journal::addRequest(RawRequest request) {
  return update([&] {
    requests_.push_back(std::move(request));
    return requests_.size() - 1;
  });
}

void Journal::setBody(std::size_t request, std::string body) {
  update([&] { requests_.at(request).body = std::move(body); });
}

void Journal::addProblem(std::string problem) {
  update([&] { problems_.push_back(std::move(problem)); });
}

void Journal::addEnded() {
  update([&] { ++ended_; });
}

std::vector<RawRequest> Journal::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

std::vector<std::string> Journal::problems() const {
  const std::lock_guard lock(mutex_);
  return problems_;
}

std::size_t Journal::connections() const {
  const std::lock_guard lock(mutex_);
  return connections_;
}

bool Journal::waitForConnections(std::size_t count, std::chrono::milliseconds timeout) const {
  return waitUntil(timeout, [&] { return connections_ >= count; });
}

bool Journal::waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const {
  return waitUntil(timeout, [&] { return requests_.size() >= count; });
}

bool Journal::waitForEnded(std::size_t count, std::chrono::milliseconds timeout) const {
  return waitUntil(timeout, [&] { return ended_ >= count; });
}

}  // namespace hcy::test
