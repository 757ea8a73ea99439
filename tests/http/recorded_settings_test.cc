// SPDX-License-Identifier: Apache-2.0
//
// The settings as a client hands them to libcurl: most of them show nowhere else.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "http/http_client.h"
#include "support/recorded_curl.h"

namespace hcy {
namespace {

using test::recordedCurl;
using ::testing::ElementsAre;

class RecordedSettings : public ::testing::Test {
 protected:
  RecordedSettings() { recordedCurl() = {}; }

  // What the construction of a client asks of libcurl.
  static std::vector<std::string> callsFor(const QXClientConfig& config) {
    recordedCurl().calls.clear();
    const QXHttpClient client(config);
    return recordedCurl().calls;
  }

  QXHttpClientConfig config;
};

TEST_F(RecordedSettings, ofTheDefaultsLeaveEveryTextUnset) {
  EXPECT_THAT(callsFor(config), ElementsAre("easy_init", "HTTP_VERSION=2", "TIMEOUT=120",
                                            "SSL_VERIFYHOST=2", "SSL_VERIFYPEER=1"));
}

TEST_F(RecordedSettings, ofADefaultConstructedClientAreTheDefaults) {
  const QXHttpClient client;
  EXPECT_THAT(recordedCurl().calls, ElementsAre("easy_init", "HTTP_VERSION=2", "TIMEOUT=120",
                                                "SSL_VERIFYHOST=2", "SSL_VERIFYPEER=1"));
}

TEST_F(RecordedSettings, areAppliedInThisOrder) {
  config.setTimeOut(5);
  config.setClientCertFile("cert.pem");
  config.setClientPrivateKeyFile("key.pem");
  config.setPrivateKeyPasswd("secret");
  config.setCAFile("ca.pem");
  config.setRevocationListFile("crl.pem");
  config.setHostnameVerification(false);
  config.setPeerVerification(false);
  EXPECT_THAT(callsFor(config),
              ElementsAre("easy_init", "HTTP_VERSION=2", "TIMEOUT=5", "SSLCERT=cert.pem",
                          "SSLKEY=key.pem", "KEYPASSWD=secret", "CAINFO=ca.pem", "CRLFILE=crl.pem",
                          "SSL_VERIFYHOST=0", "SSL_VERIFYPEER=0"));
}

TEST_F(RecordedSettings, aTextThatWasEmptiedAgainIsNotSet) {
  config.setCAFile("ca.pem");
  config.setCAFile("");
  EXPECT_THAT(callsFor(config), ElementsAre("easy_init", "HTTP_VERSION=2", "TIMEOUT=120",
                                            "SSL_VERIFYHOST=2", "SSL_VERIFYPEER=1"));
}

TEST_F(RecordedSettings, hostnameVerificationIs2OrZeroAndNever1) {
  config.setPeerVerification(false);
  EXPECT_THAT(callsFor(config), ElementsAre("easy_init", "HTTP_VERSION=2", "TIMEOUT=120",
                                            "SSL_VERIFYHOST=2", "SSL_VERIFYPEER=0"));
  config.setHostnameVerification(false);
  config.setPeerVerification(true);
  EXPECT_THAT(callsFor(config), ElementsAre("easy_init", "HTTP_VERSION=2", "TIMEOUT=120",
                                            "SSL_VERIFYHOST=0", "SSL_VERIFYPEER=1"));
}

TEST_F(RecordedSettings, aTimeOutOfZeroIsPassedOn) {
  config.setTimeOut(0);
  EXPECT_EQ(callsFor(config).at(2), "TIMEOUT=0");
}

TEST_F(RecordedSettings, theLargestTimeOutIsPassedOnAndItsRefusalIgnored) {
  config.setTimeOut(4294967295);
  EXPECT_EQ(callsFor(config).at(2), "TIMEOUT=4294967295");
}

TEST_F(RecordedSettings, thatLibcurlRefusesAreNoFailure) {
  recordedCurl().optionsFail = true;
  config.setCAFile("ca.pem");
  EXPECT_EQ(callsFor(config).size(), 6U);
}

TEST_F(RecordedSettings, theHandleOfADestroyedClientLivesOnInItsRequests) {
  std::unique_ptr<Request> one;
  std::unique_ptr<Request> two;
  {
    QXHttpClient client;
    one = client.createRequest("http://127.0.0.1/");
    two = client.createRequest("http://127.0.0.1/");
  }
  EXPECT_EQ(recordedCurl().handles, 1);
  one.reset();
  EXPECT_EQ(recordedCurl().handles, 1);
  two.reset();
  EXPECT_EQ(recordedCurl().handles, 0);
  EXPECT_EQ(recordedCurl().count("easy_cleanup"), 1U);
}

TEST_F(RecordedSettings, theHandleGoesWithTheClientWhenNoRequestIsLeft) {
  {
    QXHttpClient client;
    client.createRequest("http://127.0.0.1/").reset();
    EXPECT_EQ(recordedCurl().handles, 1);
  }
  EXPECT_EQ(recordedCurl().handles, 0);
}

}  // namespace
}  // namespace hcy
