// SPDX-License-Identifier: Apache-2.0
//
// Below the floor: bytes that stand ready, sent and received by system calls alone.

#include "bytes_peer.h"
#include "http_message.h"
#include "tcp_socket.h"

namespace hcy::bench {
namespace {

class SocketsPeer : public BytesPeer {
 public:
  SocketsPeer(Port port, const Workload& workload)
      : BytesPeer(workload), socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_in address = loopbackAddress(port);
    if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
      throwErrno("connect");
    }
    socket_.setNoDelay();
    head_ = "POST /echo HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
            "\r\nContent-Type: application/x-google-protobuf\r\nContent-Length: " +
            std::to_string(request().size()) + "\r\n\r\n";
  }

 private:
  std::size_t exchange() override {
    socket_.send(head_.data(), head_.size(), request().data(), request().size());
    if (!receiver_.receiveHead(socket_)) throw std::runtime_error("the server hung up");
    if (!receiver_.head().starts_with("HTTP/1.1 200 ")) throw std::runtime_error("not status 200");
    if (receiver_.bodySize() > reply().size()) throw std::runtime_error("the reply is too large");
    receiver_.receiveBody(socket_, reply().data());
    return receiver_.bodySize();
  }

  Socket socket_;
  std::string head_;
  MessageReceiver receiver_;
};

}  // namespace

std::unique_ptr<Peer> makePeer(Port port, Workload workload) {
  return std::make_unique<SocketsPeer>(port, workload);
}

}  // namespace hcy::bench
