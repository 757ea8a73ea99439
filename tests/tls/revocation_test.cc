// SPDX-License-Identifier: Apache-2.0
//
// Revocation lists. With a list set, every certificate of the chain is looked up: the file must
// hold a list of each authority in it, and each must be of the present.

#include <gtest/gtest.h>

#include <string>

#include "tls_test.h"

namespace hcy::abi {
namespace {

class TlsRevocation : public TlsTest {
 protected:
  void useRevocationList(const std::string& file) {
    library->setRevocationListFile(config.get(), file.c_str());
  }

  const Certificate& revoked() {
    static const Certificate issued = [] {
      Certificate certificate = authority().issue();
      authority().revoke(certificate);
      return certificate;
    }();
    return issued;
  }

  // One file that holds the lists of both.
  static std::string bothLists(const std::string& first, const std::string& second) {
    static const test::TestDirectory directory;
    return directory.write("both.pem", test::contentsOf(first) + test::contentsOf(second));
  }
};

TEST_F(TlsRevocation, aRevokedCertificateWithoutAListIsTaken) {
  expectAnswered(nginxWith(revoked()).url());
}

TEST_F(TlsRevocation, aRevokedCertificateOnTheListIsRefused) {
  const Nginx nginx = nginxWith(revoked());
  useRevocationList(authority().writeRevocationList());
  expectRefused(nginx.url(), kUnverified);
  expectAnswered(goodNginx().url());
}

TEST_F(TlsRevocation, aCertificateThatIsNotOnTheListIsTaken) {
  const Nginx nginx = goodNginx();
  useRevocationList(authority().writeRevocationList());
  expectAnswered(nginx.url());
}

TEST_F(TlsRevocation, theListIsOfAnotherAuthority) {
  useRevocationList(otherAuthority().writeRevocationList());
  expectRefused(goodNginx().url(), kUnverified);
  expectAnsweredWithoutTls();
}

TEST_F(TlsRevocation, theListIsOutOfDate) {
  const Nginx nginx = goodNginx();
  useRevocationList(authority().writeRevocationList(test::kExpired));
  expectRefused(nginx.url(), kUnverified);
  expectAnsweredWithoutTls();
}

TEST_F(TlsRevocation, theListOfTheIntermediateAuthorityIsMissing) {
  CertificateAuthority intermediate("Intermediate CA", authority());
  const Nginx nginx = nginxWith(intermediate.issueWithChain());
  useRevocationList(authority().writeRevocationList());
  expectRefused(nginx.url(), kUnverified);
  expectAnswered(goodNginx().url());
}

TEST_F(TlsRevocation, theListOfTheRootAuthorityIsMissing) {
  CertificateAuthority intermediate("Intermediate CA", authority());
  const Nginx nginx = nginxWith(intermediate.issueWithChain());
  useRevocationList(intermediate.writeRevocationList());
  expectRefused(nginx.url(), kUnverified);
  expectAnsweredWithoutTls();
}

TEST_F(TlsRevocation, theListsOfAllAuthoritiesAreThere) {
  CertificateAuthority intermediate("Intermediate CA", authority());
  const Nginx nginx = nginxWith(intermediate.issueWithChain());
  useRevocationList(
      bothLists(authority().writeRevocationList(), intermediate.writeRevocationList()));
  expectAnswered(nginx.url());
  expectAnswered(goodNginx().url());
}

TEST_F(TlsRevocation, theIntermediateAuthorityIsRevoked) {
  CertificateAuthority intermediate("Intermediate CA", authority());
  const Nginx nginx = nginxWith(intermediate.issueWithChain());
  authority().revoke(intermediate.certificate());
  useRevocationList(
      bothLists(authority().writeRevocationList(), intermediate.writeRevocationList()));
  expectRefused(nginx.url(), kUnverified);
  expectAnswered(goodNginx().url());
}

}  // namespace
}  // namespace hcy::abi
