// SPDX-License-Identifier: Apache-2.0
//
// The four file settings, with files that do not exist and files that hold something else. None
// is looked at when it is set, nor when the context is made; the call fails before it sends.

#include <gtest/gtest.h>

#include <string>

#include "tls_test.h"

namespace hcy::abi {
namespace {

class TlsFiles : public TlsTest {
 protected:
  void expectUnusable(const testing::Matcher<const std::string&>& details) {
    const Nginx nginx = goodNginx();
    for (int i = 0; i < 2; ++i) expectRefused(nginx.url(), details);
    expectAnsweredWithoutTls();
  }

  const test::TestDirectory directory;
  const std::string missing = directory.file("missing.pem");
  const std::string unreadable = directory.write("unreadable.pem", "This is no PEM.\n");
};

TEST_F(TlsFiles, theCertificateDoesNotExist) {
  showCertificate(missing, goodCertificate().keyFile);
  expectUnusable(kBadClientCertificate);
}

TEST_F(TlsFiles, theKeyDoesNotExist) {
  showCertificate(goodCertificate().certificateFile, missing);
  expectUnusable(kUnusableKey);
}

TEST_F(TlsFiles, theAuthoritiesDoNotExist) {
  library->setCAFile(config.get(), missing.c_str());
  expectUnusable(kBadAuthorityFile);
}

TEST_F(TlsFiles, theRevocationListDoesNotExist) {
  library->setRevocationListFile(config.get(), missing.c_str());
  expectUnusable(kBadRevocationList);
}

TEST_F(TlsFiles, theCertificateIsNoPem) {
  showCertificate(unreadable, goodCertificate().keyFile);
  expectUnusable(kBadClientCertificate);
}

TEST_F(TlsFiles, theKeyIsNoPem) {
  showCertificate(goodCertificate().certificateFile, unreadable);
  expectUnusable(kUnusableKey);
}

TEST_F(TlsFiles, theAuthoritiesAreNoPem) {
  library->setCAFile(config.get(), unreadable.c_str());
  expectUnusable(kBadAuthorityFile);
}

TEST_F(TlsFiles, theRevocationListIsNoPem) {
  library->setRevocationListFile(config.get(), unreadable.c_str());
  expectUnusable(kBadRevocationList);
}

// libcurl 8.14 reads it, 8.23 does not.
TEST_F(TlsFiles, theRevocationListDoesNotExistThoughNothingIsVerified) {
  library->setRevocationListFile(config.get(), missing.c_str());
  library->setPeerVerification(config.get(), false);
  library->setHostnameVerification(config.get(), false);
  const Nginx nginx = goodNginx();
  Outputs outputs(1);
  if (context().feval(nginx.url(), 1, outputs.data()) == 0) {
    EXPECT_EQ(hcyGetScalar(outputs[0]), kAnswer);
  } else {
    EXPECT_EQ(context().lastFailure(), genericFailure(kBadRevocationList));
  }
}

TEST_F(TlsFiles, whatComesTooLateIsNotUsed) {
  const Nginx nginx = goodNginx();
  context();
  library->setCAFile(config.get(), missing.c_str());
  expectAnswered(nginx.url());
}

}  // namespace
}  // namespace hcy::abi
