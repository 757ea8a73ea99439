// SPDX-License-Identifier: Apache-2.0
//
// Each setting of the configuration file reaches the connection, and nothing else.

#include "settings/configuration.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "settings/settings.h"
#include "settings/target.h"
#include "support/pki.h"
#include "text/source_text.h"

namespace hcy::test {
namespace {

using Values = std::map<std::string, std::string>;

// A line of the file, and the values that it gives a connection.
struct Setting {
  std::string line;
  Values values;
};

class ConfigurationFile : public testing::Test {
 protected:
  ConfigurationFile() {
    ::setenv("HCY_CONFIG", directory_.file("config.toml").c_str(), 1);
    ::unsetenv("HCY_SERVER");
    // Both secrets must be private.
    EXPECT_EQ(::chmod(directory_.write("me.key", "").c_str(), 0600), 0);
    EXPECT_EQ(::chmod(directory_.write("me.pass", "four words\n").c_str(), 0600), 0);
    for (const char* const name : {"a.pem", "r.pem", "other.pem"}) directory_.write(name, "");
    settings_ = {{"timeout = 7", {{"timeout", "7"}}},
                 {"max-reply = 8", {{"max-reply", "8"}}},
                 {"ca = 'a.pem'", {{"ca", directory_.file("a.pem")}}},
                 {"crl = 'r.pem'", {{"crl", directory_.file("r.pem")}}},
                 {"cert = '/dev/null'", {{"cert", "/dev/null"}}},
                 {"key = 'me.key'", {{"key", directory_.file("me.key")}}},
                 {"key-pass-file = 'me.pass'", {{"pass phrase", "four words"}}},
                 {"verify-host = false", {{"verify-host", "false"}}},
                 {"verify-peer = false", {{"verify-peer", "false"}}}};
  }
  ~ConfigurationFile() override { ::unsetenv("HCY_CONFIG"); }

  // The options of `hcy call @lab f` with these settings of lab and of the command line.
  tools::Options resolved(const std::string& lines, const tools::Settings& given = {}) const {
    directory_.write("config.toml", "[servers.lab]\nurl = 'https://127.0.0.1:1'\n" + lines);
    tools::Options options;
    options.url = "@lab/f";
    options.settings = given;
    tools::resolveTarget(options);
    EXPECT_EQ(options.url, "https://127.0.0.1:1/f");
    return options;
  }

  Values valuesWith(const std::string& lines, const tools::Settings& given = {}) const {
    return valuesOf(resolved(lines, given).settings);
  }

  static Values valuesOf(const tools::Settings& settings) {
    const hcyclient::Library library;
    const auto config = tools::configFrom(library, settings);
    const hcyClientRuntime& runtime = *library.runtime();
    const auto text = [](const char* value) { return std::string(value == nullptr ? "" : value); };
    const auto word = [](bool value) { return std::string(value ? "true" : "false"); };
    return {{"timeout", std::to_string(runtime.getTimeOut(config.get()))},
            {"max-reply", std::to_string(runtime.getResponseSizeLimit(config.get()))},
            {"ca", text(runtime.getCAFile(config.get()))},
            {"crl", text(runtime.getRevocationListFile(config.get()))},
            {"cert", text(runtime.getClientCertFile(config.get()))},
            {"key", text(runtime.getClientPrivateKeyFile(config.get()))},
            {"pass phrase", text(runtime.getPrivateKeyPasswd(config.get()))},
            {"verify-host", word(runtime.getHostnameVerification(config.get()))},
            {"verify-peer", word(runtime.getPeerVerification(config.get()))}};
  }

  static Values with(Values values, const Values& others) {
    for (const auto& [name, value] : others) values[name] = value;
    return values;
  }

  const TestDirectory directory_;
  std::vector<Setting> settings_;
};

TEST_F(ConfigurationFile, allSettingsReachTheConnection) {
  std::string lines;
  Values expected;
  for (const Setting& setting : settings_) {
    lines += setting.line + "\n";
    expected = with(expected, setting.values);
  }
  EXPECT_EQ(valuesWith(lines), expected);
}

TEST_F(ConfigurationFile, eachSettingChangesOnlyItsOwnValue) {
  const Values usual = valuesOf({});
  EXPECT_EQ(valuesWith(""), usual);
  for (const Setting& setting : settings_) {
    const Values changed = with(usual, setting.values);
    EXPECT_NE(changed, usual) << setting.line;
    EXPECT_EQ(valuesWith(setting.line), changed) << setting.line;
  }
}

TEST_F(ConfigurationFile, thePassPhraseIsAskedForIfTheFileSaysSo) {
  EXPECT_FALSE(resolved("key = 'me.key'").settings.asksPassPhrase);
  EXPECT_FALSE(resolved("key = 'me.key'\nask-key-pass = false").settings.asksPassPhrase);
  EXPECT_TRUE(resolved("key = 'me.key'\nask-key-pass = true").settings.asksPassPhrase);
}

TEST_F(ConfigurationFile, theCommandLineTakesPrecedence) {
  std::string lines;
  for (const Setting& setting : settings_) lines += setting.line + "\n";
  const Values inTheFile = valuesWith(lines);

  const std::string other = directory_.file("other.pem");
  tools::Settings given;
  given.timeout = 9;
  EXPECT_EQ(valuesWith(lines, given), with(inTheFile, {{"timeout", "9"}}));
  given = {};
  given.largestReply = 10;
  EXPECT_EQ(valuesWith(lines, given), with(inTheFile, {{"max-reply", "10"}}));
  given = {};
  given.authorityFile = other;
  EXPECT_EQ(valuesWith(lines, given), with(inTheFile, {{"ca", other}}));
  given = {};
  given.revocationListFile = other;
  EXPECT_EQ(valuesWith(lines, given), with(inTheFile, {{"crl", other}}));

  // A certificate is used without the key and the pass phrase of another.
  given = {};
  given.certificateFile = other;
  EXPECT_EQ(valuesWith(lines, given),
            with(inTheFile, {{"cert", other}, {"key", ""}, {"pass phrase", ""}}));

  // The command line can only turn checks off.
  given = {};
  given.verifiesHost = given.verifiesPeer = false;
  EXPECT_EQ(valuesWith("", given),
            with(valuesOf({}), {{"verify-host", "false"}, {"verify-peer", "false"}}));
}

TEST_F(ConfigurationFile, eachSettingHasItsType) {
  for (const std::string line : {"timeout = '7'", "max-reply = 8.5", "max-reply = -1", "ca = 1",
                                 "crl = 1", "cert = 1", "key = 1", "key-pass-file = 1",
                                 "ask-key-pass = 1", "verify-host = 'no'", "verify-peer = 'no'"}) {
    EXPECT_THROW(valuesWith(line), tools::BadInput) << line;
  }
}

TEST_F(ConfigurationFile, bothSecretsMustBePrivate) {
  for (const std::string line : {"key = 'me.key'", "key-pass-file = 'me.pass'"}) {
    const std::string file = directory_.file(line.find("pass") == line.npos ? "me.key" : "me.pass");
    ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
    EXPECT_THROW(valuesWith(line), tools::BadInput) << line;
    ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
    EXPECT_NO_THROW(valuesWith(line)) << line;
  }
}

}  // namespace
}  // namespace hcy::test
