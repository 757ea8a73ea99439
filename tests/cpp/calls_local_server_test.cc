// SPDX-License-Identifier: Apache-2.0
//
// Calls through the C++ API against the local server.

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "support/libcurl_text.h"
#include "support/local_server.h"
#include "support/loopback.h"

namespace hcyclient {
namespace {

using hcy::test::LocalServer;
using hcy::test::UnlistenedPort;

static_assert(std::is_nothrow_move_constructible_v<Library> &&
              !std::is_copy_constructible_v<Library>);
static_assert(std::is_nothrow_move_constructible_v<Config> &&
              std::is_copy_constructible_v<Config> && std::is_copy_assignable_v<Config>);
static_assert(std::is_nothrow_move_constructible_v<Context> &&
              !std::is_copy_constructible_v<Context>);
static_assert(sizeof(Library) == sizeof(void*));
static_assert(std::is_nothrow_copy_constructible_v<HttpError> &&
              std::is_nothrow_copy_constructible_v<FunctionError> &&
              std::is_nothrow_copy_constructible_v<TransportError>);

class CppCalls : public ::testing::Test {
 protected:
  const LocalServer server;
  Library library;
  Config config{library};
  Context context{config};
};

TEST_F(CppCalls, takeValuesAndGiveArrays) {
  const std::vector<Array> sums = context.feval(server.url("/math/plus"), {2.0, {1.0, 2.0}});
  ASSERT_EQ(sums.size(), 1U);
  EXPECT_EQ(sums[0].toVector<double>(), (std::vector<double>{3, 4}));
}

TEST_F(CppCalls, takeAndGiveAnyNumberOfArrays) {
  for (const int count : {0, 1, 7, 8, 9, 16, 17}) {
    std::vector<Array> inputs;
    for (int i = 0; i < count; ++i) inputs.emplace_back(static_cast<double>(i));
    const auto outputs = context.feval(server.url("/echo"), inputs, count);
    ASSERT_EQ(outputs.size(), inputs.size());
    for (int i = 0; i < count; ++i) EXPECT_EQ(outputs.at(static_cast<std::size_t>(i)).scalar(), i);
  }
}

TEST_F(CppCalls, takeArraysThatStayTheCallers) {
  const Array a{1.0, 2.0};
  std::vector<Array> inputs;
  inputs.push_back(a.copy());
  inputs.push_back("text");
  for (int i = 0; i < 2; ++i) {
    const auto outputs = context.feval(server.url("/echo"), inputs, 2);
    EXPECT_EQ(outputs.at(0).toVector<double>(), a.toVector<double>());
    EXPECT_EQ(outputs.at(1).toString(), "text");
  }
  EXPECT_EQ(context.feval(server.url("/echo"), {a, a, a}, 3).at(2).toVector<double>(),
            a.toVector<double>());
}

TEST_F(CppCalls, takeAndGiveMoreArraysThanNeedNoMemory) {
  std::vector<Array> inputs;
  for (int i = 0; i < 20; ++i) inputs.push_back(static_cast<double>(i));
  const auto outputs = context.feval(server.url("/echo"), inputs, 20);
  ASSERT_EQ(outputs.size(), 20U);
  for (std::size_t i = 0; i < 20; ++i) EXPECT_EQ(outputs[i].scalar(), static_cast<double>(i));
}

TEST_F(CppCalls, mayHaveNeitherInputsNorOutputs) {
  EXPECT_TRUE(context.feval(server.url("/echo"), {}, 0).empty());
  EXPECT_TRUE(context.feval(server.url("/echo"), std::vector<Array>(), 0).empty());
}

TEST_F(CppCalls, carryContainers) {
  const Array s = Array::structOf({{"text", "\u00e9"}, {"cell", Array::cellOf({1, true})}});
  const Array back = context.feval(server.url("/echo"), {s}).at(0);
  EXPECT_EQ(back("text").toString(), "\u00e9");
  EXPECT_EQ(back("cell")[1].className(), "logical");
}

TEST_F(CppCalls, throwAnErrorOfTheFunction) {
  try {
    context.feval(server.url("/demo/fail"), {"cpp:test", "Said so.", 2.0}, 0);
    FAIL();
  } catch (const FunctionError& error) {
    EXPECT_STREQ(error.what(), "Said so.");
    EXPECT_EQ(error.identifier(), "cpp:test");
    ASSERT_EQ(error.stack().size(), 2U);
    EXPECT_EQ(error.stack()[1].file, "demo/fail_2");
    EXPECT_EQ(error.stack()[1].name, "fail_2");
    EXPECT_EQ(error.stack()[1].line, 2);
  }
}

TEST_F(CppCalls, throwAnHttpStatus) {
  try {
    context.feval(server.url("/not/there"));
    FAIL();
  } catch (const HttpError& error) {
    EXPECT_STREQ(error.what(), "HTTP status 404 Not Found");
    EXPECT_EQ(error.status(), 404U);
    EXPECT_EQ(error.reason(), "Not Found");
  }
}

TEST_F(CppCalls, throwAFailureOfTheTransport) {
  const UnlistenedPort unlistened;
  try {
    context.feval(unlistened.url());
    FAIL();
  } catch (const TransportError& error) {
    EXPECT_EQ(error.what(), hcy::test::libcurlText(CURLE_COULDNT_CONNECT));
  }
}

TEST_F(CppCalls, haveOneBaseForAllFailures) {
  EXPECT_THROW(context.feval(server.url("/demo/fail"), {"a:b", "c"}, 0), CallError);
  EXPECT_THROW(context.feval(server.url("/not/there")), CallError);
  EXPECT_THROW(context.feval(UnlistenedPort().url()), CallError);
  EXPECT_THROW(context.feval(server.url("/echo"), {}, -1), Error);
  EXPECT_THROW(context.feval(std::string("http://a\0", 9)), Error);
  EXPECT_THROW(context.feval(server.url("/echo"), {Array()}), Error);
  EXPECT_EQ(context.feval(server.url("/echo"), {1.0})[0].scalar(), 1);
}

TEST_F(CppCalls, followTheSettings) {
  config.setTimeout(std::chrono::seconds(1)).setResponseSizeLimit(1000);
  Context limited(config);
  EXPECT_THROW(limited.feval(server.url("/demo/sleep"), {5.0}), TransportError);
  EXPECT_THROW(limited.feval(server.url("/echo"), {Array::zeros<double>(1000, 1)}), TransportError);
  EXPECT_EQ(limited.feval(server.url("/echo"), {1.0})[0].scalar(), 1);
}

TEST_F(CppCalls, goOnInAContextThatMoved) {
  Context moved = std::move(context);
  Config movedConfig = std::move(config);
  EXPECT_EQ(moved.feval(server.url("/echo"), {1.0})[0].scalar(), 1);
  context = std::move(moved);
  EXPECT_EQ(context.feval(server.url("/echo"), {1.0})[0].scalar(), 1);
}

TEST(CppConfig, keepsWhatIsSet) {
  const Library library;
  Config config(library);
  config.setTimeout(std::chrono::minutes(2))
      .setResponseSizeLimit(7)
      .setClientCertificateFile("certificate")
      .setClientPrivateKeyFile("key")
      .setPrivateKeyPassPhrase("phrase")
      .setAuthorityFile("authority")
      .setRevocationListFile("list")
      .setHostnameVerification(false)
      .setPeerVerification(false);
  const hcyClientRuntime* const runtime = library.runtime();
  Config assigned(library);
  assigned = config;
  for (const Config& seen : {config, Config(config), assigned}) {
    EXPECT_EQ(runtime->getTimeOut(seen.get()), 120U);
    EXPECT_EQ(seen.timeout(), std::chrono::minutes(2));
    EXPECT_EQ(runtime->getResponseSizeLimit(seen.get()), 7U);
    EXPECT_EQ(seen.responseSizeLimit(), 7U);
    EXPECT_STREQ(runtime->getClientCertFile(seen.get()), "certificate");
    EXPECT_EQ(seen.clientCertificateFile(), "certificate");
    EXPECT_STREQ(runtime->getClientPrivateKeyFile(seen.get()), "key");
    EXPECT_EQ(seen.clientPrivateKeyFile(), "key");
    EXPECT_STREQ(runtime->getPrivateKeyPasswd(seen.get()), "phrase");
    EXPECT_EQ(seen.privateKeyPassPhrase(), "phrase");
    EXPECT_STREQ(runtime->getCAFile(seen.get()), "authority");
    EXPECT_EQ(seen.authorityFile(), "authority");
    EXPECT_STREQ(runtime->getRevocationListFile(seen.get()), "list");
    EXPECT_EQ(seen.revocationListFile(), "list");
    EXPECT_FALSE(runtime->getHostnameVerification(seen.get()) || seen.hostnameVerification());
    EXPECT_FALSE(runtime->getPeerVerification(seen.get()) || seen.peerVerification());
  }
  // Copies are apart.
  assigned.setAuthorityFile("another");
  EXPECT_EQ(config.authorityFile(), "authority");
}

TEST(CppConfig, takesDurationsAndPaths) {
  const Library library;
  Config config(library);
  EXPECT_EQ(config.setTimeout(std::chrono::milliseconds(1500)).timeout(), std::chrono::seconds(2));
  EXPECT_EQ(config.setTimeout(std::chrono::hours(1)).timeout(), std::chrono::hours(1));
  EXPECT_EQ(config.setTimeout(std::chrono::duration<double>(0.1)).timeout(),
            std::chrono::seconds(1));
  EXPECT_EQ(config.setTimeout(std::chrono::seconds(0)).timeout(), std::chrono::seconds(0));
  EXPECT_THROW(config.setTimeout(std::chrono::duration<double>(std::nan(""))), UsageError);
  EXPECT_THROW(config.setTimeout(std::chrono::hours(10000000)), UsageError);
  EXPECT_THROW(config.setTimeout(std::chrono::milliseconds(-1001)), UsageError);
  EXPECT_EQ(config.setAuthorityFile(std::filesystem::path("a") / "b").authorityFile(), "a/b");
  EXPECT_EQ(config.setAuthorityFile(std::string_view("abc").substr(1)).authorityFile(), "bc");
}

TEST(CppConfig, refusesWhatTheLibraryCannotHold) {
  const Library library;
  Config config(library);
  EXPECT_THROW(config.setTimeout(std::chrono::seconds(-1)), UsageError);
  EXPECT_THROW(config.setTimeout(std::chrono::seconds(std::int64_t{1} << 32)), UsageError);
  EXPECT_THROW(config.setResponseSizeLimit(std::uint64_t{1} << 32), UsageError);
  EXPECT_THROW(config.setResponseSizeLimit(UINT64_MAX), UsageError);
  EXPECT_THROW(config.setAuthorityFile(std::string("a\0b", 3)), UsageError);
  EXPECT_EQ(library.runtime()->getTimeOut(config.get()), 120U);
  EXPECT_STREQ(library.runtime()->getCAFile(config.get()), "");
}

TEST(CppLibrary, endsWithItsOwner) {
  hcyInitializeEx(0);
  ASSERT_STRNE(hcyGetInitializationErrorMessage(), "");
  {
    Library first;
    Library moved = std::move(first);
    EXPECT_THROW(first.runtime(), UsageError);
    ASSERT_NE(moved.runtime(), nullptr);
  }
  EXPECT_NE(hcyInitialize()->createConfig, nullptr);
  EXPECT_THROW(Library(), InitializationError);
  // What other code has started is still there.
  EXPECT_EQ(hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1)->setCAFile, nullptr);
  hcyTerminate();
  EXPECT_NO_THROW(Library());
}

}  // namespace
}  // namespace hcyclient
