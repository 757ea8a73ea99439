// SPDX-License-Identifier: Apache-2.0
//
// Contexts and the configurations that they copy.

#include <gtest/gtest.h>

#include <memory>

#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::ScriptServer;

class CallsContext : public CallTest {
 protected:
  ScriptServer server{{answering()}};
};

TEST_F(CallsContext, createContextReturns0AndOpensNoConnection) {
  const Context idle(library, config);
  EXPECT_NE(idle.get(), nullptr);
  EXPECT_EQ(resultOf(server.url()), kAnswer);  // accepted after any connection from before
  EXPECT_EQ(server.connections(), 1U);
}

TEST_F(CallsContext, twoContextsOfOneConfigurationOutliveIt) {
  auto settings = std::make_unique<Config>(library);
  library->setTimeOut(settings->get(), 30);
  library->setCAFile(settings->get(), "a text that is too long to be stored in place.pem");
  const Context one(library, *settings);
  const Context two(library, *settings);
  settings.reset();
  for (const Context* context : {&one, &two, &one}) {
    Outputs outputs(1);
    EXPECT_EQ(context->feval(server.url(), 1, outputs.data()), 0);
    EXPECT_EQ(hcyGetScalar(outputs[0]), kAnswer);
  }
}

TEST_F(CallsContext, keepsTheLimitThatTheConfigurationHadWhenItWasCreated) {
  const Context earlier(library, config);
  library->setResponseSizeLimit(config.get(), 1);
  const Context later(library, config);
  Outputs outputs(1);
  EXPECT_EQ(earlier.feval(server.url(), 1, outputs.data()), 0);
  EXPECT_EQ(later.feval(server.url(), 1, outputs.data()), 1);
  EXPECT_EQ(later.lastFailure(), kOverTheLimit);
  expectUsable(later);
}

TEST_F(CallsContext, anOutputCanBeSentBack) {
  Outputs outputs(1);
  ASSERT_EQ(context().feval(server.url(), 1, outputs.data()), 0);
  EXPECT_EQ(context().feval(server.url(), 1, Outputs(1).data(), {outputs[0]}), 0);
  EXPECT_EQ(server.requests().at(1).body,
            test::numberField(1, 1) + test::bytesField(2, test::doubleScalar(kAnswer)));
}

TEST_F(CallsContext, destroyingOneClosesItsConnection) {
  {
    const Context context(library, config);
    EXPECT_EQ(context.feval(server.url(), 1, Outputs(1).data()), 0);
  }
  EXPECT_TRUE(server.waitForEnded(1));
  EXPECT_TRUE(server.problems().empty());
}

TEST(CallsOutputs, outliveTheirContextAndTheLibrarysState) {
  const ScriptServer server({answering()});
  Outputs outputs(1);
  {
    const Library library;
    const Config settings(library);
    const Context context(library, settings);
    EXPECT_EQ(context.feval(server.url(), 1, outputs.data()), 0);
  }
  EXPECT_EQ(hcyGetScalar(outputs[0]), kAnswer);
  hcySetM(outputs[0], 2);
  EXPECT_EQ(hcyGetNumberOfElements(outputs[0]), 2U);
}

TEST(CallsContextOf10, aContextOfATableOf10Calls) {
  const ScriptServer server({answering()});
  const Library older(HCY_CLIENT_RUNTIME_1_0);
  const Config settings(older);
  const Context context(older, settings);
  Outputs outputs(1);
  EXPECT_EQ(context.feval(server.url(), 1, outputs.data()), 0);
  EXPECT_EQ(hcyGetScalar(outputs[0]), kAnswer);
}

}  // namespace
}  // namespace hcy::abi
