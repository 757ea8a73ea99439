// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstring>
#include <string>

#include "peer.h"
#include "wire_arrays.h"

namespace hcy::bench {

// A peer for which the bytes of the request stand ready, and a buffer for the reply.
class BytesPeer : public Peer {
 public:
  explicit BytesPeer(const Workload& workload)
      : request_(paramsOf(workload).SerializeAsString()), reply_(request_.size(), '\0') {}

  void call() final { exchange(); }

  bool callAndCompare() final {
    std::memset(reply_.data(), 0, reply_.size());
    const std::size_t size = exchange();
    // The reply is the request without its first field, which takes two bytes (the number of
    // outputs), and with the number of its second field changed.
    return size == request_.size() - 2 && reply_[0] == '\x0a' &&
           std::memcmp(&reply_[1], &request_[3], size - 1) == 0;
  }

 protected:
  // Sends request() and fills reply(); returns the number of bytes received.
  virtual std::size_t exchange() = 0;

  const std::string& request() const { return request_; }
  std::string& reply() { return reply_; }

 private:
  std::string request_;
  std::string reply_;
};

}  // namespace hcy::bench
