// SPDX-License-Identifier: Apache-2.0
//
// What the author of an application writes who has the schema and libcurl, but not the library. The
// application holds its data in the message that it sends; with HCY_BENCH_FILLS it holds them in
// memory of its own, and makes and fills a message for every call.

#include "curl_post.h"
#include "message_peer.h"

namespace hcy::bench {
namespace {

class HttpTransport {
 public:
  explicit HttpTransport(Port port) : post_(port, &HttpTransport::onBodyData, this) {}

  void call(const client::VORTEN_Params& params, client::VORTEN_Result& result) {
    const std::string request = params.SerializeAsString();
    std::string reply;
    reply_ = &reply;
    post_.perform(request);
    if (!result.ParseFromString(reply)) throw std::runtime_error("the reply cannot be parsed");
  }

 private:
  static std::size_t onBodyData(char* data, std::size_t size, std::size_t count, void* user) {
    static_cast<HttpTransport*>(user)->reply_->append(data, size * count);
    return size * count;
  }

  std::string* reply_ = nullptr;
  CurlPost post_;
};

}  // namespace

std::unique_ptr<Peer> makePeer(Port port, Workload workload) {
#ifdef HCY_BENCH_FILLS
  using Data = FilledMessage;
#else
  using Data = HeldMessage;
#endif
  return std::make_unique<MessagePeer<Data, HttpTransport>>(port, std::move(workload));
}

}  // namespace hcy::bench
