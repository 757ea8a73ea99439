// SPDX-License-Identifier: Apache-2.0
//
// Start and end of the library. The state is the process's, so each scenario has a process of its
// own, in which nothing has used the library before.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>

#include "support/abi.h"
#include "support/own_process.h"

namespace hcy::abi {
namespace {

using LibraryInitialization = test::OwnProcess;

// The place of each operation in the table, which programs in other languages know by number.
constexpr std::array kPlaces = {
    offsetof(hcyClientRuntime, createConfig),
    offsetof(hcyClientRuntime, destroyConfig),
    offsetof(hcyClientRuntime, setTimeOut),
    offsetof(hcyClientRuntime, getTimeOut),
    offsetof(hcyClientRuntime, setResponseSizeLimit),
    offsetof(hcyClientRuntime, getResponseSizeLimit),
    offsetof(hcyClientRuntime, createContext),
    offsetof(hcyClientRuntime, destroyContext),
    offsetof(hcyClientRuntime, getLastErrorInfo),
    offsetof(hcyClientRuntime, destroyLastErrorInfo),
    offsetof(hcyClientRuntime, feval),
    offsetof(hcyClientRuntime, setClientCertFile),
    offsetof(hcyClientRuntime, getClientCertFile),
    offsetof(hcyClientRuntime, setClientPrivateKeyFile),
    offsetof(hcyClientRuntime, getClientPrivateKeyFile),
    offsetof(hcyClientRuntime, setPrivateKeyPasswd),
    offsetof(hcyClientRuntime, getPrivateKeyPasswd),
    offsetof(hcyClientRuntime, setCAFile),
    offsetof(hcyClientRuntime, getCAFile),
    offsetof(hcyClientRuntime, setRevocationListFile),
    offsetof(hcyClientRuntime, getRevocationListFile),
    offsetof(hcyClientRuntime, setHostnameVerification),
    offsetof(hcyClientRuntime, getHostnameVerification),
    offsetof(hcyClientRuntime, setPeerVerification),
    offsetof(hcyClientRuntime, getPeerVerification),
};

constexpr bool areInOrder() {
  for (std::size_t i = 0; i < kPlaces.size(); ++i) {
    if (kPlaces[i] != i * sizeof(void*)) return false;
  }
  return true;
}
static_assert(kPlaces.size() == 25 && areInOrder());

using Slots = std::array<void*, 25>;

Slots slotsOf(const hcyClientRuntime* runtime) {
  Slots slots;
  static_assert(sizeof slots == sizeof *runtime);
  std::memcpy(slots.data(), runtime, sizeof slots);
  return slots;
}

void expectSlots(const hcyClientRuntime* runtime, std::size_t filled) {
  ASSERT_NE(runtime, nullptr);
  const Slots slots = slotsOf(runtime);
  for (std::size_t i = 0; i < slots.size(); ++i) {
    EXPECT_EQ(slots[i] != nullptr, i < filled) << "slot " << i;
  }
}

const std::string kInvalidVersion = "Invalid version number.";

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, theMessageIsEmptyBeforeAnythingElse) {
  ASSERT_NE(hcyGetInitializationErrorMessage(), nullptr);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization,
                        hcyInitializeFillsTheElevenSlotsOfVersion10AndNoMore) {
  expectSlots(hcyInitialize(), 11);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization,
                        version10000FillsTheElevenSlotsOfVersion10AndNoMore) {
  expectSlots(hcyInitializeEx(0x10000), 11);
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, version10001FillsAll25Slots) {
  expectSlots(hcyInitializeEx(0x10001), 25);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, everySlotHoldsAnOperationOfItsOwn) {
  const Slots slots = slotsOf(hcyInitializeEx(0x10001));
  for (std::size_t i = 0; i < slots.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) EXPECT_NE(slots[i], slots[j]) << i << " and " << j;
  }
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, anyOtherVersionFailsAsInvalid) {
  for (const int version : {0x10002, 0xFFFF, 0, 1, -1, 0x20000, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
    EXPECT_EQ(hcyInitializeEx(version), nullptr) << version;
    EXPECT_EQ(hcyGetInitializationErrorMessage(), kInvalidVersion) << version;
  }
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, theVersionIsNotLookedAtOnceInitialized) {
  hcyClientRuntime* const runtime = hcyInitializeEx(0x10001);
  EXPECT_EQ(hcyInitializeEx(0x10002), runtime);
  EXPECT_EQ(hcyInitializeEx(0x10000), runtime);
  EXPECT_EQ(hcyInitialize(), runtime);
  expectSlots(runtime, 25);
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, aSecondCallerWhoAsksFor11GetsTheTableOf10) {
  hcyClientRuntime* const runtime = hcyInitializeEx(0x10000);
  EXPECT_EQ(hcyInitializeEx(0x10001), runtime);
  expectSlots(runtime, 11);
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization,
                        oneTerminationEndsTwoInitializationsAndASecondDoesNothing) {
  hcyClientRuntime* const runtime = hcyInitializeEx(0x10001);
  ASSERT_NE(runtime, nullptr);
  EXPECT_EQ(hcyInitializeEx(0x10001), runtime);
  hcyTerminate();
  EXPECT_EQ(hcyInitializeEx(0x10002), nullptr);  // looked at again: the state has ended
  hcyTerminate();
  EXPECT_EQ(hcyGetInitializationErrorMessage(), kInvalidVersion);
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, terminationWithoutInitializationDoesNothing) {
  hcyTerminate();
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
  expectSlots(hcyInitialize(), 11);
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization,
                        terminationWithoutInitializationKeepsAnEarlierMessage) {
  EXPECT_EQ(hcyInitializeEx(0x10002), nullptr);
  hcyTerminate();
  EXPECT_EQ(hcyGetInitializationErrorMessage(), kInvalidVersion);
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization,
                        aSuccessAfterAFailureKeepsTheMessageUntilTermination) {
  EXPECT_EQ(hcyInitializeEx(0xFFFF), nullptr);
  expectSlots(hcyInitializeEx(0x10001), 25);
  EXPECT_EQ(hcyGetInitializationErrorMessage(), kInvalidVersion);
  hcyTerminate();
  EXPECT_STREQ(hcyGetInitializationErrorMessage(), "");
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, afterTerminationAnotherVersionMayBeChosen) {
  expectSlots(hcyInitializeEx(0x10000), 11);
  hcyTerminate();
  expectSlots(hcyInitializeEx(0x10001), 25);
  hcyTerminate();
  expectSlots(hcyInitialize(), 11);
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization,
                        aHundredInitializationsAndTerminationsEachGiveAWorkingTable) {
  for (int round = 0; round < 100; ++round) {
    hcyClientRuntime* const runtime = hcyInitializeEx(round % 2 == 0 ? 0x10000 : 0x10001);
    ASSERT_NE(runtime, nullptr);
    hcyClientConfig* config = nullptr;
    hcyClientContext* context = nullptr;
    ASSERT_EQ(runtime->createConfig(&config), 0);
    ASSERT_EQ(runtime->createContext(&context, config), 0);
    runtime->destroyContext(context);
    runtime->destroyConfig(config);
    hcyTerminate();
  }
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization,
                        arrayFunctionsWorkWithoutInitializationAndAcrossTermination) {
  hcyArray* const array = hcyCreateDoubleScalar(2.5);
  EXPECT_EQ(hcyGetScalar(array), 2.5);
  ASSERT_NE(hcyInitialize(), nullptr);
  EXPECT_EQ(hcyGetScalar(array), 2.5);
  hcyTerminate();
  EXPECT_EQ(hcyGetScalar(array), 2.5);
  hcyDestroyArray(array);
}

HCY_TEST_IN_OWN_PROCESS(LibraryInitialization, aProgramMayEndWithoutTermination) {
  ASSERT_NE(hcyInitialize(), nullptr);
}

}  // namespace
}  // namespace hcy::abi
