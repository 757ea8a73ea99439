// SPDX-License-Identifier: Apache-2.0

#include "http/http_client.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "support/process_curl.h"
#include "support/script_server.h"

namespace hcy {
namespace {

using test::Connection;
using test::httpReply;
using test::ScriptServer;

static_assert(!std::is_copy_constructible_v<QXHttpClient>);
static_assert(!std::is_copy_assignable_v<QXHttpClient>);

class HttpClientTest : public ::testing::Test {
 protected:
  const test::ProcessCurl curl;
};

TEST_F(HttpClientTest, hasTheDefaultsWithoutAConfiguration) {
  const QXHttpClient client;
  EXPECT_EQ(client.getConfig().getTimeOut(), 120U);
  EXPECT_EQ(client.getConfig().getResponseSizeLimit(), 67108864U);
  EXPECT_STREQ(client.getConfig().getCAFile(), "");
  EXPECT_TRUE(client.getConfig().getHostnameVerification());
  EXPECT_TRUE(client.getConfig().getPeerVerification());
}

TEST_F(HttpClientTest, keepsACopyOfItsConfiguration) {
  auto config = std::make_unique<QXHttpClientConfig>();
  config->setTimeOut(5);
  config->setResponseSizeLimit(6);
  config->setCAFile("ca.pem");
  const QXHttpClient client(*config);
  config->setTimeOut(7);
  config->setResponseSizeLimit(8);
  config->setCAFile("other.pem");
  config.reset();
  EXPECT_EQ(client.getConfig().getTimeOut(), 5U);
  EXPECT_EQ(client.getConfig().getResponseSizeLimit(), 6U);
  EXPECT_STREQ(client.getConfig().getCAFile(), "ca.pem");
}

TEST_F(HttpClientTest, keepsItsConnectionForTheRequestsThatFollow) {
  const ScriptServer server({Connection{test::replyToEach(httpReply(200, "OK", ""))}});
  QXHttpClient client;
  for (int i = 0; i < 10; ++i) {
    const std::unique_ptr<Request> request = client.createRequest(server.url());
    request->setBody("x", 1);
    EXPECT_EQ(request->perform()->statusCode(), 200U);
  }
  EXPECT_EQ(server.requests().size(), 10U);
  EXPECT_EQ(server.connections(), 1U);
}

TEST_F(HttpClientTest, keepsItsConnectionAcrossDifferentPathsAndStatuses) {
  const ScriptServer server({Connection{
      test::readRequest(), test::send(httpReply(404, "Not Found", "gone")), test::readRequest(),
      test::send(httpReply(200, "OK", "fine")), test::waitForClose()}});
  QXHttpClient client;
  const std::unique_ptr<Request> gone = client.createRequest(server.url("/gone"));
  gone->setBody("x", 1);
  EXPECT_EQ(gone->perform()->statusCode(), 404U);
  EXPECT_EQ(client.createRequest(server.url("/fine"))->perform()->statusCode(), 200U);
  EXPECT_EQ(server.connections(), 1U);
}

TEST_F(HttpClientTest, canBeDestroyedUnused) { const QXHttpClient client; }

TEST_F(HttpClientTest, isDestroyedThroughItsInterface) {
  const std::unique_ptr<QXClient> client = std::make_unique<QXHttpClient>();
  const std::unique_ptr<Request> request = client->createRequest("http://127.0.0.1/");
  EXPECT_NE(request, nullptr);
}

}  // namespace
}  // namespace hcy
