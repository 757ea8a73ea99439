// SPDX-License-Identifier: Apache-2.0
//
// Peers that use the generated classes themselves.

#pragma once

#include <stdexcept>
#include <utility>

#include "hcy.client.VORTENResult.pb.h"
#include "peer.h"
#include "wire_arrays.h"

namespace hcy::bench {

// Data that stand in a message.
class HeldMessage {
 public:
  explicit HeldMessage(const Workload& workload) : params_(paramsOf(workload)) {
    use([&](const Readable& held) {
      if (!equals(held, readableOf(workload))) {
        throw std::runtime_error("the message does not hold what was put into it");
      }
    });
  }

  const client::VORTEN_Params& params() const { return params_; }

  template <class Use>
  void use(const Use& use) const {
    use(ArrayReader(params_.rhs()).readable());
  }

 private:
  client::VORTEN_Params params_;
};

// Data that stand elsewhere.
class FilledMessage {
 public:
  explicit FilledMessage(Workload workload) : workload_(std::move(workload)) {}

  client::VORTEN_Params params() const { return paramsOf(workload_); }

  template <class Use>
  void use(const Use& use) const {
    use(readableOf(workload_));
  }

 private:
  Workload workload_;
};

// Exchanges messages by `Transport`, which is made for a port and has a member function
// call(params, result).
template <class Data, class Transport>
class MessagePeer : public ArrayPeer {
 public:
  MessagePeer(Port port, Workload workload) : data_(std::move(workload)), transport_(port) {}

 private:
  void callAndUse(const Use& use) override {
    const auto& params = data_.params();
    client::VORTEN_Result result;
    transport_.call(params, result);
    use(ArrayReader(result.lhs()).readable());
  }
  void useSent(const Use& use) const override { data_.use(use); }

  Data data_;
  Transport transport_;
};

}  // namespace hcy::bench
