// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

#include "calls.h"
#include "http_client.h"

namespace hcy::test {
namespace {

using std::chrono::steady_clock;

TEST(Fail, RaisesTheError) {
  const LocalServer server;
  const auto result =
      call(server, "/demo/fail", 1, {chars(u"a:b"), chars(u"It broke."), scalar(3)});
  EXPECT_EQ(result.lhs_size(), 0);
  EXPECT_EQ(result.error().identifier(), "a:b");
  EXPECT_EQ(result.error().message(), "It broke.");
  ASSERT_EQ(result.error().stack_size(), 3);
  for (int i = 0; i < 3; ++i) {
    const std::string number = std::to_string(i + 1);
    EXPECT_EQ(result.error().stack(i).file(), "demo/fail_" + number);
    EXPECT_EQ(result.error().stack(i).name(), "fail_" + number);
    EXPECT_EQ(result.error().stack(i).line(), i + 1);
  }
}

TEST(Fail, HasOneFrameUnlessTold) {
  const LocalServer server;
  const auto result = call(server, "/demo/fail", 0, {chars(u""), chars(u"")});
  EXPECT_TRUE(result.has_error());
  EXPECT_EQ(result.error().message(), "");
  EXPECT_EQ(result.error().stack_size(), 1);
  const auto none = call(server, "/demo/fail", 0, {chars(u""), chars(u""), scalar(0)});
  EXPECT_TRUE(none.has_error());
  EXPECT_EQ(none.error().stack_size(), 0);
}

TEST(Fail, GoesDeep) {
  const LocalServer server;
  const auto result = call(server, "/demo/fail", 0, {chars(u"a:b"), chars(u"c"), scalar(1e5)});
  ASSERT_EQ(result.error().stack_size(), 100'000);
  EXPECT_EQ(result.error().stack(99'999).line(), 100'000);
  const HttpReply million = sendRequest(
      server.url("/demo/fail"), serializedParams(0, {chars(u"a:b"), chars(u"c"), scalar(1e6)}));
  EXPECT_EQ(million.status, 200);
  EXPECT_GT(million.body.size(), 30'000'000U);
}

TEST(Fail, SpeaksUtf8) {
  const LocalServer server;
  auto broken = chars(u"a-b-");
  broken.mutable_qxchar()->set_elements(1, 0xDC00);
  broken.mutable_qxchar()->set_elements(3, 0xD83D);
  const auto result =
      call(server, "/demo/fail", 0, {broken, chars(u"\u007f\u07ff\uffff\U0010FFFF")});
  EXPECT_EQ(result.error().identifier(),
            "a\xef\xbf\xbd"
            "b\xef\xbf\xbd");
  EXPECT_EQ(result.error().message(), "\x7f\xdf\xbf\xef\xbf\xbf\xf4\x8f\xbf\xbf");
}

TEST(Fail, RefusesWrongArguments) {
  const LocalServer server;
  const auto error = [&server](const std::vector<VORTEN_Array>& arguments) {
    return errorOf(server, "/demo/fail", 0, arguments);
  };
  const auto text = chars(u"a");
  for (const double depth : {-1.0, 0.5, 1e6 + 1, 1e300, std::nan("")}) {
    EXPECT_EQ(error({text, text, scalar(depth)}), "halcyon:argument:value") << depth;
  }
  EXPECT_EQ(error({text, text, doubles({1, 2}, {1, 2})}), "halcyon:argument:size");
  EXPECT_EQ(error({text, text, text}), "halcyon:argument:class");
  EXPECT_EQ(error({text, scalar(1)}), "halcyon:argument:class");
  EXPECT_EQ(error({scalar(1), text}), "halcyon:argument:class");
  EXPECT_EQ(error({text}), "halcyon:argument:count");
  EXPECT_EQ(error({text, text, scalar(1), text}), "halcyon:argument:count");
}

TEST(Sleep, TakesItsTime) {
  const LocalServer server;
  const auto start = steady_clock::now();
  outputs(server, "/demo/sleep", 0, {scalar(0.25)});
  EXPECT_GE(steady_clock::now() - start, std::chrono::milliseconds(250));
}

TEST(Sleep, GivesBackItsArgument) {
  const LocalServer server;
  EXPECT_EQ(realPart(outputs(server, "/demo/sleep", 1, {scalar(1e-4)})[0]),
            (std::vector<double>{1e-4}));
  EXPECT_EQ(realPart(outputs(server, "/demo/sleep", 1, {scalar(0)})[0]), (std::vector<double>{0}));
}

TEST(Sleep, RefusesWrongArguments) {
  const LocalServer server;
  const auto error = [&server](const VORTEN_Array& seconds) {
    return errorOf(server, "/demo/sleep", 0, {seconds});
  };
  for (const double seconds : {-1e-9, 3600.001, HUGE_VAL, std::nan("")}) {
    EXPECT_EQ(error(scalar(seconds)), "halcyon:argument:value") << seconds;
  }
  EXPECT_EQ(error(complexDoubles({1, 1}, {1}, {1})), "halcyon:argument:value");
  EXPECT_EQ(error(doubles({0, 0}, {})), "halcyon:argument:size");
  EXPECT_EQ(error(chars(u"1")), "halcyon:argument:class");
  EXPECT_EQ(errorOf(server, "/demo/sleep", 0, {}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/demo/sleep", 2, {scalar(0)}), "halcyon:argument:count");
}

}  // namespace
}  // namespace hcy::test
