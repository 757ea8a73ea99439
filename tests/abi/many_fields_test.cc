// SPDX-License-Identifier: Apache-2.0
//
// Struct arrays of many fields, and of as many elements as no field can be added to.

#include <sys/resource.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <vector>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

Array structOf(const std::vector<std::string>& names) {
  std::vector<const char*> texts;
  for (const std::string& name : names) texts.push_back(name.c_str());
  return hcyCreateStructMatrix(1, 1, static_cast<int>(texts.size()), texts.data());
}

// Names of which none is found by its first letters.
std::vector<std::string> manyNames(int count) {
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i) names.push_back("a_field_" + std::to_string(i));
  return names;
}

void setNumber(hcyArray* array, const char* name, double value) {
  hcySetField(array, 0, name, Array(hcyCreateDoubleScalar(value)));
}

long peakMemoryInKiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// The slots alone would take gigabytes, and what finds them 78 MiB.
TEST(FieldOfTooManyElements, IsRefusedBeforeMemoryIsAskedFor) {
  const Array array = hcyCreateStructMatrix(50000, 50000, 0, nullptr);
  const long before = peakMemoryInKiB();
  EXPECT_EQ(hcyAddField(array, "a"), -1);
  EXPECT_LT(peakMemoryInKiB() - before, 16L << 10);
  EXPECT_EQ(hcyGetNumberOfFields(array), 0);
  EXPECT_EQ(hcyGetFieldNumber(array, "a"), -1);
  EXPECT_EQ(hcyGetM(array), 50000U);
  EXPECT_EQ(hcyGetN(array), 50000U);
  EXPECT_FALSE(Array(hcyGetField(array, 0, "a")));
  hcySetM(array, 2);
  hcySetN(array, 1);
  EXPECT_EQ(hcyAddField(array, "a"), 0) << "once it is small enough";
  EXPECT_TRUE(Array(hcyGetField(array, 1, "a")));
}

// Of one name, the first field counts, also where there are so many that an index finds them.
TEST(ManyFields, OfOneNameReadAndSetTheFirst) {
  for (const std::size_t count : {2U, 16U, 17U, 18U, 300U}) {
    std::vector<std::string> names = manyNames(static_cast<int>(count));
    const std::size_t first = count / 2 - 1;
    names.back() = names[first];
    const Array array = structOf(names);
    const int last = static_cast<int>(count) - 1;
    EXPECT_EQ(hcyGetFieldNumber(array, names.back().c_str()), static_cast<int>(first)) << count;
    setNumber(array, names.back().c_str(), 7);
    EXPECT_EQ(hcyGetScalar(Array(hcyGetFieldByNumber(array, 0, static_cast<int>(first)))), 7.0);
    EXPECT_EQ(hcyGetScalar(Array(hcyGetFieldByNumber(array, 0, last))), 7.0) << count;
    hcySetFieldByNumber(array, 0, last, Array(hcyCreateDoubleScalar(8)));
    EXPECT_EQ(hcyGetScalar(Array(hcyGetField(array, 0, names[first].c_str()))), 8.0) << count;
    // Without the first, the other one is the one of that name.
    hcyRemoveField(array, static_cast<int>(first));
    EXPECT_EQ(hcyGetFieldNumber(array, names.back().c_str()), last - 1) << count;
    EXPECT_EQ(hcyGetNumberOfElements(Array(hcyGetFieldByNumber(array, 0, last - 1))), 0U) << count;
  }
}

TEST(ManyFields, AreFoundAfterOneIsAddedOrRemoved) {
  const std::vector<std::string> names = manyNames(40);
  const Array array = structOf(names);
  EXPECT_EQ(hcyGetFieldNumber(array, "new"), -1);
  EXPECT_EQ(hcyAddField(array, "new"), 40);
  EXPECT_EQ(hcyGetFieldNumber(array, "new"), 40);
  hcyRemoveField(array, 3);
  EXPECT_EQ(hcyGetFieldNumber(array, names[3].c_str()), -1);
  EXPECT_EQ(hcyGetFieldNumber(array, names[2].c_str()), 2);
  EXPECT_EQ(hcyGetFieldNumber(array, names[4].c_str()), 3);
  EXPECT_EQ(hcyGetFieldNumber(array, "new"), 39);
  EXPECT_EQ(hcyGetFieldNumber(Array(hcyDuplicateArray(array)), "new"), 39);
}

// The shortest processor time of several readings of all fields.
std::clock_t timeToReadAll(int count) {
  const std::vector<std::string> names = manyNames(count);
  const Array array = structOf(names);
  std::clock_t shortest = 0;
  for (int round = 0; round < 5; ++round) {
    const std::clock_t start = std::clock();
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(hcyGetFieldNumber(array, names[static_cast<std::size_t>(i)].c_str()), i);
      EXPECT_TRUE(Array(hcyGetFieldByNumber(array, 0, i)));
    }
    const std::clock_t time = std::clock() - start;
    shortest = round == 0 ? time : std::min(shortest, time);
  }
  return shortest;
}

// Ten times as many: 10 would be linear, and 100 the square.
TEST(ManyFields, AreReadInTimeInProportionToTheirNumber) {
  const auto few = std::max<std::clock_t>(timeToReadAll(4000), 1);
  EXPECT_LT(static_cast<double>(timeToReadAll(40000)) / static_cast<double>(few), 40.0);
}

}  // namespace
}  // namespace hcy::abi
