// SPDX-License-Identifier: Apache-2.0
//
// The floor: bytes that stand ready, POSTed by libcurl into a buffer that stands ready.

#include "bytes_peer.h"
#include "curl_post.h"

namespace hcy::bench {
namespace {

class FloorPeer : public BytesPeer {
 public:
  FloorPeer(Port port, const Workload& workload)
      : BytesPeer(workload), post_(port, &FloorPeer::onBodyData, this) {}

 private:
  static std::size_t onBodyData(char* data, std::size_t size, std::size_t count, void* user) {
    auto& self = *static_cast<FloorPeer*>(user);
    const std::size_t n = size * count;
    if (n > self.reply().size() - self.received_) return 0;
    std::memcpy(self.reply().data() + self.received_, data, n);
    self.received_ += n;
    return n;
  }

  std::size_t exchange() override {
    received_ = 0;
    post_.perform(request());
    return received_;
  }

  CurlPost post_;
  std::size_t received_ = 0;
};

}  // namespace

std::unique_ptr<Peer> makePeer(Port port, Workload workload) {
  return std::make_unique<FloorPeer>(port, workload);
}

}  // namespace hcy::bench
