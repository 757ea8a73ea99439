// SPDX-License-Identifier: Apache-2.0
//
// The versions of TLS, peers that do not speak it, and connections that are kept.

#include <gtest/gtest.h>

#include <string>

#include "tls_test.h"

namespace hcy::abi {
namespace {

using test::Connection;
using test::halfClose;
using test::send;
using test::stall;
using test::waitForClose;

class TlsHandshake : public TlsTest {
 protected:
  Nginx nginxSpeaking(const std::string& protocols) const {
    return nginxWith(goodCertificate(), protocols);
  }
  static std::string overTls(const ScriptServer& server) {
    return "https://127.0.0.1:" + std::to_string(server.port()) + "/f";
  }
};

TEST_F(TlsHandshake, withVersion12Alone) {
  expectAnswered(nginxSpeaking("TLSv1.2").url());
  EXPECT_EQ(lastHeader("X-Tls-Version"), "TLSv1.2");
}

TEST_F(TlsHandshake, withVersion13Alone) {
  expectAnswered(nginxSpeaking("TLSv1.3").url());
  EXPECT_EQ(lastHeader("X-Tls-Version"), "TLSv1.3");
}

TEST_F(TlsHandshake, prefersVersion13) {
  expectAnswered(nginxSpeaking(kVersions).url());
  EXPECT_EQ(lastHeader("X-Tls-Version"), "TLSv1.3");
}

TEST_F(TlsHandshake, theServerOffersHttp2AndIsCalledByHttp11) {
  const Nginx nginx(
      {.certificate = goodCertificate(), .upstream = upstream.url(""), .http2 = true});
  expectAnswered(nginx.url());
  EXPECT_EQ(lastHeader("X-Protocol"), "HTTP/1.1");
}

TEST_F(TlsHandshake, theServerSpeaksNothingAboveVersion11) {
  expectRefused(nginxSpeaking("TLSv1.1").url(), kNoHandshake);
  expectAnswered(goodNginx().url());
}

TEST_F(TlsHandshake, thePeerSpeaksPlainHttp) {
  const ScriptServer plain(
      {Connection{send(test::httpReply(400, "Bad Request", "")), waitForClose()}});
  expectRefused(overTls(plain), kNoHandshake);
  expectAnswered(goodNginx().url());
}

TEST_F(TlsHandshake, thePeerClosesDuringIt) {
  const ScriptServer closing({Connection{halfClose(), waitForClose()}});
  expectRefused(overTls(closing), kNoHandshake);
  expectAnswered(goodNginx().url());
}

TEST_F(TlsHandshake, thePeerSaysNothingForLongerThanTheTimeOut) {
  library->setTimeOut(config.get(), 1);
  const Nginx nginx = goodNginx();
  const ScriptServer stalled({Connection{stall()}});
  expectRefused(overTls(stalled), kTimedOut.text);
  expectAnswered(nginx.url());
}

TEST_F(TlsHandshake, theUrlAsksAServerThatSpeaksTlsForPlainHttp) {
  const Nginx nginx = goodNginx();
  EXPECT_EQ(failureOf("http://127.0.0.1:" + std::to_string(nginx.port()) + "/f"),
            httpFailure(400, "Bad Request\r\n"));
  expectAnswered(nginx.url());
}

TEST_F(TlsHandshake, isDoneOnceForManyCalls) {
  const Nginx nginx = goodNginx();
  for (int i = 1; i <= 10; ++i) {
    expectAnswered(nginx.url());
    EXPECT_EQ(lastHeader("X-Connection-Requests"), std::to_string(i));
  }
}

TEST_F(TlsHandshake, aFailedOneLeavesTheKeptConnectionAlone) {
  const Nginx nginx = goodNginx();
  expectAnswered(nginx.url());
  expectRefused(nginxWith(otherAuthority().issue()).url(), kUnverified);
  expectAnswered(nginx.url());
  EXPECT_EQ(lastHeader("X-Connection-Requests"), "2");
}

}  // namespace
}  // namespace hcy::abi
