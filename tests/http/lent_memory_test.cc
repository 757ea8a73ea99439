// SPDX-License-Identifier: Apache-2.0
//
// A large reply takes the memory of a large request that has been sent.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "http/http_client.h"
#include "support/process_curl.h"
#include "support/script_server.h"

namespace hcy {
namespace {

using test::Connection;
using test::httpReply;
using test::readRequest;
using test::ScriptServer;
using test::send;

constexpr std::size_t kLarge = SpareBlock::kMostKept + 1;

class LentMemory : public ::testing::Test {
 protected:
  explicit LentMemory(std::size_t size = 2 * kLarge) : size_(size) {
    EXPECT_TRUE(memory.reserve(size));
    std::fill_n(memory.data(), size, 's');
  }

  std::unique_ptr<Response> call(const std::string& url) {
    const std::unique_ptr<Request> request = client_.createRequest(url);
    request->setBody(memory.data(), size_);
    request->lendMemory(memory);
    return request->perform();
  }

  bool isTaken() const { return memory.capacity() <= SpareBlock::kMostKept; }

  BodyBlock memory;

 private:
  std::size_t size_;
  const test::ProcessCurl curl_;
  QXHttpClient client_;
};

class LentSmallMemory : public LentMemory {
 protected:
  LentSmallMemory() : LentMemory(SpareBlock::kMostKept) {}
};

void expectBody(const Response& response, const std::string& body) {
  ASSERT_EQ(response.bodySize(), body.size());
  EXPECT_TRUE(std::equal(body.begin(), body.end(), response.bodyData()));
}

TEST_F(LentMemory, isTakenByALargeReplyWithoutWhatItDoesNotNeed) {
  const std::string body(kLarge, 'r');
  const ScriptServer server({Connection{readRequest(), send(httpReply(200, "OK", body))}});
  const char* const lent = memory.data();
  const std::unique_ptr<Response> response = call(server.url());
  EXPECT_TRUE(isTaken());
  EXPECT_EQ(response->bodyData(), lent);
  expectBody(*response, body);
}

TEST_F(LentMemory, growsForALargerReply) {
  const std::string body(4 * kLarge, 'r');
  const ScriptServer server({Connection{readRequest(), send(httpReply(200, "OK", body))}});
  const std::unique_ptr<Response> response = call(server.url());
  EXPECT_TRUE(isTaken());
  expectBody(*response, body);
}

TEST_F(LentMemory, isLeftByASmallReply) {
  const std::string body(SpareBlock::kMostKept, 'r');
  const ScriptServer server({Connection{readRequest(), send(httpReply(200, "OK", body))}});
  expectBody(*call(server.url()), body);
  EXPECT_FALSE(isTaken());
}

TEST_F(LentMemory, isLeftByAReplyOfAnotherStatus) {
  const std::string body(kLarge, 'r');
  const ScriptServer server({Connection{readRequest(), send(httpReply(404, "Gone", body))}});
  EXPECT_EQ(call(server.url())->statusCode(), 404U);
  EXPECT_FALSE(isTaken());
}

TEST_F(LentSmallMemory, isLeftByALargeReply) {
  const std::string body(kLarge, 'r');
  const ScriptServer server({Connection{readRequest(), send(httpReply(200, "OK", body))}});
  expectBody(*call(server.url()), body);
  EXPECT_EQ(memory.capacity(), SpareBlock::kMostKept);
}

// What is not sent yet is still to be read.
TEST_F(LentMemory, isLeftByAReplyThatComesBeforeTheRequestHasBeenSent) {
  const std::string body(kLarge, 'r');
  const std::string reply = httpReply(200, "OK", body);
  const std::size_t beginning = reply.size() - kLarge / 2;
  const ScriptServer server(
      {Connection{send(reply.substr(0, beginning)), readRequest(), send(reply.substr(beginning))}});
  const std::unique_ptr<Response> response = call(server.url());
  EXPECT_FALSE(isTaken());
  expectBody(*response, body);
  ASSERT_TRUE(server.waitForRequests(1));
  EXPECT_EQ(server.requests().at(0).body, std::string(2 * kLarge, 's'));
}

}  // namespace
}  // namespace hcy
