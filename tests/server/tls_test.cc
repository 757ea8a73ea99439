// SPDX-License-Identifier: Apache-2.0
#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

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

// What a client is told by a server that passes its calls on to one with TLS.
long statusBehind(const LocalServer& upstream, const std::vector<std::string>& options) {
  std::vector<std::string> arguments = {"--upstream", upstream.url()};
  arguments.insert(arguments.end(), options.begin(), options.end());
  const LocalServer server(arguments);
  return sendRequest(server.url("/echo"), "").status;
}

TEST_F(Tls, IsSpokenWithAnUpstreamServer) {
  const LocalServer upstream(argumentsDemandingCertificates());
  const Certificate own = authority_.issue({.name = "client"});
  const std::string authority = authority_.certificateFile();
  const std::vector<std::string> shown = {"--upstream-cert", own.certificateFile, "--upstream-key",
                                          own.keyFile};
  const auto with = [&](std::vector<std::string> options) {
    options.insert(options.end(), shown.begin(), shown.end());
    return options;
  };
  EXPECT_EQ(statusBehind(upstream, with({"--upstream-ca", authority})), 200);
  EXPECT_EQ(statusBehind(upstream, with({"--upstream-no-verify-peer"})), 200);
  EXPECT_EQ(statusBehind(upstream, {"--upstream-ca", authority}), 502);
  const Certificate locked = authority_.issue({.name = "client", .passPhrase = "four words"});
  const TestDirectory directory;
  for (const auto& [phrase, status] : {std::pair("four words\n", 200), std::pair("no\n", 502)}) {
    EXPECT_EQ(
        statusBehind(upstream, {"--upstream-ca", authority, "--upstream-cert",
                                locked.certificateFile, "--upstream-key", locked.keyFile,
                                "--upstream-key-pass-file", directory.write("phrase", phrase)}),
        status);
  }
  const CertificateAuthority other;
  EXPECT_EQ(statusBehind(upstream, with({"--upstream-ca", other.certificateFile()})), 502);
}

TEST_F(Tls, IsSpokenWithAnUpstreamServerOfAnotherName) {
  const Certificate elsewhere = authority_.issue({.alternativeNames = "DNS:elsewhere"});
  const LocalServer upstream({"--cert", elsewhere.certificateFile, "--key", elsewhere.keyFile});
  const std::string authority = authority_.certificateFile();
  EXPECT_EQ(statusBehind(upstream, {"--upstream-ca", authority}), 502);
  EXPECT_EQ(statusBehind(upstream, {"--upstream-ca", authority, "--upstream-no-verify-host"}), 200);
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
