// SPDX-License-Identifier: Apache-2.0
//
// Connections that libcurl has kept. What becomes of them is in tests/abi.

#include "http/kept_connections.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <utility>

#include "http/transfer_handle.h"
#include "support/loopback.h"
#include "support/process_curl.h"

namespace hcy {
namespace {

using test::FileDescriptor;

// The number of the socket that the handle used last.
curl_socket_t socketOf(CURL* handle) {
  curl_socket_t socket = CURL_SOCKET_BAD;
  curl_easy_getinfo(handle, CURLINFO_ACTIVESOCKET, &socket);
  return socket;
}

std::unique_ptr<CURL, CURLDeleter> connectedTo(const test::UnlistenedPort& port) {
  std::unique_ptr<CURL, CURLDeleter> handle(curl_easy_init());
  curl_easy_setopt(handle.get(), CURLOPT_URL, port.url().c_str());
  curl_easy_setopt(handle.get(), CURLOPT_CONNECT_ONLY, 1L);
  EXPECT_EQ(curl_easy_perform(handle.get()), CURLE_OK);
  return handle;
}

// A number under which libcurl had a connection may name another socket of the process by now.
TEST(KeptConnections, areNotTheSocketsThatHaveGotTheirNumbers) {
  const test::ProcessCurl curl;
  const test::UnlistenedPort port;
  const FileDescriptor listener = test::listenOn(port.number(), 2);
  std::unique_ptr<CURL, CURLDeleter> handle = connectedTo(port);
  KeptConnections connections;
  connections.note(handle.get());
  const curl_socket_t number = socketOf(handle.get());
  ASSERT_NE(number, CURL_SOCKET_BAD);
  handle.reset();

  std::array<int, 2> pair{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0);
  if (pair[1] == number) std::swap(pair[0], pair[1]);
  const FileDescriptor first(pair[0]);
  const FileDescriptor second(pair[1]);
  const FileDescriptor other(first.get() == number ? ::dup(number) : ::dup2(first.get(), number));
  ASSERT_EQ(::write(second.get(), "a", 1), 1);
  handle = connectedTo(port);
  connections.note(handle.get());
  connections.dropUnread();
  char byte = 0;
  EXPECT_EQ(::send(other.get(), "b", 1, MSG_NOSIGNAL), 1);
  EXPECT_EQ(::read(second.get(), &byte, 1), 1);
  EXPECT_EQ(byte, 'b');
}

}  // namespace
}  // namespace hcy
