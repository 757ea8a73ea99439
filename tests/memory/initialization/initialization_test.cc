// SPDX-License-Identifier: Apache-2.0
//
// Initialisation while memory runs out, at whichever allocation that happens, those of libcurl and
// its TLS library included. These set themselves up once in a process, so that each attempt has a
// process of its own: this program's own is never initialised.

#include <curl/curl.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <string_view>

#include "hcy/hcyclient.h"
#include "memory/sweep.h"

namespace hcy {
namespace {

using abi::Shortage;
using test::Exhaustion;
using test::FailingAllocation;

enum Outcome { Succeeded, Failed, Broken };

// If an allocation fails while OpenSSL 3.5 initialises, it waits for itself, since it reports that
// by a function that initialises it, or ends the process; OpenSSL 3.6 may report it by a function
// that allocates, until the stack is full. Nobody outside can prevent any of these; they are told
// from a fault of ours by who is on the stack. No memory can be allocated here.
extern "C" void judgeEnd(int /*signal*/) {
  std::array<void*, 64> frames{};
  const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
  for (int i = 0; i < count; ++i) {
    // A function that never returns may end with the call that its frame returns from.
    const void* const call = static_cast<char*>(frames.at(static_cast<std::size_t>(i))) - 1;
    Dl_info function{};
    if (::dladdr(call, &function) == 0 || function.dli_sname == nullptr) continue;
    const std::string_view name(function.dli_sname);
    for (const char* const culprit : {"OPENSSL_init_crypto", "OPENSSL_die", "ERR_new"}) {
      if (name == culprit) ::_exit(Failed);
    }
  }
  ::_exit(Broken);
}

void judgeEnds() {
  static std::array<char, 0x10000> stack;
  const stack_t other = {.ss_sp = stack.data(), .ss_flags = 0, .ss_size = stack.size()};
  ::sigaltstack(&other, nullptr);
  struct sigaction action = {};
  action.sa_handler = judgeEnd;
  action.sa_flags = SA_ONSTACK;
  for (const int signal : {SIGALRM, SIGABRT, SIGSEGV}) ::sigaction(signal, &action, nullptr);
}

// What an attempt comes to in a process of its own. An expectation that fails there is printed.
template <class Attempt>
Outcome inOwnProcess(Attempt attempt) {
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    judgeEnds();
    const bool failed = attempt();
    std::fflush(nullptr);
    ::_exit(testing::Test::HasFailure() ? Broken : failed ? Failed : Succeeded);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? static_cast<Outcome>(WEXITSTATUS(status)) : Broken;
}

// The library is ready: it makes what a call needs.
void expectReady(const hcyClientRuntime* runtime) {
  ASSERT_NE(runtime, nullptr);
  hcyClientConfig* config = nullptr;
  ASSERT_EQ(runtime->createConfig(&config), 0);
  hcyClientContext* context = nullptr;
  EXPECT_EQ(runtime->createContext(&context, config), 0);
  runtime->destroyContext(context);
  runtime->destroyConfig(config);
}

hcyClientRuntime* initializeFor11() { return hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1); }

// Whether an allocation failed. Terminating works without any memory.
template <auto Start>
bool initialize(const Shortage& shortage) {
  hcyClientRuntime* runtime = nullptr;
  bool failed = false;
  ::alarm(5);
  {
    const FailingAllocation failing(shortage.working, shortage.exhaustion);
    runtime = Start();
    failed = failing.hasFailed();
  }
  if (runtime == nullptr) {
    EXPECT_TRUE(failed);
    const FailingAllocation failing(0, Exhaustion::FromThenOn);
    EXPECT_STRNE(hcyGetInitializationErrorMessage(), "");
  }
  if (runtime == nullptr) runtime = Start();
  // Some failures OpenSSL 3.6 keeps for the life of the process.
  if (runtime == nullptr && ::curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) return failed;
  expectReady(runtime);
  const FailingAllocation failing(0, Exhaustion::FromThenOn);
  hcyTerminate();
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
  return failed;
}

// A process for each attempt takes long under a sanitizer.
#ifdef HCY_SANITIZED
constexpr std::size_t kStep = 7;
#else
constexpr std::size_t kStep = 1;
#endif

template <auto Start>
void expectThatItIsPossibleLater() {
  for (const auto exhaustion : {Exhaustion::OneAllocation, Exhaustion::FromThenOn}) {
    std::size_t working = 0;
    Outcome outcome = Failed;
    for (; outcome == Failed; working += kStep) {
      outcome = inOwnProcess([&] { return initialize<Start>({working, exhaustion}); });
    }
    EXPECT_EQ(outcome, Succeeded) << abi::described({working - kStep, exhaustion});
    EXPECT_GT(working, 10U);
  }
}

TEST(ExhaustedMemoryInInitialization, leavesItPossibleLater) {
  expectThatItIsPossibleLater<initializeFor11>();
}

TEST(ExhaustedMemoryInInitialization, leavesItPossibleLaterForVersion10) {
  expectThatItIsPossibleLater<hcyInitialize>();
}

// What libcurl and its TLS library keep for the life of the process they have by then.
TEST(ExhaustedMemoryInInitialization, losesNothingWhereItIsNotTheFirst) {
  const Outcome outcome = inOwnProcess([] {
    initialize<initializeFor11>({SIZE_MAX, Exhaustion::OneAllocation});
    EXPECT_GT(abi::failEachAllocation(initialize<initializeFor11>), 0U);
    return false;
  });
  EXPECT_EQ(outcome, Succeeded);
}

TEST(ExhaustedMemoryInInitialization, stillHasAMessage) {
  const Outcome outcome = inOwnProcess([] {
    for (std::size_t working = 0; working < 4; ++working) {
      const FailingAllocation failing(working);
      EXPECT_EQ(hcyInitializeEx(0x10002), nullptr);
      EXPECT_STRNE(hcyGetInitializationErrorMessage(), "");
    }
    return false;
  });
  EXPECT_EQ(outcome, Succeeded);
}

}  // namespace
}  // namespace hcy
