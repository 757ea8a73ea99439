// SPDX-License-Identifier: Apache-2.0
//
// The same messages by gRPC; the application holds its data in the message that it sends.

#include <grpcpp/grpcpp.h>

#include "echo.grpc.pb.h"
#include "message_peer.h"

namespace hcy::bench {
namespace {

std::shared_ptr<grpc::Channel> channelTo(Port port) {
  grpc::ChannelArguments arguments;
  arguments.SetMaxReceiveMessageSize(-1);
  arguments.SetMaxSendMessageSize(-1);
  // Peers of one process share no connection.
  arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
  return grpc::CreateCustomChannel("127.0.0.1:" + std::to_string(port),
                                   grpc::InsecureChannelCredentials(), arguments);
}

class GrpcTransport {
 public:
  explicit GrpcTransport(Port port) : stub_(Echo::NewStub(channelTo(port))) {}

  void call(const client::VORTEN_Params& params, client::VORTEN_Result& result) {
    grpc::ClientContext context;
    const grpc::Status status = stub_->Call(&context, params, &result);
    if (!status.ok()) throw std::runtime_error(status.error_message());
  }

 private:
  std::unique_ptr<Echo::Stub> stub_;
};

}  // namespace

std::unique_ptr<Peer> makePeer(Port port, Workload workload) {
  return std::make_unique<MessagePeer<HeldMessage, GrpcTransport>>(port, std::move(workload));
}

}  // namespace hcy::bench
