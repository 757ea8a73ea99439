// SPDX-License-Identifier: Apache-2.0

#include "bodies/loopback.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "examples/outcome.h"
#include "results/evaluation.h"
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

#ifndef HCY_SANITIZED  // the sanitizers need more addresses than that

// Some of these limits are reached in the thread of the server, which reads the request.
TEST(ToolLoopback, isEndedByAShortageOfMemory) {
  const std::string file = testing::TempDir() + "eight_megabytes.npy";
  std::string header = "{'descr': '<f8', 'fortran_order': False, 'shape': (1000000,), }";
  header.resize(117, ' ');
  std::ofstream(file, std::ios::binary) << "\x93NUMPY\x01" << '\0' << 'v' << '\0' << header << '\n'
                                        << std::string(8000000, '\0');
  for (int kilobytes = 30000; kilobytes < 90000; kilobytes += 3000) {
    const Outcome outcome = run("bash -c 'ulimit -v " + std::to_string(kilobytes) +
                                "; " HCY_PROGRAM " encode \"@$1\" > /dev/null' hcy '" + file + "'");
    EXPECT_LT(outcome.status, 128) << kilobytes << ": " << outcome.output;
  }
  std::remove(file.c_str());
}

#endif

}  // namespace
}  // namespace hcy::test
