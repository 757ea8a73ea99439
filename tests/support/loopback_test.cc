// SPDX-License-Identifier: Apache-2.0
#include "loopback.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <memory>
#include <system_error>
#include <utility>

namespace hcy::test {
namespace {

TEST(FileDescriptor, BelongsToOneOwner) {
  const UnlistenedPort port;
  const FileDescriptor listener = listenOn(port.number(), 1);
  FileDescriptor first = connectTo(port.number());
  const int descriptor = first.get();
  FileDescriptor second = std::move(first);
  EXPECT_EQ(second.get(), descriptor);
  second = FileDescriptor();
  EXPECT_FALSE(second.isOpen());
}

TEST(UnlistenedPort, RefusesConnections) {
  const UnlistenedPort port;
  try {
    connectTo(port.number());
    FAIL() << "connected";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::connection_refused);
  }
}

TEST(StalledPort, LeavesConnectionsPending) {
  const StalledPort port;
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(),
                                                                   curl_easy_cleanup);
  curl_easy_setopt(handle.get(), CURLOPT_URL, port.url().c_str());
  curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle.get(), CURLOPT_NOPROXY, "*");
  curl_easy_setopt(handle.get(), CURLOPT_CONNECTTIMEOUT_MS, 300L);
  EXPECT_EQ(curl_easy_perform(handle.get()), CURLE_OPERATION_TIMEDOUT);
  double connectTime = -1;
  curl_easy_getinfo(handle.get(), CURLINFO_CONNECT_TIME, &connectTime);
  EXPECT_EQ(connectTime, 0.0);
}

}  // namespace
}  // namespace hcy::test
