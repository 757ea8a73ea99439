// SPDX-License-Identifier: Apache-2.0
//
// What an exception tells a program: the reason, the URL, and whether another attempt makes sense.

#include <gtest/gtest.h>

#include <chrono>
#include <hcy/hcyclient.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "reply_arrays.h"
#include "support/libcurl_text.h"
#include "support/local_server.h"
#include "support/loopback.h"

namespace hcyclient {
namespace {

using hcy::test::LocalServer;
using hcy::test::UnlistenedPort;

Reason reasonOf(const std::string& message) { return TransportError(message).reason(); }

TEST(CppFailures, haveAReasonByTheTextsOfLibcurl7) {
  EXPECT_EQ(reasonOf("Timeout was reached"), Reason::timeout);
  EXPECT_EQ(reasonOf("Couldn't connect to server"), Reason::connectionRefused);
  EXPECT_EQ(reasonOf("Couldn't resolve host name"), Reason::nameNotResolved);
  EXPECT_EQ(reasonOf("Couldn't resolve proxy name"), Reason::nameNotResolved);
  EXPECT_EQ(reasonOf("Couldn't use specified SSL cipher"), Reason::tls);
}

TEST(CppFailures, haveAReasonByTheTextsOfLibcurl8) {
  EXPECT_EQ(reasonOf("Could not connect to server"), Reason::connectionRefused);
  EXPECT_EQ(reasonOf("Could not resolve hostname"), Reason::nameNotResolved);
  EXPECT_EQ(reasonOf("Could not resolve proxy name"), Reason::nameNotResolved);
  EXPECT_EQ(reasonOf("Could not use specified SSL cipher"), Reason::tls);
}

// The libcurl that the library is linked with here may be of either version.
TEST(CppFailures, haveAReasonByTheTextsOfTheLibcurlInUse) {
  const std::vector<std::pair<CURLcode, Reason>> codes = {
      {CURLE_OPERATION_TIMEDOUT, Reason::timeout},
      {CURLE_COULDNT_CONNECT, Reason::connectionRefused},
      {CURLE_COULDNT_RESOLVE_HOST, Reason::nameNotResolved},
      {CURLE_COULDNT_RESOLVE_PROXY, Reason::nameNotResolved},
      {CURLE_SSL_CONNECT_ERROR, Reason::tls},
      {CURLE_PEER_FAILED_VERIFICATION, Reason::tls},
      {CURLE_SSL_CERTPROBLEM, Reason::tls},
      {CURLE_BAD_FUNCTION_ARGUMENT, Reason::tls},
      {CURLE_SSL_CIPHER, Reason::tls},
      {CURLE_SSL_CACERT_BADFILE, Reason::tls},
      {CURLE_SSL_CRL_BADFILE, Reason::tls},
      {CURLE_SSL_ISSUER_ERROR, Reason::tls},
      {CURLE_SSL_ENGINE_INITFAILED, Reason::tls},
      {CURLE_SSL_INVALIDCERTSTATUS, Reason::tls},
      {CURLE_WRITE_ERROR, Reason::replyTooLarge},
      {CURLE_PARTIAL_FILE, Reason::incompleteReply},
      {CURLE_GOT_NOTHING, Reason::incompleteReply},
      {CURLE_RECV_ERROR, Reason::incompleteReply},
      {CURLE_SEND_ERROR, Reason::incompleteReply},
      {CURLE_OUT_OF_MEMORY, Reason::memory},
      {CURLE_WEIRD_SERVER_REPLY, Reason::other},
      {CURLE_UNSUPPORTED_PROTOCOL, Reason::other}};
  for (const auto& [code, reason] : codes) {
    const std::string text = hcy::test::libcurlText(code);
    EXPECT_EQ(reasonOf(text), reason) << text;
  }
}

template <class Call>
Reason reasonOfCall(Call call) {
  try {
    call();
  } catch (const TransportError& error) {
    return error.reason();
  }
  ADD_FAILURE() << "the call did not fail";
  return Reason::other;
}

TEST(CppFailures, haveAReasonThatCallsMeetThemselves) {
  const LocalServer server;
  const Library library;
  Config config(library);
  Context context(config.setTimeout(std::chrono::seconds(1)).setResponseSizeLimit(1000));
  EXPECT_EQ(reasonOfCall([&] { context.call(server.url("/demo/sleep"), 5.0); }), Reason::timeout);
  EXPECT_EQ(reasonOfCall([&] { context.call(UnlistenedPort().url()); }), Reason::connectionRefused);
  EXPECT_EQ(reasonOfCall([&] { context.call("https" + server.url("/echo").substr(4)); }),
            Reason::tls);
  EXPECT_EQ(reasonOfCall([&] { context.call(server.url("/echo"), std::vector<double>(1000)); }),
            Reason::replyTooLarge);
  const test::ReplyingServer two({test::twos({1}, 1), test::twos({1}, 1)});
  EXPECT_EQ(reasonOfCall([&] { context.call(two.url()); }), Reason::wrongOutputCount);
  const test::ReplyingServer other({test::numberField(1, 99)});
  EXPECT_EQ(reasonOfCall([&] { context.call(other.url()); }), Reason::classNotServed);
  EXPECT_EQ(reasonOf("std::bad_alloc"), Reason::memory);
  EXPECT_EQ(reasonOf(""), Reason::other);
}

template <class Call>
std::string descriptionOf(Call call) {
  try {
    call();
  } catch (const CallError& error) {
    return error.describe();
  }
  return "";
}

TEST(CppFailures, nameTheUrlWithoutUserInformation) {
  const LocalServer server;
  const Library library;
  Context context{Config(library)};
  const std::string there = server.url().substr(7);
  const std::string secret = "http://ada:p%40ss@" + there;
  EXPECT_EQ(descriptionOf([&] { context.call(secret + "/nothing?a@b"); }),
            "http://" + there + "/nothing?a@b: HTTP status 404 Not Found");
  EXPECT_EQ(descriptionOf([&] {
              context.feval(secret + "/demo/fail", {"a:b", "Why."}, 0);
            }),
            "http://" + there + "/demo/fail: Why.");
  const UnlistenedPort unlistened;
  const std::string nowhere = unlistened.url().substr(7);
  EXPECT_EQ(descriptionOf([&] { context.feval<1>("http://x:y@" + nowhere); }),
            "http://" + nowhere + ": " + hcy::test::libcurlText(CURLE_COULDNT_CONNECT));
  EXPECT_EQ(CallError("", "http://a:b@c@d").url(), "http://d");
  EXPECT_EQ(CallError("", "HTTPS://c/d@e").url(), "HTTPS://c/d@e");
  EXPECT_EQ(CallError("", "https://c#d@e").url(), "https://c#d@e");
  EXPECT_EQ(CallError("").url(), "");
}

TEST(CppFailures, tellWhetherAnotherAttemptMakesSense) {
  EXPECT_TRUE(HttpError(503, "Service Unavailable").isRetryable());
  EXPECT_FALSE(HttpError(500, "").isRetryable());
  EXPECT_TRUE(TransportError("Couldn't connect to server").isRetryable());
  EXPECT_FALSE(TransportError("Timeout was reached").isRetryable());
}

// By a handler that does not ask which kind of failure it has.
TEST(CppFailures, tellThatOfAnyCall) {
  const auto isRetryable = [](const CallError& error) { return error.isRetryable(); };
  EXPECT_TRUE(isRetryable(HttpError(503, "Service Unavailable")));
  EXPECT_FALSE(isRetryable(HttpError(500, "")));
  EXPECT_TRUE(isRetryable(TransportError("Couldn't connect to server")));
  EXPECT_FALSE(isRetryable(TransportError("Timeout was reached")));
  EXPECT_FALSE(isRetryable(FunctionError("", "", {})));
  EXPECT_FALSE(isRetryable(CallError("")));
}

TEST(CppFailures, printTheirReason) {
  std::ostringstream out;
  out << Reason::timeout << ' ' << Reason::wrongOutputCount << ' ' << Reason::memory;
  EXPECT_EQ(out.str(), "timeout wrongOutputCount memory");
  EXPECT_EQ(toString(Reason::connectionRefused), "connectionRefused");
  EXPECT_EQ(toString(Reason::other), "other");
  EXPECT_EQ(toString(static_cast<Reason>(99)), "other");
}

}  // namespace
}  // namespace hcyclient
