// SPDX-License-Identifier: Apache-2.0
//
// Certificates of the server: what the context refuses, and that it is used again afterwards.

#include <gtest/gtest.h>

#include <string>

#include "tls_test.h"

namespace hcy::abi {
namespace {

class TlsServerCertificate : public TlsTest {
 protected:
  // The same context refuses this certificate and goes on to take a good one.
  void expectRefusedButOnce(const Certificate& certificate) {
    const Nginx nginx = nginxWith(certificate);
    expectRefused(nginx.url(), kUnverified);
    expectAnswered(goodNginx().url());
    expectRefused(nginx.url(), kUnverified);
  }
};

TEST_F(TlsServerCertificate, withoutFaultByAddressAndByName) {
  const Nginx nginx = goodNginx();
  expectAnswered(nginx.url("/f", "127.0.0.1"));
  expectAnswered(nginx.url("/f", "localhost"));
}

TEST_F(TlsServerCertificate, ofAnotherAuthority) { expectRefusedButOnce(otherAuthority().issue()); }

TEST_F(TlsServerCertificate, ofAnAuthorityThatTheSystemDoesNotKnow) {
  library->setCAFile(config.get(), "");
  expectRefused(goodNginx().url(), kUnverified);
  expectAnsweredWithoutTls();
}

// It names the host, so that nothing else is wrong with it.
TEST_F(TlsServerCertificate, signedByItself) {
  const CertificateAuthority itself("localhost");
  const Nginx nginx = nginxWith(itself.certificate());
  expectRefused(nginx.url("/f", "localhost"), kUnverified);
  expectAnswered(goodNginx().url());
}

TEST_F(TlsServerCertificate, signedByItselfAndTrusted) {
  const CertificateAuthority itself("localhost");
  library->setCAFile(config.get(), itself.certificateFile().c_str());
  const Nginx nginx = nginxWith(itself.certificate());
  expectAnswered(nginx.url("/f", "localhost"));
}

TEST_F(TlsServerCertificate, ofAnotherHost) {
  expectRefusedButOnce(authority().issue({.alternativeNames = "DNS:other.example"}));
}

TEST_F(TlsServerCertificate, ofAnotherAddress) {
  expectRefusedButOnce(authority().issue({.alternativeNames = "IP:127.0.0.2"}));
}

TEST_F(TlsServerCertificate, ofTheNameWhenTheUrlHasTheAddress) {
  const Nginx nginx = nginxWith(authority().issue({.alternativeNames = "DNS:localhost"}));
  expectRefused(nginx.url("/f", "127.0.0.1"), kUnverified);
  expectAnswered(nginx.url("/f", "localhost"));
}

TEST_F(TlsServerCertificate, expired) {
  expectRefusedButOnce(authority().issue({.validity = test::kExpired}));
}

TEST_F(TlsServerCertificate, notYetValid) {
  expectRefusedButOnce(authority().issue({.validity = test::kNotYetValid}));
}

TEST_F(TlsServerCertificate, ofAnIntermediateAuthorityThatTheServerShows) {
  CertificateAuthority intermediate("Intermediate CA", authority());
  expectAnswered(nginxWith(intermediate.issueWithChain()).url());
}

TEST_F(TlsServerCertificate, ofAnIntermediateAuthorityThatTheServerDoesNotShow) {
  CertificateAuthority intermediate("Intermediate CA", authority());
  expectRefusedButOnce(intermediate.issue());
}

TEST_F(TlsServerCertificate, isCheckedForEachServerThatOneContextCalls) {
  const Nginx good = goodNginx();
  const Nginx bad = nginxWith(otherAuthority().issue());
  for (int i = 0; i < 3; ++i) {
    expectAnswered(good.url());
    expectRefused(bad.url(), kUnverified);
  }
}

}  // namespace
}  // namespace hcy::abi
