// SPDX-License-Identifier: Apache-2.0
//
// The settings of a configuration, through the runtime table.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "support/client.h"

namespace hcy::abi {
namespace {

class CallsConfig : public ::testing::Test {
 protected:
  Library library;
  Config config{library};
};

using SetText = decltype(hcyClientRuntime::setCAFile);
using GetText = decltype(hcyClientRuntime::getCAFile);
struct TextSetting {
  const char* name;
  SetText hcyClientRuntime::*set;
  GetText hcyClientRuntime::*get;
};

const TextSetting kTexts[] = {
    {"ClientCertFile", &hcyClientRuntime::setClientCertFile, &hcyClientRuntime::getClientCertFile},
    {"ClientPrivateKeyFile", &hcyClientRuntime::setClientPrivateKeyFile,
     &hcyClientRuntime::getClientPrivateKeyFile},
    {"PrivateKeyPasswd", &hcyClientRuntime::setPrivateKeyPasswd,
     &hcyClientRuntime::getPrivateKeyPasswd},
    {"CAFile", &hcyClientRuntime::setCAFile, &hcyClientRuntime::getCAFile},
    {"RevocationListFile", &hcyClientRuntime::setRevocationListFile,
     &hcyClientRuntime::getRevocationListFile},
};

class CallsConfigText : public CallsConfig, public ::testing::WithParamInterface<TextSetting> {
 protected:
  using CallsConfig::config;

  void set(const char* text) { (table().*GetParam().set)(config.get(), text); }
  const char* get() { return (table().*GetParam().get)(config.get()); }
  const hcyClientRuntime& table() { return *library.operator->(); }
};

INSTANTIATE_TEST_SUITE_P(Settings, CallsConfigText, ::testing::ValuesIn(kTexts),
                         [](const auto& setting) { return std::string(setting.param.name); });

TEST_F(CallsConfig, hasTheDefaults) {
  EXPECT_EQ(library->getTimeOut(config.get()), 120U);
  EXPECT_EQ(library->getResponseSizeLimit(config.get()), 67108864U);
  EXPECT_TRUE(library->getHostnameVerification(config.get()));
  EXPECT_TRUE(library->getPeerVerification(config.get()));
}

TEST_F(CallsConfig, keepsAnyTimeOut) {
  for (const std::uint32_t seconds : {0U, 1U, 5U, std::numeric_limits<std::uint32_t>::max()}) {
    library->setTimeOut(config.get(), seconds);
    EXPECT_EQ(library->getTimeOut(config.get()), seconds);
  }
  EXPECT_EQ(library->getResponseSizeLimit(config.get()), 67108864U);
}

TEST_F(CallsConfig, keepsAnyResponseSizeLimit) {
  for (const std::uint32_t bytes : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    library->setResponseSizeLimit(config.get(), bytes);
    EXPECT_EQ(library->getResponseSizeLimit(config.get()), bytes);
  }
  EXPECT_EQ(library->getTimeOut(config.get()), 120U);
}

TEST_F(CallsConfig, switchesHostnameVerificationAlone) {
  library->setHostnameVerification(config.get(), false);
  EXPECT_FALSE(library->getHostnameVerification(config.get()));
  EXPECT_TRUE(library->getPeerVerification(config.get()));
  library->setHostnameVerification(config.get(), true);
  EXPECT_TRUE(library->getHostnameVerification(config.get()));
}

TEST_F(CallsConfig, switchesPeerVerificationAlone) {
  library->setPeerVerification(config.get(), false);
  EXPECT_FALSE(library->getPeerVerification(config.get()));
  EXPECT_TRUE(library->getHostnameVerification(config.get()));
  library->setPeerVerification(config.get(), true);
  EXPECT_TRUE(library->getPeerVerification(config.get()));
}

TEST_F(CallsConfig, oneConfigurationDoesNotSeeTheSettingsOfAnother) {
  const Config other(library);
  library->setTimeOut(config.get(), 5);
  library->setCAFile(config.get(), "ca.pem");
  EXPECT_EQ(library->getTimeOut(other.get()), 120U);
  EXPECT_STREQ(library->getCAFile(other.get()), "");
}

TEST(CallsConfigOf10, aTableOf10ServesTheSettingsOf10) {
  const Library older(HCY_CLIENT_RUNTIME_1_0);
  const Config settings(older);
  older->setTimeOut(settings.get(), 7);
  older->setResponseSizeLimit(settings.get(), 8);
  EXPECT_EQ(older->getTimeOut(settings.get()), 7U);
  EXPECT_EQ(older->getResponseSizeLimit(settings.get()), 8U);
}

TEST_P(CallsConfigText, isEmptyByDefault) { EXPECT_STREQ(get(), ""); }

TEST_P(CallsConfigText, isStoredUnchangedWhateverItSays) {
  for (const std::string text : {"a.pem", " ", "/no/such/file", "\xFF\xFE caf\xC3\xA9\r\n"}) {
    set(text.c_str());
    EXPECT_EQ(get(), text);
  }
  const std::string kilobytes(100'000, 'x');
  set(kilobytes.c_str());
  EXPECT_EQ(get(), kilobytes);
}

TEST_P(CallsConfigText, isACopyOfTheText) {
  std::string text = "short";
  set(text.c_str());
  text.assign("other");
  EXPECT_STREQ(get(), "short");
}

TEST_P(CallsConfigText, isRemovedByTheEmptyTextAndByNull) {
  set("a.pem");
  set("");
  EXPECT_STREQ(get(), "");
  set("a.pem");
  set(nullptr);
  EXPECT_STREQ(get(), "");
}

TEST_P(CallsConfigText, staysReadableInPlaceWhileAllOtherSettingsChange) {
  const std::string text(100, 'x');
  set(text.c_str());
  const char* const read = get();
  for (const TextSetting& other : kTexts) {
    if (other.get == GetParam().get) continue;
    (table().*other.set)(config.get(), "other");
    EXPECT_STREQ((table().*other.get)(config.get()), "other");
  }
  library->setTimeOut(config.get(), 1);
  library->setResponseSizeLimit(config.get(), 1);
  library->setHostnameVerification(config.get(), false);
  library->setPeerVerification(config.get(), false);
  EXPECT_EQ(read, text);
  EXPECT_EQ(get(), read);
}

}  // namespace
}  // namespace hcy::abi
