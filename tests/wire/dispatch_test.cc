// SPDX-License-Identifier: Apache-2.0

#include <boost/exception/all.hpp>

#include "support/array_messages.h"
#include "support/exception_checks.h"
#include "wire/array_attributes.h"
#include "wire/data_accessor.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/element_storage.h"

namespace hcy {
namespace {

using test::arrayOf;
using test::asType;
using test::expectUnserved;
using test::unservedTypes;

TEST(Dispatch, RunsTheOneHandlerOfEachServedType) {
  for (int number = 0; number <= 14; ++number) {
    const auto type = dispatch_on_QXType(asType(number), [](auto handled) { return handled.type; });
    EXPECT_EQ(type, number);
    EXPECT_TRUE(isServedQXType(asType(number)));
  }
}

TEST(Dispatch, FailsForEveryOtherType) {
  for (const int number : unservedTypes) {
    bool wasRun = false;
    expectUnserved([&] { dispatch_on_QXType(asType(number), [&](auto) { wasRun = true; }); });
    EXPECT_FALSE(wasRun) << number;
    EXPECT_FALSE(isServedQXType(asType(number))) << number;
  }
}

TEST(Dispatch, FailsAtTheLocationThatItRecords) {
  try {
    dispatch_on_QXType(VORTEN_Array::STRING, [](auto) {});
    FAIL() << "nothing was thrown";
  } catch (const boost::exception& failure) {
    EXPECT_STREQ(*boost::get_error_info<boost::throw_file>(failure), "dispatch_on_QXType");
    EXPECT_EQ(*boost::get_error_info<boost::throw_line>(failure), 12);
    EXPECT_STREQ(*boost::get_error_info<boost::throw_function>(failure), "dispatch_on_QXType");
  }
}

TEST(UnservedType, LeavesTheDataAccessorAsItWas) {
  for (const int number : unservedTypes) {
    ArrayData array = test::dataOf(arrayOf(number, {1, 1}));
    int marker = 0;
    DataAccessor accessor{array, true, &marker, &marker, 7.0};
    expectUnserved([&] { dispatch_on_QXType(array.type(), accessor); });
    EXPECT_EQ(accessor.realData, &marker);
    EXPECT_EQ(accessor.imagData, &marker);
    EXPECT_EQ(accessor.scalar, 7.0);
  }
}

TEST(UnservedType, LeavesTheAttributesAsTheyWere) {
  const ArrayData array = test::dataOf(arrayOf(VORTEN_Array::OBJECT, {1, 1}));
  HcyArrayAttributesRetriever attributes{array};
  expectUnserved([&] { dispatch_on_QXType(array.type(), attributes); });
  EXPECT_STREQ(attributes.className, "");
  EXPECT_EQ(attributes.elementSize, 0U);
}

TEST(UnservedType, IsNeitherMeasuredNorSized) {
  for (const int number : unservedTypes) {
    ArrayData array = test::dataOf(arrayOf(number, {1, 1}));
    const std::string before = test::writtenBytes(array);
    expectUnserved([&] { attributesOf(array); });
    expectUnserved([&] { accessData(array, false); });
    expectUnserved([&] { resizeElementStorage(array, 3); });
    expectUnserved([&] { sizeInitialStorage(array, 3, true); });
    EXPECT_EQ(test::writtenBytes(array), before);
  }
}

}  // namespace
}  // namespace hcy
