// SPDX-License-Identifier: Apache-2.0

#include "connections.h"

#include <utility>

namespace hcy::server {

Connections::Place::Place(Connections& connections, std::function<void()> close)
    : connections_(connections), close_(std::move(close)) {
  const std::lock_guard lock(connections_.mutex_);
  ++connections_.count_;
}

Connections::Place::~Place() {
  const std::lock_guard lock(connections_.mutex_);
  if (isWaiting_) connections_.waiting_.erase(position_);
  if (!isClosing_) --connections_.count_;
}

void Connections::Place::awaitClient() {
  const std::lock_guard lock(connections_.mutex_);
  if (isClosing_) return;
  std::list<Place*>& waiting = connections_.waiting_;
  if (isWaiting_) {
    waiting.splice(waiting.end(), waiting, position_);
  } else {
    position_ = waiting.insert(waiting.end(), this);
    isWaiting_ = true;
  }
}

void Connections::Place::keepClientWaiting() {
  const std::lock_guard lock(connections_.mutex_);
  if (isWaiting_) connections_.waiting_.erase(position_);
  isWaiting_ = false;
}

bool Connections::isFull() const {
  const std::lock_guard lock(mutex_);
  return count_ >= most_;
}

bool Connections::closeIdlest() {
  std::function<void()> close;
  {
    const std::lock_guard lock(mutex_);
    if (waiting_.empty()) return false;
    Place& idlest = *waiting_.front();
    close = idlest.close_;
    waiting_.pop_front();
    idlest.isWaiting_ = false;
    idlest.isClosing_ = true;
    --count_;
  }
  close();
  return true;
}

}  // namespace hcy::server
