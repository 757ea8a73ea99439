// SPDX-License-Identifier: Apache-2.0
//
// Owners of the library, of settings and of connections: several at once, moved from, and used by
// two threads.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <hcy/hcyclient.hpp>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "library_user.h"
#include "refusal.h"
#include "support/local_server.h"
#include "support/loopback.h"

namespace hcyclient {
namespace {

using hcy::test::LocalServer;
using hcy::test::UnlistenedPort;

// The library tells: only one that has been ended starts again for an older version.
bool isStarted() {
  const bool started = hcyInitialize()->setPeerVerification != nullptr;
  if (!started) hcyTerminate();
  return started;
}

TEST(CppLibraries, areCounted) {
  const LocalServer server;
  {
    const Library first;
    Context context{Config(first)};
    {
      Library second;
      Library third = std::move(second);
      EXPECT_EQ(third.runtime(), first.runtime());
    }
    EXPECT_TRUE(isStarted());
    EXPECT_EQ(context.feval(server.url("/echo"), {1.0})[0].scalar(), 1);
  }
  EXPECT_FALSE(isStarted());
}

TEST(CppLibraries, mayBeAssigned) {
  {
    Library first;
    Library second;
    first = std::move(second);
    EXPECT_NE(first.runtime(), nullptr);
    EXPECT_TRUE(isStarted());
  }
  EXPECT_FALSE(isStarted());
}

template <class Work>
void doOnFourThreads(Work work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
}

TEST(CppLibraries, areCountedOnManyThreads) {
  {
    const Library library;
    doOnFourThreads([] {
      for (int n = 0; n < 50000; ++n) const Library another;
    });
    EXPECT_TRUE(isStarted());
  }
  EXPECT_FALSE(isStarted());
}

TEST(CppLibraries, mayStartAndEndOnAnyThread) {
  std::atomic<int> wrong = 0;
  doOnFourThreads([&wrong] {
    for (int n = 0; n < 200; ++n) {
      const Library library;
      const Config config(library);
      if (library.runtime()->getTimeOut(config.get()) != 120) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_FALSE(isStarted());
}

TEST(CppLibraries, areCountedInOtherSharedObjectsToo) {
  const Library library;
  useALibrary();
  EXPECT_TRUE(isStarted());
}

TEST(CppOwners, cannotBeUsedOnceTheyHaveBeenMovedFrom) {
  const Library library;
  Config config(library);
  Context context(config);
  const Context movedContext = std::move(context);
  EXPECT_EQ(refusalOf([&] { context.feval("http://127.0.0.1:1/"); }),
            "the Context has been moved from");
  EXPECT_EQ(context.get(), nullptr);

  Config movedConfig = std::move(config);
  const std::string text = "the Config has been moved from";
  EXPECT_EQ(refusalOf([&] { config.setTimeout(std::chrono::seconds(1)); }), text);
  EXPECT_EQ(refusalOf([&] { config.setResponseSizeLimit(1); }), text);
  EXPECT_EQ(refusalOf([&] { config.setClientCertificateFile("a"); }), text);
  EXPECT_EQ(refusalOf([&] { config.setClientPrivateKeyFile("a"); }), text);
  EXPECT_EQ(refusalOf([&] { config.setPrivateKeyPassPhrase("a"); }), text);
  EXPECT_EQ(refusalOf([&] { config.setAuthorityFile("a"); }), text);
  EXPECT_EQ(refusalOf([&] { config.setRevocationListFile("a"); }), text);
  EXPECT_EQ(refusalOf([&] { config.setHostnameVerification(true); }), text);
  EXPECT_EQ(refusalOf([&] { config.setPeerVerification(true); }), text);
  EXPECT_EQ(refusalOf([&] { Context made(config); }), text);
  EXPECT_EQ(refusalOf([&] { config.runtime(); }), text);
  EXPECT_EQ(refusalOf([&] { config.timeout(); }), text);
  EXPECT_EQ(refusalOf([&] { Config copy(config); }), text);
  EXPECT_EQ(config.get(), nullptr);
  config = std::move(movedConfig);
  EXPECT_NO_THROW(Context{config});

  Library another;
  const Library movedLibrary = std::move(another);
  EXPECT_EQ(refusalOf([&] { another.runtime(); }), "the Library has been moved from");
  EXPECT_EQ(refusalOf([&] { Config made(another); }), "the Library has been moved from");
}

TEST(CppContext, isForOneThreadAtATime) {
  const LocalServer server;
  const Library library;
  Context context{Config(library)};
  const std::string text = "the Context is in use by another call: each thread needs its own";
  std::atomic<int> calls = 0, refusals = 0;
  const auto callUntilBothWereSeen = [&] {
    while (calls == 0 || refusals == 0) {
      const std::string refusal =
          refusalOf([&] { context.feval(server.url("/demo/sleep"), {0.05}); });
      EXPECT_TRUE(refusal.empty() || refusal == text) << refusal;
      ++(refusal.empty() ? calls : refusals);
    }
  };
  std::thread other(callUntilBothWereSeen);
  callUntilBothWereSeen();
  other.join();
  EXPECT_EQ(context.feval(server.url("/echo"), {1.0})[0].scalar(), 1);
}

TEST(CppContext, isFreeAgainWhateverBecameOfACall) {
  const LocalServer server;
  const UnlistenedPort unlistened;
  const Library library;
  Context context{Config(library)};
  const std::string echo = server.url("/echo");
  const auto expectFree = [&] { EXPECT_EQ(context.feval(echo, {1.0})[0].scalar(), 1); };
  EXPECT_THROW(context.feval(server.url("/demo/fail"), {"a:b", "c"}, 0), FunctionError);
  expectFree();
  EXPECT_THROW(context.feval(server.url("/not/there")), HttpError);
  expectFree();
  EXPECT_THROW(context.feval(unlistened.url()), TransportError);
  expectFree();
  std::vector<Array> inputs(1);  // empty
  EXPECT_THROW(context.feval(echo, inputs), UsageError);
  expectFree();
  EXPECT_THROW(context.feval(echo + std::string(1, '\0')), UsageError);
  expectFree();
  context = Context(Config(library));
  expectFree();
}

TEST(CppContext, speaksHttpAlone) {
  const LocalServer server;
  const Library library;
  Context context{Config(library)};
  const std::string address = server.url("/echo").substr(std::string("http").size());
  for (const std::string scheme : {"http", "HTTP", "hTtP"}) {
    EXPECT_EQ(context.feval(scheme + address, {1.0})[0].scalar(), 1) << scheme;
  }
  EXPECT_THROW(context.feval("HTTPS" + address, {1.0}), TransportError);
  for (const std::string& url :
       {"file" + address, std::string("file:///etc/hostname"), "ftp" + address, "telnet" + address,
        "httpx" + address, "xhttp" + address, address.substr(3), std::string(), std::string("http"),
        std::string("http:"), std::string("http:/127.0.0.1"), std::string("https//a"),
        " http" + address, std::string("HTTP\x1A//a"), std::string("\n")}) {
    EXPECT_EQ(refusalOf([&] { context.feval(url, {1.0}); }),
              "the URL does not begin with http:// or https://")
        << url;
  }
}

}  // namespace
}  // namespace hcyclient
