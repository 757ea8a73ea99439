// SPDX-License-Identifier: Apache-2.0
// The bytes of one connection of a ScriptServer. Every wait ends when the server stops.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "loopback.h"

namespace hcy::test {

// The server is ending; whatever its threads were waiting for no longer matters.
struct Stopped {};

// A step of a script could not be carried out.
struct ScriptFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Wakes every thread of a server from its wait, at once and for good.
class StopSignal {
 public:
  StopSignal();
  void raise() noexcept;

  // Waits for `events` on `descriptor`, an error or a hang-up, and returns what holds: 0 when
  // `timeout` passed first. Throws Stopped once the signal is raised.
  short wait(int descriptor, short events,
             std::optional<std::chrono::milliseconds> timeout = std::nullopt) const;

 private:
  FileDescriptor event_;
};

// What reads or sends throws ScriptFailure if the peer is gone before it is done.
class Channel {
 public:
  Channel(FileDescriptor socket, const StopSignal& stop);

  std::string readThrough(std::string_view mark);
  std::string readExactly(std::size_t count);

  void send(std::string_view bytes);
  void drip(std::string_view bytes, std::size_t pieceSize, std::chrono::milliseconds interval);

  // Both send what is still queued before the connection ends for the peer.
  void halfClose();
  void reset();

  bool isOpen() const noexcept { return socket_.isOpen(); }
  // Closes; bytes that have already arrived do not turn the close into a reset.
  void close();

  // Whether the peer has closed; waits until it has or until there is something to read.
  bool atEnd();
  // Wait for the peer to close: the one leaves what it sends unread, the other discards it.
  void stall();
  void discardUntilClosed();

 private:
  int socket();
  bool receive();
  void receiveMore();

  FileDescriptor socket_;
  const StopSignal& stop_;
  std::string received_;
  std::size_t sent_ = 0;
};

}  // namespace hcy::test
