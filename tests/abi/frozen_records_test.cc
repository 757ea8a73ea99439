// SPDX-License-Identifier: Apache-2.0
//
// The records of the header beside their frozen copy: programs compiled with an older header go on
// working while these hold.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "frozen/records_1_1.h"
#include "support/abi.h"

namespace hcy::abi {
namespace {

TEST(FrozenRecords, MembersAreWhereTheyWere) {
#define HCY_EXPECT(record, member, place, size)                                        \
  EXPECT_EQ(offsetof(frozen_1_1::record, member), std::size_t{place}) << #member;      \
  EXPECT_EQ(offsetof(hcy##record, member), std::size_t{place}) << #record "." #member; \
  EXPECT_EQ(sizeof(hcy##record::member), std::size_t{size}) << #record "." #member;
  HCY_FROZEN_MEMBERS_1_1(HCY_EXPECT)
#undef HCY_EXPECT
}

TEST(FrozenRecords, MembersHaveTheTypesTheyHad) {
#define HCY_EXPECT(record, member, place, size)                                      \
  EXPECT_TRUE((std::is_same_v<decltype(std::declval<hcy##record>().member),          \
                              decltype(std::declval<frozen_1_1::record>().member)>)) \
      << #record "." #member;
  HCY_FROZEN_MEMBERS_1_1(HCY_EXPECT)
#undef HCY_EXPECT
}

// Programs allocate the records of an error themselves: those never grow. They only get a pointer
// to the table, which may.
TEST(FrozenRecords, RecordsHaveTheSizesTheyHad) {
  EXPECT_EQ(sizeof(hcyErrorStackFrame), 24U);
  EXPECT_EQ(sizeof(frozen_1_1::ErrorStackFrame), 24U);
  EXPECT_EQ(sizeof(hcyErrorInfo), 48U);
  EXPECT_EQ(sizeof(frozen_1_1::ErrorInfo), 48U);
  EXPECT_GE(sizeof(hcyClientRuntime), 200U);
  EXPECT_EQ(sizeof(frozen_1_1::ClientRuntime), 200U);
  EXPECT_EQ(alignof(hcyErrorStackFrame), 8U);
  EXPECT_EQ(alignof(hcyErrorInfo), 8U);
  EXPECT_EQ(alignof(hcyClientRuntime), 8U);
}

TEST(FrozenRecords, ConstantsHaveTheirValues) {
#define HCY_EXPECT(name, value) EXPECT_EQ(std::int64_t{name}, std::int64_t{value}) << #name;
  HCY_FROZEN_CONSTANTS_1_1(HCY_EXPECT)
#undef HCY_EXPECT
}

}  // namespace
}  // namespace hcy::abi
