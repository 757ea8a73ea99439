// SPDX-License-Identifier: Apache-2.0
//
// Configurations, contexts and error records while memory runs out.

#include <string>

#include "memory/sweep.h"
#include "support/client.h"
#include "support/script_server.h"
#include "support/wire_bytes.h"

namespace hcy::abi {
namespace {

using test::FailingAllocation;

const std::string longText(100, 'x');

class ExhaustedMemoryInTheTable : public testing::Test {
 protected:
  // A slot that sets a text, and the one that tells it.
  struct TextSetting {
    void (*set)(hcyClientConfig* config, const char* text);
    const char* (*get)(const hcyClientConfig* config);
  };

  std::vector<TextSetting> textSettings() const {
    return {{library->setClientCertFile, library->getClientCertFile},
            {library->setClientPrivateKeyFile, library->getClientPrivateKeyFile},
            {library->setPrivateKeyPasswd, library->getPrivateKeyPasswd},
            {library->setCAFile, library->getCAFile},
            {library->setRevocationListFile, library->getRevocationListFile}};
  }

  // Whatever is made of it is destroyed.
  bool attemptConfig(const Shortage& shortage) const {
    hcyClientConfig* config = nullptr;
    const FailingAllocation failing(shortage.working, shortage.exhaustion);
    const int status = library->createConfig(&config);
    EXPECT_EQ(status, failing.hasFailed() ? 1 : 0);
    if (config != nullptr) library->destroyConfig(config);
    return failing.hasFailed();
  }

  bool attemptContext(const hcyClientConfig* config, const Shortage& shortage) const {
    hcyClientContext* context = nullptr;
    int status = 0;
    bool failed = false;
    {
      const FailingAllocation failing(shortage.working, shortage.exhaustion);
      status = library->createContext(&context, config);
      failed = failing.hasFailed();
    }
    // Not even a single setting may be missing from a context that was made.
    EXPECT_EQ(status, failed ? 1 : 0);
    if (context == nullptr) return failed;
    expectNoFailureYet(context);
    if (status != 0) {
      EXPECT_EQ(library->feval(context, "http://127.0.0.1:1/", 0, nullptr, 0, nullptr), 1);
    }
    library->destroyContext(context);
    return failed;
  }

  void expectNoFailureYet(const hcyClientContext* context) const {
    ErrorRecord record(library, context);
    EXPECT_EQ(record->kind, 0);
    EXPECT_STREQ(record->message, "");
    EXPECT_EQ(record->details.http.statusCode, 0U);
  }

  const Library library;
};

TEST_F(ExhaustedMemoryInTheTable, isAResultOfCreatingAConfiguration) {
  EXPECT_GT(failEachAllocation([&](const Shortage& shortage) { return attemptConfig(shortage); }),
            0U);
}

// A configuration that could not be made whole makes no context.
TEST_F(ExhaustedMemoryInTheTable, leavesAHalfMadeConfigurationThatMakesNoContext) {
  hcyClientConfig* half = nullptr;
  {
    const FailingAllocation failing(1);
    EXPECT_EQ(library->createConfig(&half), 1);
  }
  ASSERT_NE(half, nullptr);
  hcyClientContext* context = nullptr;
  EXPECT_EQ(library->createContext(&context, half), 1);
  if (context != nullptr) library->destroyContext(context);
  library->destroyConfig(half);
}

TEST_F(ExhaustedMemoryInTheTable, isAResultOfCreatingAContext) {
  const Config config(library);
  for (const TextSetting& setting : textSettings()) setting.set(config.get(), longText.c_str());
  EXPECT_GT(failEachAllocation(
                [&](const Shortage& shortage) { return attemptContext(config.get(), shortage); }),
            10U);
}

TEST_F(ExhaustedMemoryInTheTable, leavesATextSettingAsItWas) {
  const std::string before(50, 'b');
  for (const TextSetting& setting : textSettings()) {
    const std::size_t failures = failEachAllocation([&](const Shortage& shortage) {
      const Config config(library);
      setting.set(config.get(), before.c_str());
      const FailingAllocation failing(shortage.working, shortage.exhaustion);
      setting.set(config.get(), longText.c_str());
      const bool failed = failing.hasFailed();
      EXPECT_STREQ(setting.get(config.get()), (failed ? before : longText).c_str());
      return failed;
    });
    EXPECT_GT(failures, 0U);
  }
}

TEST_F(ExhaustedMemoryInTheTable, isNotMetByNumbersGettersAndDestruction) {
  const std::vector<TextSetting> texts = textSettings();
  const std::size_t failures = failEachAllocation([&](const Shortage& shortage) {
    hcyClientConfig* config = nullptr;
    EXPECT_EQ(library->createConfig(&config), 0);
    hcyClientContext* context = nullptr;
    EXPECT_EQ(library->createContext(&context, config), 0);
    const FailingAllocation failing(shortage.working, shortage.exhaustion);
    library->setTimeOut(config, library->getTimeOut(config) + 1);
    library->setResponseSizeLimit(config, library->getResponseSizeLimit(config) + 1);
    library->setHostnameVerification(config, !library->getHostnameVerification(config));
    library->setPeerVerification(config, !library->getPeerVerification(config));
    for (const TextSetting& setting : texts) EXPECT_STREQ(setting.get(config), "");
    hcyErrorInfo info{};
    library->getLastErrorInfo(context, &info);
    library->destroyLastErrorInfo(&info);
    library->destroyConfig(config);
    library->destroyContext(context);
    return failing.hasFailed();
  });
  EXPECT_EQ(failures, 0U);
}

TEST_F(ExhaustedMemoryInTheTable, leavesARecordWithoutItsStack) {
  const std::string body =
      test::errorResult("m", "i", {test::stackFrame("f", "n", 1), test::stackFrame("g", "o", 2)});
  const test::ScriptServer server(
      {test::Connection{test::replyToEach(test::httpReply(200, "OK", body))}});
  const Config config(library);
  const Context context(library, config);
  EXPECT_EQ(context.feval(server.url(), 0, nullptr), 1);
  const std::size_t failures = failEachAllocation([&](const Shortage& shortage) {
    hcyErrorInfo info{};
    const FailingAllocation failing(shortage.working, shortage.exhaustion);
    library->getLastErrorInfo(context.get(), &info);
    EXPECT_EQ(info.kind, HCY_VORTEN_ERROR);
    EXPECT_STREQ(info.details.vorten.message, "m");
    EXPECT_STREQ(info.details.vorten.identifier, "i");
    EXPECT_EQ(info.details.vorten.stackDepth, 2U);
    EXPECT_EQ(info.details.vorten.stack == nullptr, failing.hasFailed());
    library->destroyLastErrorInfo(&info);
    return failing.hasFailed();
  });
  EXPECT_EQ(failures, 2U);
  EXPECT_EQ(context.lastFailure(), vortenFailure("m", "i", {{"f", "n", 1}, {"g", "o", 2}}));
}

}  // namespace
}  // namespace hcy::abi
