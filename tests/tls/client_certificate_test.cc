// SPDX-License-Identifier: Apache-2.0
//
// Certificates of the client, demanded by a server that answers status 400 when it gets none that
// it trusts; and keys that the client cannot use, which end the call before anything is sent.

#include <gtest/gtest.h>

#include <string>

#include "tls_test.h"
#include "without_terminal.h"

namespace hcy::abi {
namespace {

const Failure kTurnedAway = httpFailure(400, "Bad Request\r\n");

const Certificate& clientCertificate() {
  static const Certificate issued = authority().issue({.name = "client", .alternativeNames = ""});
  return issued;
}

constexpr char kPassPhrase[] = "open sesame 1001";

const Certificate& protectedCertificate() {
  static const Certificate issued =
      authority().issue({.name = "client", .alternativeNames = "", .passPhrase = kPassPhrase});
  return issued;
}

class TlsClientCertificate : public TlsTest {
 protected:
  void show(const Certificate& certificate, const std::string& passPhrase = "") {
    showCertificate(certificate.certificateFile, certificate.keyFile, passPhrase);
  }

  // The server answers in the stead of the function; nothing reaches that.
  void expectTurnedAway() {
    for (const char* version : kEachVersion) {
      const Nginx nginx = demandingNginx(version);
      EXPECT_EQ(failureOf(nginx.url()), kTurnedAway) << version;
    }
    EXPECT_TRUE(upstream.requests().empty());
    expectAnswered(goodNginx().url());
  }

  // libcurl takes the certificate up for every server, whether it demands one or not.
  void expectUnusable() {
    const Nginx nginx = demandingNginx();
    expectRefused(nginx.url(), kUnusableKey);
    expectRefused(goodNginx().url(), kUnusableKey);
    expectAnsweredWithoutTls();
  }
};

TEST_F(TlsClientCertificate, present) {
  const Nginx nginx = demandingNginx();
  show(clientCertificate());
  expectAnswered(nginx.url());
  EXPECT_EQ(lastHeader("X-Client"), "CN=client");
}

TEST_F(TlsClientCertificate, presentOverEachVersion) {
  show(clientCertificate());
  for (const char* version : kEachVersion) {
    const Nginx nginx = demandingNginx(version);
    expectAnswered(nginx.url());
    EXPECT_EQ(lastHeader("X-Tls-Version"), version);
    EXPECT_EQ(lastHeader("X-Client"), "CN=client");
  }
}

TEST_F(TlsClientCertificate, presentThoughTheServerDoesNotAsk) {
  const Nginx nginx = goodNginx();
  show(clientCertificate());
  expectAnswered(nginx.url());
}

TEST_F(TlsClientCertificate, inOneFileWithItsKey) {
  const test::TestDirectory directory;
  const std::string both =
      directory.write("both.pem", test::contentsOf(clientCertificate().certificateFile) +
                                      test::contentsOf(clientCertificate().keyFile));
  const Nginx nginx = demandingNginx();
  showCertificate(both, "");
  expectAnswered(nginx.url());
  EXPECT_EQ(lastHeader("X-Client"), "CN=client");
}

TEST_F(TlsClientCertificate, absent) { expectTurnedAway(); }

TEST_F(TlsClientCertificate, absentThoughItsKeyIsThere) {
  showCertificate("", clientCertificate().keyFile);
  expectTurnedAway();
}

TEST_F(TlsClientCertificate, ofAnotherAuthority) {
  show(otherAuthority().issue({.name = "client"}));
  expectTurnedAway();
}

TEST_F(TlsClientCertificate, expired) {
  show(authority().issue({.name = "client", .validity = test::kExpired}));
  expectTurnedAway();
}

TEST_F(TlsClientCertificate, withThePassPhraseOfItsKey) {
  const Nginx nginx = demandingNginx();
  show(protectedCertificate(), kPassPhrase);
  expectAnswered(nginx.url());
  EXPECT_EQ(lastHeader("X-Client"), "CN=client");
}

TEST_F(TlsClientCertificate, withAPassPhraseThatItsKeyDoesNotNeed) {
  const Nginx nginx = demandingNginx();
  show(clientCertificate(), kPassPhrase);
  expectAnswered(nginx.url());
}

TEST_F(TlsClientCertificate, withAWrongPassPhrase) {
  show(protectedCertificate(), "open barley");
  expectUnusable();
}

// OpenSSL asks for it on the terminal, if there is one.
TEST_F(TlsClientCertificate, withoutThePassPhraseOfItsKeyOrATerminalToAskFor) {
  const test::WithoutTerminal detached;
  show(protectedCertificate());
  expectUnusable();
}

TEST_F(TlsClientCertificate, withTheKeyOfAnotherCertificate) {
  showCertificate(clientCertificate().certificateFile, goodCertificate().keyFile);
  expectUnusable();
}

TEST_F(TlsClientCertificate, withoutAKey) {
  showCertificate(clientCertificate().certificateFile, "");
  expectUnusable();
}

TEST_F(TlsClientCertificate, noTextOfAFailureTellsThePassPhrase) {
  const std::string secret = "tell nobody 4711";
  showCertificate(protectedCertificate().certificateFile, protectedCertificate().keyFile, secret);
  const Nginx nginx = demandingNginx();
  const Failure failure = failureOf(nginx.url());
  EXPECT_THAT(failure.text, kUnusableKey);
  for (const std::string& text : {failure.message, failure.text, failure.identifier}) {
    EXPECT_EQ(text.find(secret), std::string::npos) << text;
  }
}

}  // namespace
}  // namespace hcy::abi
