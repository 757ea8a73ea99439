// SPDX-License-Identifier: Apache-2.0
//
// A server whose only function gives back its one input, at next to no cost: the bytes of the
// request are the bytes of the reply but for their beginning. It knows no other requests than those
// of the clients here, listens on a port of 127.0.0.1 that it prints, and ends with its standard
// input.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "http_message.h"
#include "tcp_socket.h"

namespace {

using hcy::bench::MessageReceiver;
using hcy::bench::Socket;
using hcy::bench::throwErrno;

// Memory for bodies, kept from request to request.
class Buffer {
 public:
  char* ofAtLeast(std::size_t size) {
    if (size > size_) {
      block_ = std::make_unique_for_overwrite<char[]>(size);
      size_ = size;
    }
    return block_.get();
  }

 private:
  std::unique_ptr<char[]> block_;
  std::size_t size_ = 0;
};

// The parameters of a call with one output and one input become its result in place: field 1, the
// number of outputs, is left out, and field 2, the input, is field 1 of the result.
constexpr std::size_t leftOut = 2;

void makeResult(char* body, std::size_t size) {
  if (size < leftOut + 1 || body[0] != '\x08' || body[1] != '\x01' || body[leftOut] != '\x12') {
    throw std::runtime_error("not the parameters of a call with one output and one input");
  }
  body[leftOut] = '\x0a';
}

void serve(Socket socket) try {
  socket.setNoDelay();
  MessageReceiver request;
  Buffer buffer;
  char head[128];
  while (request.receiveHead(socket)) {
    char* const body = buffer.ofAtLeast(request.bodySize());
    request.receiveBody(socket, body);
    makeResult(body, request.bodySize());
    const std::size_t size = request.bodySize() - leftOut;
    const int headSize = std::snprintf(head, sizeof head,
                                       "HTTP/1.1 200 OK\r\n"
                                       "Content-Type: application/x-google-protobuf\r\n"
                                       "Content-Length: %zu\r\n\r\n",
                                       size);
    socket.send(head, static_cast<std::size_t>(headSize), body + leftOut, size);
  }
} catch (const std::exception& exception) {
  std::fprintf(stderr, "echo server: %s\n", exception.what());
}

Socket listenAnywhere() {
  Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address = hcy::bench::loopbackAddress(0);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(socket.get(), generic, size) != 0) throwErrno("bind");
  if (::listen(socket.get(), SOMAXCONN) != 0) throwErrno("listen");
  if (::getsockname(socket.get(), generic, &size) != 0) throwErrno("getsockname");
  std::printf("%d\n", ntohs(address.sin_port));
  std::fflush(stdout);
  return socket;
}

}  // namespace

int main() {
  const Socket listener = listenAnywhere();
  std::thread([] {
    while (std::getchar() != EOF) {
    }
    std::_Exit(EXIT_SUCCESS);
  }).detach();
  for (;;) {
    Socket socket(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    std::thread(serve, std::move(socket)).detach();
  }
}
