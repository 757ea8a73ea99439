// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "outcome.h"
#include "support/libcurl_text.h"
#include "support/local_server.h"
#include "support/loopback.h"

namespace hcy::test {
namespace {

using testing::HasSubstr;

// Runs the example against a server of its own, behind `prefix` if there is one.
Outcome runNorris(const std::string& prefix) {
  const LocalServer server;
  const UnlistenedPort unlistened;
  return run(prefix + " " HCY_NORRIS " " + server.url() + " " HCY_NORRIS_DATA " " +
             unlistened.url());
}

TEST(Norris, AgreesWithTheCertifiedValuesToNineDigitsAndMore) {
  const Outcome run = runNorris("");
  EXPECT_EQ(run.status, 0) << run.output;
  const std::regex digits("digits +([0-9.]+)");
  int compared = 0;
  for (std::sregex_iterator it(run.output.begin(), run.output.end(), digits), end; it != end;
       ++it) {
    EXPECT_GE(std::stod((*it)[1]), 9.0) << run.output;
    ++compared;
  }
  EXPECT_EQ(compared, 7) << run.output;
}

TEST(Norris, ShowsThreeKindsOfFailure) {
  const Outcome run = runNorris("");
  EXPECT_THAT(run.output, HasSubstr("Error was thrown while executing VORTEN code\n"
                                    "  example:demonstration: This error was asked for.\n"
                                    "    at "));
  EXPECT_THAT(run.output, HasSubstr("A non-200 HTTP response was received\n"
                                    "  status 404 Not Found\n"));
  EXPECT_THAT(run.output, HasSubstr("A generic error was thrown\n  " +
                                    libcurlText(CURLE_COULDNT_CONNECT) + "\n"));
}

#ifdef HCY_VALGRIND
TEST(Norris, LeaksNothing) {
  const Outcome run = runNorris(HCY_VALGRIND
                                " --quiet --leak-check=full --error-exitcode=99"
                                " --errors-for-leak-kinds=definite,indirect,possible");
  EXPECT_EQ(run.status, 0) << run.output;
}
#endif

}  // namespace
}  // namespace hcy::test
