// SPDX-License-Identifier: Apache-2.0

#include "runtime/client_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace hcy {
namespace {

using ::testing::ElementsAre;

static_assert(std::is_abstract_v<QXClientConfig>);
static_assert(std::has_virtual_destructor_v<QXClientConfig>);
static_assert(!std::is_copy_constructible_v<QXClientConfig>);
static_assert(!std::is_copy_assignable_v<QXClientConfig>);

// Another implementation, which notes what is read of it.
class NotingConfig : public QXClientConfig {
 public:
  void setTimeOut(std::uint32_t) override {}
  std::uint32_t getTimeOut() const override { return noted("timeOut", 11U); }
  void setResponseSizeLimit(std::uint32_t) override {}
  std::uint32_t getResponseSizeLimit() const override { return noted("responseSizeLimit", 12U); }
  void setClientCertFile(const char*) override {}
  const char* getClientCertFile() const override { return noted("clientCertFile", "cert"); }
  void setClientPrivateKeyFile(const char*) override {}
  const char* getClientPrivateKeyFile() const override {
    return noted("clientPrivateKeyFile", "key");
  }
  void setPrivateKeyPasswd(const char*) override {}
  const char* getPrivateKeyPasswd() const override { return noted("privateKeyPasswd", "secret"); }
  void setCAFile(const char*) override {}
  const char* getCAFile() const override { return noted("caFile", "ca"); }
  void setRevocationListFile(const char*) override {}
  const char* getRevocationListFile() const override { return noted("revocationListFile", "crl"); }
  void setHostnameVerification(bool) override {}
  bool getHostnameVerification() const override { return noted("hostnameVerification", false); }
  void setPeerVerification(bool) override {}
  bool getPeerVerification() const override { return noted("peerVerification", false); }

  mutable std::vector<std::string> read;

 private:
  template <class Value>
  Value noted(const char* name, Value value) const {
    read.emplace_back(name);
    return value;
  }
};

TEST(HttpClientConfig, hasTheDefaults) {
  const QXHttpClientConfig config;
  EXPECT_EQ(config.getTimeOut(), 120U);
  EXPECT_EQ(config.getResponseSizeLimit(), 0x4000000U);
  EXPECT_STREQ(config.getClientCertFile(), "");
  EXPECT_STREQ(config.getClientPrivateKeyFile(), "");
  EXPECT_STREQ(config.getPrivateKeyPasswd(), "");
  EXPECT_STREQ(config.getCAFile(), "");
  EXPECT_STREQ(config.getRevocationListFile(), "");
  EXPECT_TRUE(config.getHostnameVerification());
  EXPECT_TRUE(config.getPeerVerification());
}

TEST(HttpClientConfig, isCopiedFromAnyConfigurationThroughItsNineGettersInOrder) {
  const NotingConfig source;
  const QXHttpClientConfig copy(source);
  EXPECT_THAT(source.read,
              ElementsAre("timeOut", "responseSizeLimit", "clientCertFile", "clientPrivateKeyFile",
                          "privateKeyPasswd", "caFile", "revocationListFile",
                          "hostnameVerification", "peerVerification"));
  EXPECT_EQ(copy.getTimeOut(), 11U);
  EXPECT_EQ(copy.getResponseSizeLimit(), 12U);
  EXPECT_STREQ(copy.getClientCertFile(), "cert");
  EXPECT_STREQ(copy.getClientPrivateKeyFile(), "key");
  EXPECT_STREQ(copy.getPrivateKeyPasswd(), "secret");
  EXPECT_STREQ(copy.getCAFile(), "ca");
  EXPECT_STREQ(copy.getRevocationListFile(), "crl");
  EXPECT_FALSE(copy.getHostnameVerification());
  EXPECT_FALSE(copy.getPeerVerification());
}

TEST(HttpClientConfig, aCopyIsIndependentOfItsSource) {
  auto source = std::make_unique<QXHttpClientConfig>();
  source->setCAFile("ca.pem");
  const QXHttpClientConfig copy(static_cast<const QXClientConfig&>(*source));
  source->setCAFile("other.pem");
  source->setTimeOut(1);
  source.reset();
  EXPECT_STREQ(copy.getCAFile(), "ca.pem");
  EXPECT_EQ(copy.getTimeOut(), 120U);
}

TEST(HttpClientConfig, isSetAndReadThroughItsInterface) {
  const std::unique_ptr<QXClientConfig> config = std::make_unique<QXHttpClientConfig>();
  config->setPeerVerification(false);
  EXPECT_FALSE(config->getPeerVerification());
}

}  // namespace
}  // namespace hcy
