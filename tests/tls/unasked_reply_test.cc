// SPDX-License-Identifier: Apache-2.0
//
// What arrives on a kept TLS connection while no call is running is not the answer to the next
// call. HAProxy passes on the bytes of a server, which no proxy that knows HTTP would do.

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "support/between_calls.h"
#include "support/haproxy.h"
#include "tls_test.h"

namespace hcy::abi {
namespace {

using test::Connection;
using test::HAProxy;
using test::readRequest;
using test::replyToEach;
using test::send;
using test::waitForClose;

std::string replyOf(double value) {
  return test::httpReply(200, "OK", test::resultOf({test::doubleScalar(value)}));
}

class TlsUnaskedReply : public TlsTest {
 protected:
  TlsUnaskedReply() { library->setTimeOut(config.get(), 5); }

  std::string configuration() const {
    const std::string chain =
        directory.write("server.pem", test::contentsOf(goodCertificate().certificateFile) +
                                          test::contentsOf(goodCertificate().keyFile));
    return directory.write("haproxy.cfg",
                           "defaults\n"
                           "  mode tcp\n"
                           "  timeout connect 5s\n"
                           "  timeout client 1m\n"
                           "  timeout server 1m\n"
                           "listen tls\n"
                           "  bind \"${LISTENER}\" ssl crt " +
                               chain +
                               "\n"
                               "  server only \"127.0.0.1:${FIRST_PORT}\"\n");
  }

  // Waits until bytes lie in a socket of this machine that is connected to the port.
  static bool waitForUnread(const std::string& port) {
    std::ostringstream peer;
    peer << "0100007F:" << std::uppercase << std::hex << std::stoi(port);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < deadline) {
      std::ifstream table("/proc/net/tcp");
      for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string number, local, remote, state, queues;
        fields >> number >> local >> remote >> state >> queues;
        const std::size_t received = queues.find(':');
        if (remote != peer.str() || received == std::string::npos) continue;
        if (std::stoul(queues.substr(received + 1), nullptr, 16) != 0) return true;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
  }

  const test::TestDirectory directory;
  test::BetweenCalls between;
};

TEST_F(TlsUnaskedReply, isNotTheAnswerToTheNextCall) {
  const ScriptServer server({Connection{readRequest(), send(replyOf(1.0)), between.waitForCallEnd(),
                                        send(replyOf(666.0)), between.reportSent(), waitForClose()},
                             Connection{replyToEach(replyOf(2.0))}});
  const HAProxy proxy(configuration(), server.port(), server.port());
  const std::string url = "https" + proxy.url("/f").substr(4);
  EXPECT_EQ(resultOf(url), 1.0);
  ASSERT_TRUE(between.sendNow());
  ASSERT_TRUE(waitForUnread(url.substr(url.rfind(':') + 1)));
  EXPECT_EQ(resultOf(url), 2.0);
  EXPECT_EQ(resultOf(url), 2.0);
  EXPECT_EQ(server.connections(), 2U);
}

}  // namespace
}  // namespace hcy::abi
