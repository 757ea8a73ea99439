// SPDX-License-Identifier: Apache-2.0
//
// One way of calling the echo function; each client program measures one.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "readable.h"
#include "workload.h"

namespace hcy::bench {

// Where the server listens, on 127.0.0.1.
using Port = std::uint16_t;

// Throws std::exception when a call fails.
class Peer {
 public:
  Peer() = default;
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  virtual ~Peer() = default;

  // What is timed: all that an application pays for, from its own data to a result that it can
  // read, the memory of the call given back.
  virtual void call() = 0;

  // The same, and whether the whole result is what was sent.
  virtual bool callAndCompare() = 0;
};

// A peer whose result is an array.
class ArrayPeer : public Peer {
 public:
  void call() final {
    callAndUse([](const Readable&) {});
  }
  bool callAndCompare() final {
    bool equal = false;
    callAndUse([&](const Readable& result) {
      useSent([&](const Readable& sent) { equal = equals(result, sent); });
    });
    return equal;
  }

 protected:
  using Use = std::function<void(const Readable&)>;

  // Calls, and hands the result to `use` while it lives.
  virtual void callAndUse(const Use& use) = 0;

  // Hands what is sent to `use`.
  virtual void useSent(const Use& use) const = 0;
};

// Defined by each client program. Memory that the making needs is given back before it returns.
std::unique_ptr<Peer> makePeer(Port port, Workload workload);

}  // namespace hcy::bench
