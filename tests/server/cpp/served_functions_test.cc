// SPDX-License-Identifier: Apache-2.0
//
// Functions of a C++ program behind the local server.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <hcy/hcyclient_server.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// Handles of a library of another version, while that is asked for.
struct hcyArray {
  virtual ~hcyArray() = default;
};
static bool isOtherLibrary = false;

extern "C" HCY_API hcyArray* hcyCreateDoubleScalar(double value) {
  if (isOtherLibrary) return new hcyArray;
  static const auto create = reinterpret_cast<decltype(&hcyCreateDoubleScalar)>(
      ::dlsym(RTLD_NEXT, "hcyCreateDoubleScalar"));
  return create(value);
}

#ifndef HCY_SANITIZED
// How many more threads can be started.
static std::atomic<int> threadsLeft = 1'000'000;

extern "C" HCY_API int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                      void* (*function)(void*), void* argument) {
  if (--threadsLeft < 0) return EAGAIN;
  static const auto create =
      reinterpret_cast<decltype(&pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
  return create(thread, attributes, function, argument);
}
#endif

namespace hcy::test {
namespace {

using hcyclient::Array;
using hcyclient::Server;
using testing::ElementsAre;
using testing::HasSubstr;

class ServedFunctions : public testing::Test {
 protected:
  // What the call is told about its failure.
  hcyclient::FunctionError failureOf(const std::string& function, int nargout = 1) {
    try {
      context_.feval(server_.url(function), std::vector<Array>(), nargout);
    } catch (const hcyclient::FunctionError& error) {
      return error;
    }
    return {"no failure", "", {}};
  }

  const hcyclient::Library library_;
  hcyclient::Context context_{hcyclient::Config(library_)};
  Server server_{library_};
};

TEST_F(ServedFunctions, GetInputsAndGiveOutputs) {
  server_.add("my/scale", [](const Server::Inputs& in) {
    return Server::Outputs{in.at(0).scalar() * in.at(1).scalar(), "text"};
  });
  server_.add("value", [](const Server::Inputs& in) { return in.at(0).scalar() / 2; });
  server_.add("nothing", [](const Server::Inputs&) {});
  server_.add("count", [](const Server::Inputs& in, int nargout) {
    Server::Outputs out;
    for (int i = 0; i < nargout; ++i) out.emplace_back(static_cast<double>(in.size()));
    return out;
  });
  server_.listen();
  const auto both = context_.feval(server_.url("my/scale"), {2.0, 3.0}, 2);
  EXPECT_EQ(both.at(0).scalar(), 6);
  EXPECT_EQ(both.at(1).toString(), "text");
  EXPECT_EQ(context_.feval(server_.url("my/scale"), {2.0, 3.0}).size(), 1U);
  EXPECT_EQ(context_.feval(server_.url("count"), {1.0, "a", true}, 3).at(2).scalar(), 3);
  EXPECT_EQ(context_.feval(server_.url("count"), {}, 0).size(), 0U);
  EXPECT_EQ(context_.feval(server_.url("value"), {5.0}).at(0).scalar(), 2.5);
  EXPECT_EQ(context_.feval(server_.url("nothing"), {}, 0).size(), 0U);
  EXPECT_THROW(context_.feval(server_.url("other"), {}), hcyclient::HttpError);
}

TEST_F(ServedFunctions, PassArraysThroughAsTheyAre) {
  server_.add("same", [](Server::Inputs in) { return in; }).listen();
  std::vector<Array> inputs;
  inputs.push_back(Array::fromRows<double>({{1, 2}, {3, 4}}));
  inputs.push_back(Array::zeros<float>(0, 3));
  inputs.push_back(Array::sparse<double>(3, 2, {{2, 0, 1.5}, {0, 1, 2.5}}));
  inputs.push_back(Array::structOf({{"name", "x"}, {"list", Array::cellOf({1.0, "a"})}}));
  const auto outputs = context_.feval(server_.url("same"), inputs, 4);
  EXPECT_EQ(outputs.at(0).shape(), inputs[0].shape());
  EXPECT_THAT(outputs.at(0).toVector<double>(), ElementsAre(1, 3, 2, 4));
  EXPECT_EQ(outputs.at(1).shape(), (hcyclient::Shape{0, 3}));
  EXPECT_EQ(outputs.at(2).entries<double>().size(), 2U);
  EXPECT_EQ(Array(outputs.at(3)("list"))[1].toString(), "a");
}

TEST_F(ServedFunctions, RaiseTheirErrors) {
  server_
      .add("own",
           [](const Server::Inputs&) -> Server::Outputs {
             throw hcyclient::FunctionError("No.", "my:error", {{"file", "name", 7}});
           })
      .add("other",
           [](const Server::Inputs& in) -> Server::Outputs {
             throw std::runtime_error("bad \xff " + std::to_string(in.size()));
           })
      .add("strange", [](const Server::Inputs&) -> Server::Outputs { throw 5; })
      .add("empty", [](const Server::Inputs&) { return Array(); })
      .add("few", [](const Server::Inputs&) { return Server::Outputs(); })
      .add("fine", [](const Server::Inputs&) { return 1.0; });
  server_.listen();
  const auto own = failureOf("own");
  EXPECT_STREQ(own.what(), "No.");
  EXPECT_EQ(own.identifier(), "my:error");
  ASSERT_EQ(own.stack().size(), 1U);
  EXPECT_EQ(own.stack()[0].line, 7);
  const auto other = failureOf("other");
  EXPECT_STREQ(other.what(), "bad \xff 0");
  EXPECT_EQ(other.identifier(), "cpp:exception");
  EXPECT_EQ(other.stack().at(0).name, "other");
  EXPECT_EQ(failureOf("strange").identifier(), "cpp:exception");
  EXPECT_EQ(failureOf("empty").identifier(), "cpp:exception");
  EXPECT_THAT(failureOf("few").what(), HasSubstr("returned 0 outputs"));
  EXPECT_EQ(context_.feval(server_.url("fine"), {}).at(0).scalar(), 1);
}

TEST_F(ServedFunctions, RunSideBySide) {
  std::atomic<int> present = 0;
  server_.setThreads(2).add("meet", [&](const Server::Inputs&) {
    ++present;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (present < 2 && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    return static_cast<double>(present);
  });
  server_.listen();
  std::thread other([&] {
    hcyclient::Context context{hcyclient::Config(library_)};
    EXPECT_EQ(context.feval(server_.url("meet"), {}).at(0).scalar(), 2);
  });
  EXPECT_EQ(context_.feval(server_.url("meet"), {}).at(0).scalar(), 2);
  other.join();
}

TEST_F(ServedFunctions, ListenAgain) {
  server_.add("f", [](Server::Inputs in) { return in; });
  EXPECT_EQ(server_.url("f"), "");
  for (int i = 0; i < 2; ++i) {
    server_.listen();
    EXPECT_EQ(context_.feval(server_.url("f"), {5.0}).at(0).scalar(), 5);
    EXPECT_THROW(server_.listen(), hcyclient::UsageError);
    EXPECT_THROW(server_.setThreads(2), hcyclient::UsageError);
    server_.close();
    server_.close();
  }
}

TEST_F(ServedFunctions, FailToStart) {
  EXPECT_THROW(server_.add("/f", [](Server::Inputs in) { return in; }), hcyclient::UsageError);
  EXPECT_THROW(server_.setThreads(0), hcyclient::UsageError);
  server_.setOptions({"--no-such-option"});
  EXPECT_THROW(server_.listen(), hcyclient::InitializationError);
  server_.setOptions({"--host", "no.such.host.invalid"});
  EXPECT_THROW(server_.listen(), hcyclient::InitializationError);
  server_.setOptions({"--stop-on-eof"});
  EXPECT_THROW(server_.listen(), hcyclient::InitializationError);
  EXPECT_EQ(server_.url(), "");
  server_.add("f", [](Server::Inputs in) { return in; }).setOptions({"--fault", "f=503@1"});
  server_.listen();
  EXPECT_THROW(context_.feval(server_.url("f"), {1.0}), hcyclient::HttpError);
  EXPECT_EQ(context_.feval(server_.url("f"), {3.0}).at(0).scalar(), 3);
}

TEST_F(ServedFunctions, NeedALibraryOfTheSameVersion) {
  isOtherLibrary = true;
  try {
    server_.listen();
    FAIL();
  } catch (const hcyclient::InitializationError& error) {
    EXPECT_THAT(error.what(), HasSubstr("not of the same version"));
  }
  isOtherLibrary = false;
  server_.listen();
}

#ifndef HCY_SANITIZED
TEST_F(ServedFunctions, FailToStartWithoutThreads) {
  server_.add("f", [](Server::Inputs in) { return in; });
  for (const int most : {0, 1, 3}) {
    threadsLeft = most;
    EXPECT_THROW(server_.listen(), hcyclient::InitializationError) << most;
  }
  threadsLeft = 1'000'000;
  server_.listen();
  EXPECT_EQ(context_.feval(server_.url("f"), {5.0}).at(0).scalar(), 5);
}
#endif

TEST(ServerLibrary, TakesANullOutputForExhaustedMemory) {
  const hcyclient::Library library;
  const hcyServedFunction function = {
      "f", [](void*, hcyServedCall* call) { EXPECT_EQ(hcyServedOutput(call, nullptr), 1); },
      nullptr};
  const char* const options[] = {"--port", "0"};
  char* message = nullptr;
  hcyServer* const server = hcyServerStart(&function, 1, 1, 2, options, &message);
  ASSERT_NE(server, nullptr) << message;
  hcyclient::Context context{hcyclient::Config(library)};
  try {
    context.feval(std::string(hcyServerUrl(server)) + "/f", std::vector<Array>());
    ADD_FAILURE() << "the call succeeded";
  } catch (const hcyclient::FunctionError& error) {
    EXPECT_THAT(error.what(), HasSubstr("does not have enough memory"));
  }
  hcyServerStop(server);
}

TEST(ServerLibrary, ExportsItsFunctionsAlone) {
  struct Closer {
    void operator()(std::FILE* file) const { pclose(file); }
  };
  const std::unique_ptr<std::FILE, Closer> output(
      popen(HCY_NM " -D --defined-only '" HCY_SERVER_LIBRARY "'", "r"));
  std::vector<std::string> names;
  char type = '\0';
  char name[512];
  while (std::fscanf(output.get(), "%*s %c %511s", &type, name) == 2) {
    if (type != 'A') names.emplace_back(name);  // the name of the version itself is no symbol
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre("hcyServedError@@HCYCLIENT_SERVER_1.1",
                                                   "hcyServedOutput@@HCYCLIENT_SERVER_1.1",
                                                   "hcyServerStart@@HCYCLIENT_SERVER_1.1",
                                                   "hcyServerStop@@HCYCLIENT_SERVER_1.1",
                                                   "hcyServerUrl@@HCYCLIENT_SERVER_1.1"));
}

}  // namespace
}  // namespace hcy::test
