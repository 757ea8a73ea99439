// SPDX-License-Identifier: Apache-2.0
//
// What tests of calls over TLS share: authorities, a server behind nginx, and libcurl's texts.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/call_test.h"
#include "support/nginx.h"
#include "support/pki.h"

namespace hcy::abi {

using test::Certificate;
using test::CertificateAuthority;
using test::Nginx;
using test::ScriptServer;

inline const std::string kUnverified = "SSL peer certificate or SSH remote key was not OK";
inline const std::string kNoHandshake = "SSL connect error";
inline const std::string kBadClientCertificate = "Problem with the local SSL certificate";
// Some versions of libcurl say the other of a key.
inline const testing::Matcher<const std::string&> kUnusableKey =
    testing::AnyOf(kBadClientCertificate, "A libcurl function was given a bad argument");
inline const std::string kBadAuthorityFile = "Problem with the SSL CA cert (path? access rights?)";
inline const std::string kBadRevocationList =
    "Failed to load CRL file (path? access rights?, format?)";
inline const std::string kNoReply = "Failure when receiving data from the peer";

// Both versions that the client agrees to, as nginx names them.
inline constexpr const char* kVersions = "TLSv1.2 TLSv1.3";
inline constexpr const char* kEachVersion[] = {"TLSv1.2", "TLSv1.3"};

// The authority that the tests trust, unless they say otherwise, and another one. Each is made
// once, when a test first asks for it.
inline CertificateAuthority& authority() {
  static CertificateAuthority made("Test CA");
  return made;
}
inline CertificateAuthority& otherAuthority() {
  static CertificateAuthority made("Other CA");
  return made;
}

// A certificate without fault, for a server at 127.0.0.1 and localhost.
inline const Certificate& goodCertificate() {
  static const Certificate issued = authority().issue();
  return issued;
}

// The context trusts authority() alone, as far as the test does not set something else.
class TlsTest : public CallTest {
 protected:
  TlsTest() { library->setCAFile(config.get(), authority().certificateFile().c_str()); }

  Nginx nginxWith(const Certificate& certificate, const std::string& protocols = kVersions) const {
    return Nginx(
        {.certificate = certificate, .upstream = upstream.url(""), .protocols = protocols});
  }
  Nginx goodNginx() const { return nginxWith(goodCertificate()); }
  // Shows a good certificate and demands one of authority().
  Nginx demandingNginx(const std::string& protocols = kVersions) const {
    return Nginx({.certificate = goodCertificate(),
                  .upstream = upstream.url(""),
                  .protocols = protocols,
                  .clientAuthorityFile = authority().certificateFile()});
  }

  // The call fails with these details before anything of it is sent.
  void expectRefused(const std::string& url, const testing::Matcher<const std::string&>& details) {
    const std::size_t before = upstream.requests().size();
    const Failure failure = failureOf(url);
    EXPECT_THAT(failure.text, details);
    EXPECT_EQ(failure, genericFailure(failure.text));
    EXPECT_EQ(upstream.requests().size(), before);
  }

  void expectAnswered(const std::string& url) { EXPECT_EQ(resultOf(url), kAnswer); }

  // For a context that no server with TLS satisfies: it still calls one without.
  void expectAnsweredWithoutTls() { expectAnswered(upstream.url()); }

  void showCertificate(const std::string& certificateFile, const std::string& keyFile,
                       const std::string& passPhrase = "") {
    library->setClientCertFile(config.get(), certificateFile.c_str());
    library->setClientPrivateKeyFile(config.get(), keyFile.c_str());
    library->setPrivateKeyPasswd(config.get(), passPhrase.c_str());
  }

  // A header of the last request that reached the server behind nginx.
  std::string lastHeader(const std::string& name) const {
    const auto requests = upstream.requests();
    return requests.empty() ? "no request" : requests.back().header(name).value_or("no header");
  }

  const ScriptServer upstream{{answering()}};
};

}  // namespace hcy::abi
