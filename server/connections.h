// SPDX-License-Identifier: Apache-2.0
//
// All connections. Descriptors are few, so when there are as many connections as there may be, the
// one whose client has kept it waiting longest is closed to make room.

#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <mutex>

namespace hcy::server {

// All functions may be called by several threads at once.
class Connections {
 public:
  explicit Connections(std::size_t most) : most_(most) {}

  // One connection among them, from construction to destruction. The functions of one place are
  // called by one thread at a time.
  class Place {
   public:
    // `close` closes the connection, soon and on a thread of its own choice.
    Place(Connections& connections, std::function<void()> close);
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place();

    // The connection waits for its client to send, to read, or to end; and the client has just been
    // heard of.
    void awaitClient();
    // The client waits for the server, and is not to be closed.
    void keepClientWaiting();

   private:
    friend Connections;

    Connections& connections_;
    const std::function<void()> close_;
    // In the list of those that wait, if it does.
    std::list<Place*>::iterator position_;
    bool isWaiting_ = false;
    bool isClosing_ = false;
  };

  bool isFull() const;
  // False if none waits for its client.
  bool closeIdlest();

 private:
  const std::size_t most_;
  mutable std::mutex mutex_;
  // Those that stay: all but the ones that are being closed.
  std::size_t count_ = 0;
  // The one that has waited longest comes first.
  std::list<Place*> waiting_;
};

}  // namespace hcy::server
