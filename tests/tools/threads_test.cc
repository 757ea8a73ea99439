// SPDX-License-Identifier: Apache-2.0

#include "calls/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "replies.h"
#include "results/exit_status.h"

namespace hcy::test {
namespace {

TEST(Threads, eachHasItsNumberAndIsAwaited) {
  std::atomic<unsigned> sum = 0;
  {
    const tools::Threads threads(5, [&sum](unsigned i) { sum += 1U << i; });
  }
  EXPECT_EQ(sum, 0b11111U);
}

#ifndef HCY_SANITIZED  // the sanitizers need more addresses than that

void expectNoCalls(const std::string& command) {
  const ScriptServer server({{replyToEach(httpReply(200, "OK", resultOf({doubleScalar(7)})))}});
  const std::string limited = "ulimit -v 1500000; " HCY_PROGRAM " ";
  const Outcome outcome =
      run("timeout 30 bash -c '" + limited + command + "' hcy " + server.url("/f"));
  EXPECT_EQ(outcome.status, tools::kUsage);
  EXPECT_EQ(outcome.output, "hcy: cannot start 1000 threads: Resource temporarily unavailable\n");
  EXPECT_EQ(server.requests().size(), 0U);
}

TEST(Threads, ofABenchmarkAllStartOrNone) {
  expectNoCalls("bench \"$1\" 1 --threads 1000");
  expectNoCalls("bench \"$1\" 1 --threads 1000 --warmup 10");
}

TEST(Threads, ofManyCallsAllStartOrNone) {
  expectNoCalls("call \"$1\" --each --jobs 1000 < <(yes \"[1]\" | head -n 2000)");
}

#endif

}  // namespace
}  // namespace hcy::test
