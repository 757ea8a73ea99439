// SPDX-License-Identifier: Apache-2.0
#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>

#include "calls.h"
#include "http_client.h"
#include "support/pki.h"

namespace hcy::test {
namespace {

using testing::StartsWith;

class Tls : public testing::Test {
 protected:
  std::vector<std::string> serverArguments() const {
    return {"--cert", certificate_.certificateFile, "--key", certificate_.keyFile};
  }

  std::vector<std::string> argumentsDemandingCertificates() const {
    auto arguments = serverArguments();
    arguments.insert(arguments.end(), {"--client-ca", authority_.certificateFile()});
    return arguments;
  }

  HttpOptions trusting(const Certificate& own = {}) const {
    return {.authorityFile = authority_.certificateFile(),
            .certificateFile = own.certificateFile,
            .keyFile = own.keyFile};
  }

  CertificateAuthority authority_;
  const Certificate certificate_ = authority_.issue();
};

TEST_F(Tls, ServesHttps) {
  const LocalServer server(serverArguments());
  EXPECT_THAT(server.url(), StartsWith("https://127.0.0.1:"));
  const std::string body =
      serializedParams(1, {doubles({1, 500'000}, std::vector<double>(500'000, 1))});
  const HttpReply reply = sendRequest(server.url("/echo"), body, trusting());
  EXPECT_EQ(reply.status, 200) << reply.failure;
  VORTEN_Result result;
  ASSERT_TRUE(result.ParseFromString(reply.body));
  EXPECT_EQ(realPart(result.lhs(0)), std::vector<double>(500'000, 1));
}

TEST_F(Tls, ServesBothVersions) {
  const LocalServer server(serverArguments());
  for (const long newest : {CURL_SSLVERSION_MAX_TLSv1_2, CURL_SSLVERSION_MAX_TLSv1_3}) {
    HttpOptions options = trusting();
    options.newestTls = newest;
    EXPECT_EQ(sendRequest(server.url("/echo"), "", options).status, 200);
  }
}

TEST_F(Tls, IsKnownByItsAuthority) {
  const LocalServer server(serverArguments());
  const CertificateAuthority other;
  EXPECT_EQ(sendRequest(server.url("/echo"), "", {.authorityFile = other.certificateFile()}).status,
            0);
  EXPECT_EQ(sendRequest(server.url("/echo"), "", trusting()).status, 200);
}

TEST_F(Tls, EndsTheConnectionIfAsked) {
  const LocalServer server(serverArguments());
  HttpOptions options = trusting();
  options.headerLines = {"Connection: close"};
  EXPECT_EQ(sendRequest(server.url("/echo"), "", options).status, 200);
}

TEST_F(Tls, RefusesABodyThatIsTooLong) {
  auto arguments = serverArguments();
  arguments.insert(arguments.end(), {"--max-body", "100"});
  const LocalServer server(arguments);
  const HttpReply reply =
      sendRequest(server.url("/echo"), std::string(20'000'000, 'x'), trusting());
  EXPECT_EQ(reply.status, 413) << reply.failure;
}

TEST_F(Tls, DemandsClientCertificates) {
  const LocalServer server(argumentsDemandingCertificates());
  EXPECT_EQ(sendRequest(server.url("/echo"), "", trusting()).status, 0);
  CertificateAuthority other;
  EXPECT_EQ(sendRequest(server.url("/echo"), "", trusting(other.issue({.name = "client"}))).status,
            0);
  const HttpReply reply =
      sendRequest(server.url("/echo"), "", trusting(authority_.issue({.name = "client"})));
  EXPECT_EQ(reply.status, 200) << reply.failure;
}

TEST_F(Tls, ResumesSessionsOfClientsWithCertificates) {
  const LocalServer server(argumentsDemandingCertificates());
  for (const long newest : {CURL_SSLVERSION_MAX_TLSv1_2, CURL_SSLVERSION_MAX_TLSv1_3}) {
    HttpOptions options = trusting(authority_.issue({.name = "client"}));
    options.newestTls = newest;
    options.times = 2;
    const HttpReply reply = sendRequest(server.url("/echo"), "", options);
    EXPECT_EQ(reply.status, 200) << reply.failure;
  }
}

TEST_F(Tls, SurvivesClientsWithout) {
  const LocalServer server(serverArguments());
  RawConnection plain(server.port());
  plain.send("GET / HTTP/1.1\r\nHost: a\r\n\r\n");
  EXPECT_EQ(plain.receiveAll().find("HTTP"), std::string::npos);
  EXPECT_EQ(sendRequest(server.url("/echo"), "", trusting()).status, 200);
}

TEST_F(Tls, EndsWhileClientsShakeHands) {
  LocalServer server(serverArguments());
  const RawConnection silent(server.port());
  EXPECT_EQ(sendRequest(server.url("/echo"), "", trusting()).status, 200);
  EXPECT_EQ(server.stop(SIGTERM), 0);
}

TEST_F(Tls, WaitsForAHandshakeForALimitedTime) {
  auto arguments = serverArguments();
  arguments.insert(arguments.end(), {"--request-timeout", "0.3"});
  const LocalServer server(arguments);
  RawConnection silent(server.port());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(silent.receiveAll(), "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(Tls, NeedsAKeyThatFits) {
  CertificateAuthority other;
  EXPECT_THROW(
      LocalServer({"--cert", certificate_.certificateFile, "--key", other.issue().keyFile}),
      std::runtime_error);
}

}  // namespace
}  // namespace hcy::test
