// SPDX-License-Identifier: Apache-2.0
//
// Each example, in C and in C++, prints what the file beside it says.

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <string>
#include <tuple>

#include "outcome.h"
#include "support/libcurl_text.h"
#include "support/local_server.h"
#include "support/loopback.h"
#include "support/pki.h"

namespace hcy::test {
namespace {

// The files have the texts of libcurl 7.88.
std::string inWordsOfThisLibcurl(const std::string& text) {
  return std::regex_replace(text, std::regex("Couldn't connect to server"),
                            libcurlText(CURLE_COULDNT_CONNECT));
}

class Example : public testing::TestWithParam<std::tuple<const char*, const char*>> {
 protected:
  static std::string name() { return std::get<0>(GetParam()); }

  static void expectGoldenOutput(const std::string& arguments) {
    const Outcome outcome =
        run(HCY_EXAMPLE_PROGRAMS "/" + name() + "_" + std::get<1>(GetParam()) + " " + arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, inWordsOfThisLibcurl(contentsOf(HCY_EXAMPLES "/" + name() + ".txt")));
  }
};

TEST_P(Example, printsWhatItShould) {
  if (name() == "tls") {
    CertificateAuthority authority;
    const Certificate ofServer = authority.issue();
    Subject subject;
    subject.name = "client";
    subject.passPhrase = "four words";
    const Certificate ofClient = authority.issue(subject);
    const LocalServer server({"--cert", ofServer.certificateFile, "--key", ofServer.keyFile,
                              "--client-ca", authority.certificateFile()});
    expectGoldenOutput(server.url() + " " + authority.certificateFile() + " " +
                       ofClient.certificateFile + " " + ofClient.keyFile + " 'four words'");
    return;
  }
  const LocalServer server;
  const UnlistenedPort unlistened;
  const std::map<std::string, std::string> functions = {{"first", "/math/plus"},
                                                        {"solve", "/linalg/solve"}};
  const auto function = functions.find(name());
  expectGoldenOutput(server.url(function == functions.end() ? "" : function->second) +
                     (name() == "errors" ? " " + unlistened.url("") : ""));
}

INSTANTIATE_TEST_SUITE_P(
    Each, Example, testing::Combine(testing::Values(HCY_EXAMPLE_NAMES), testing::Values("c", "cc")),
    [](const auto& example) {
      return std::string(std::get<0>(example.param)) + "_" + std::get<1>(example.param);
    });

}  // namespace
}  // namespace hcy::test
