// SPDX-License-Identifier: Apache-2.0

#include "bodies/loopback.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <string>
#include <vector>

#include "calls/evaluation.h"
#include "support/loopback.h"
#include "support/wire_bytes.h"

namespace hcy::test {
namespace {

std::uint16_t portOf(const std::string& url) {
  return static_cast<std::uint16_t>(std::stoul(url.substr(url.rfind(':') + 1)));
}

TEST(ToolLoopback, otherClientsDoNotKeepOursWaiting) {
  const tools::Loopback loopback(resultOf({doubleScalar(7)}));
  std::vector<FileDescriptor> others;
  for (const std::string beginning :
       {"", "POST ", "POST /other HTTP/1.1\r\n\r\n", "GET / HTTP/1.1\r\nHost:"}) {
    for (int i = 0; i < 10; ++i) {
      others.push_back(connectTo(portOf(loopback.url())));
      ::send(others.back().get(), beginning.data(), beginning.size(), MSG_NOSIGNAL);
    }
  }
  const hcyclient::Library library;
  hcyclient::Config config(library);
  config.setTimeout(std::chrono::seconds(5));
  const auto outputs =
      tools::evaluate(*library.runtime(), hcyclient::Context(config), loopback.url(), {}, 1);
  EXPECT_EQ(outputs[0].scalar(), 7);
}

TEST(ToolLoopback, endsWithoutARequest) {
  tools::Loopback loopback("");
  const FileDescriptor silent = connectTo(portOf(loopback.url()));
  EXPECT_TRUE(loopback.takeRequest().headers.empty());
}

}  // namespace
}  // namespace hcy::test
