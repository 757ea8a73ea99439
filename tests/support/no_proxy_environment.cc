// SPDX-License-Identifier: Apache-2.0
//
// Linked into a test program, takes the proxies out of its environment: libcurl would send calls
// to a server on this machine through them.

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class NoProxyEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    for (const char* name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy", "HTTP_PROXY",
                             "HTTPS_PROXY", "ALL_PROXY", "NO_PROXY"}) {
      ::unsetenv(name);
    }
  }
};

[[maybe_unused]] const auto* const environment =
    ::testing::AddGlobalTestEnvironment(new NoProxyEnvironment);

}  // namespace
