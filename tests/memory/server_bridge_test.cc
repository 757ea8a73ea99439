// SPDX-License-Identifier: Apache-2.0
//
// The way of a server in the same process to arrays and back while memory runs out.

#include "array/server_bridge.h"

#include <string>

#include "memory/sweep.h"
#include "support/wrapped_arrays.h"

namespace hcy::abi {
namespace {

using test::owned;

ArrayHandle textArray() { return owned(hcyCreateString("a text that needs memory of its own")); }

TEST(ExhaustedMemoryInTheServerBridge, isToldByAReading) {
  const std::string bytes = test::sent(textArray()).SerializeAsString();
  const ArrayHandle any = owned(hcyCreateDoubleScalar(0));
  const std::size_t failures = failEachAllocation([&](const Shortage& shortage) {
    hcyArray* array = nullptr;
    ArrayReading reading{};
    bool failed = false;
    {
      const test::FailingAllocation failing(shortage.working, shortage.exhaustion);
      reading = serverBridgeOf(any.get())->read(test::bytesOf(bytes).data(), bytes.size(), &array);
      failed = failing.hasFailed();
    }
    EXPECT_EQ(reading, failed ? ArrayReading::kNoMemory : ArrayReading::kWhole);
    EXPECT_EQ(array == nullptr, failed);
    owned(array).reset();
    return failed;
  });
  EXPECT_GT(failures, 0U);
}

TEST(ExhaustedMemoryInTheServerBridge, isToldByAWriting) {
  const ArrayHandle array = textArray();
  const ServerBridge& bridge = *serverBridgeOf(array.get());
  const std::size_t failures = failEachAllocation([&](const Shortage& shortage) {
    const test::FailingAllocation failing(shortage.working, shortage.exhaustion);
    std::size_t size = 0;
    const void* const writing = bridge.beginWriting(array.get(), &size);
    const bool failed = failing.hasFailed();
    EXPECT_EQ(writing == nullptr, failed);
    bridge.endWriting(writing);
    return failed;
  });
  EXPECT_GT(failures, 0U);
}

}  // namespace
}  // namespace hcy::abi
