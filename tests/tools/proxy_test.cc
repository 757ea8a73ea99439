// SPDX-License-Identifier: Apache-2.0
//
// Options that show or save a call do not change its way.

#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "replies.h"

namespace hcy::test {
namespace {

constexpr const char* kWithOptions[] = {"", "-v", "--save-request request.bin",
                                        "--save-reply reply.bin"};

Connection answers() { return {replyToEach(httpReply(200, "OK", resultOf({doubleScalar(7)})))}; }

// Calls a server in an environment with a proxy, with each of the options.
class ProxyTest : public testing::Test {
 protected:
  void callAll(const std::string& url, const std::string& noProxy) const {
    for (const char* const options : kWithOptions) {
      run("cd " + testing::TempDir() + " && http_proxy=" + proxy_.url() + " no_proxy=" + noProxy +
          " " HCY_PROGRAM " call " + url + " " + options);
    }
  }

  const ScriptServer proxy_{{answers()}}, server_{{answers()}};
};

TEST_F(ProxyTest, throughTheProxy) {
  callAll(server_.url("/f"), "localhost");
  EXPECT_EQ(proxy_.requests().size(), std::size(kWithOptions));
  EXPECT_EQ(server_.requests().size(), 0U);
}

TEST_F(ProxyTest, pastTheProxy) {
  callAll("http://localhost:" + std::to_string(server_.port()) + "/f", "localhost");
  EXPECT_EQ(proxy_.requests().size(), 0U);
  EXPECT_EQ(server_.requests().size(), std::size(kWithOptions));
}

}  // namespace
}  // namespace hcy::test
