// SPDX-License-Identifier: Apache-2.0
//
// What reading a reply takes of memory.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>

#include "hcy.client.VORTENResult.pb.h"
#include "runtime/reply_reader.h"
#include "support/array_messages.h"

namespace hcy {
namespace {

using client::VORTEN_Result;

std::size_t mostResidentKilobytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::size_t>(usage.ru_maxrss);
}

TEST(Reply, TakesTheMemoryOfOneForAllOutputsThatNobodyWants) {
  VORTEN_Array cell = test::arrayOf(VORTEN_Array::CELL, {10000, 1});
  for (int i = 0; i < 10000; ++i) cell.mutable_cell()->add_elements();
  VORTEN_Result result;
  *result.add_lhs() = cell;
  const std::string one = result.SerializeAsString();
  std::string body;
  for (int i = 0; i < 100; ++i) body += one;
  const std::size_t before = mostResidentKilobytes();
  EXPECT_EQ(
      readReply({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()}, 0).outputCount,
      100U);
  EXPECT_LT(mostResidentKilobytes(), before + 100'000);
}

}  // namespace
}  // namespace hcy
