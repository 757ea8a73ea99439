// SPDX-License-Identifier: Apache-2.0
//
// TLS between the library and our own server. It breaks off the handshake with a client whose
// certificate it does not trust: over TLS 1.3 the client has sent its call by then.

#include "support/local_server.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tls_test.h"

namespace hcy::abi {
namespace {

using test::LocalServer;

class TlsLocalServer : public TlsTest {
 protected:
  static LocalServer serverWith(const Certificate& certificate) {
    return LocalServer({"--cert", certificate.certificateFile, "--key", certificate.keyFile});
  }
  static LocalServer goodServer() { return serverWith(goodCertificate()); }
  static LocalServer demandingServer() {
    return LocalServer({"--cert", goodCertificate().certificateFile, "--key",
                        goodCertificate().keyFile, "--client-ca", authority().certificateFile()});
  }

  void expectRefused(const LocalServer& server, const std::string& details) {
    EXPECT_EQ(failureOf(server.url("/echo")), genericFailure(details));
  }

  // It returns the input of the call.
  void expectEcho(const LocalServer& server) { EXPECT_EQ(resultOf(server.url("/echo")), 0.1); }

  void expectRefusedButOnce(const Certificate& certificate) {
    const LocalServer server = serverWith(certificate);
    expectRefused(server, kUnverified);
    expectEcho(goodServer());
    expectRefused(server, kUnverified);
  }
};

TEST_F(TlsLocalServer, isTrusted) { expectEcho(goodServer()); }

TEST_F(TlsLocalServer, hasACertificateOfAnotherAuthority) {
  expectRefusedButOnce(otherAuthority().issue());
}

TEST_F(TlsLocalServer, hasACertificateOfAnotherHost) {
  expectRefusedButOnce(authority().issue({.alternativeNames = "DNS:other.example"}));
}

TEST_F(TlsLocalServer, hasAnExpiredCertificate) {
  expectRefusedButOnce(authority().issue({.validity = test::kExpired}));
}

TEST_F(TlsLocalServer, hasARevokedCertificate) {
  const Certificate certificate = authority().issue();
  authority().revoke(certificate);
  library->setRevocationListFile(config.get(), authority().writeRevocationList().c_str());
  expectRefusedButOnce(certificate);
}

TEST_F(TlsLocalServer, isNotVerifiedAtAll) {
  const LocalServer server =
      serverWith(otherAuthority().issue({.alternativeNames = "DNS:other.example"}));
  library->setPeerVerification(config.get(), false);
  library->setHostnameVerification(config.get(), false);
  expectEcho(server);
}

TEST_F(TlsLocalServer, getsTheCertificateThatItDemands) {
  const Certificate client = authority().issue({.name = "client", .passPhrase = "four words"});
  showCertificate(client.certificateFile, client.keyFile, "four words");
  const LocalServer server = demandingServer();
  for (int i = 0; i < 3; ++i) expectEcho(server);
}

TEST_F(TlsLocalServer, doesNotGetTheCertificateThatItDemands) {
  const LocalServer server = demandingServer();
  expectRefused(server, kNoReply);
  expectEcho(goodServer());
}

TEST_F(TlsLocalServer, getsACertificateOfAnotherAuthority) {
  const Certificate client = otherAuthority().issue({.name = "client"});
  showCertificate(client.certificateFile, client.keyFile);
  const LocalServer server = demandingServer();
  expectRefused(server, kNoReply);
  expectEcho(goodServer());
}

TEST_F(TlsLocalServer, raisesAnErrorOverTls) {
  const LocalServer server = goodServer();
  EXPECT_EQ(failureOf(server.url("/math/plus")).kind, HCY_VORTEN_ERROR);
  EXPECT_EQ(failureOf(server.url("/nothing")).kind, HCY_HTTP_ERROR);
  expectEcho(server);
}

}  // namespace
}  // namespace hcy::abi
