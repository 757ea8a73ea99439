// SPDX-License-Identifier: Apache-2.0
//
// What echo_server.cc does, behind gRPC: the slices of the request are those of the reply but for
// the first bytes. Prints the port of 127.0.0.1 that it listens on, and ends with its standard
// input.

#include <grpcpp/grpcpp.h>

#include <cstdio>
#include <vector>

#include "echo.grpc.pb.h"

namespace {

using grpc::ByteBuffer;
using grpc::Slice;
using grpc::Status;

// Field 1 of the parameters, the number of outputs, takes two bytes and is left out; field 2, the
// input, is field 1 of the result.
constexpr std::size_t leftOut = 2;

// Where the network cut the request decides its slices; the first one may be too short.
std::vector<Slice> slicesOf(const ByteBuffer& request) {
  std::vector<Slice> slices;
  if (!request.Dump(&slices).ok()) return {};
  if (slices.size() > 1 && slices[0].size() < leftOut + 1) {
    slices.resize(1);
    if (!request.DumpToSingleSlice(&slices[0]).ok()) return {};
  }
  return slices;
}

Status makeResult(const ByteBuffer& request, ByteBuffer* reply) {
  std::vector<Slice> slices = slicesOf(request);
  if (slices.empty() || slices[0].size() < leftOut + 1 || slices[0].begin()[leftOut] != 0x12) {
    return {grpc::StatusCode::INVALID_ARGUMENT, "not a call with one output and one input"};
  }
  slices[0] = slices[0].sub(leftOut + 1, slices[0].size());
  slices.insert(slices.begin(), Slice("\x0a", 1));
  *reply = ByteBuffer(slices.data(), slices.size());
  return Status::OK;
}

class EchoService : public hcy::bench::Echo::WithRawCallbackMethod_Call<hcy::bench::Echo::Service> {
  grpc::ServerUnaryReactor* Call(grpc::CallbackServerContext* context, const ByteBuffer* request,
                                 ByteBuffer* reply) override {
    grpc::ServerUnaryReactor* const reactor = context->DefaultReactor();
    reactor->Finish(makeResult(*request, reply));
    return reactor;
  }
};

}  // namespace

int main() {
  EchoService service;
  int port = 0;
  grpc::ServerBuilder builder;
  builder.SetMaxReceiveMessageSize(-1);
  builder.SetMaxSendMessageSize(-1);
  builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &port);
  builder.RegisterService(&service);
  const std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  if (!server || port == 0) return EXIT_FAILURE;
  std::printf("%d\n", port);
  std::fflush(stdout);
  while (std::getchar() != EOF) {
  }
  server->Shutdown();
  return EXIT_SUCCESS;
}
