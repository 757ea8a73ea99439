// SPDX-License-Identifier: Apache-2.0
//
// What a caller sees when memory is exhausted, at whichever allocation that happens.

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <new>

#include "abi/array_kinds.h"

// Sanitizers bring an allocator of their own, which is left in place.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define HCY_OWN_MALLOC
#endif
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#undef HCY_OWN_MALLOC
#endif
#endif

#ifdef HCY_OWN_MALLOC

namespace {

// Allocations of this thread that succeed before one fails; negative when none is to fail.
thread_local int successesLeft = -1;

}  // namespace

extern "C" void* __libc_malloc(std::size_t size);

// Stands before the malloc of the C library for the whole program, operator new and the library
// under test included.
extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t size) {
  if (successesLeft >= 0 && successesLeft-- == 0) {
    errno = ENOMEM;
    return nullptr;
  }
  return __libc_malloc(size);
}

namespace hcy::abi {
namespace {

// Makes something and runs the call on it with one allocation after another failing, until none is
// left to fail. The check learns of each failure whether the call threw. Gives the number of
// failures.
template <class Make, class Call, class Check>
int failEachAllocation(Make make, Call call, Check check) {
  for (int failures = 0;; ++failures) {
    auto subject = make();
    bool threw = false;
    successesLeft = failures;
    try {
      call(subject);
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    const bool failed = successesLeft < 0;
    successesLeft = -1;
    if (!failed) {
      EXPECT_FALSE(threw);
      return failures;
    }
    check(subject, threw);
  }
}

constexpr auto expectThrown = [](const auto&, bool threw) { EXPECT_TRUE(threw); };

template <class Create>
void expectBadAlloc(Create create) {
  const auto createAndDestroy = [&](hcyArray*) { hcyDestroyArray(create()); };
  EXPECT_GT(failEachAllocation([] { return nullptr; }, createAndDestroy, expectThrown), 0);
}

class ExhaustedMemory : public testing::TestWithParam<ArrayKind> {
 protected:
  // A new array to fail on.
  static Array filled() { return filledMatrix(GetParam(), 3, 2); }

  // That the array is as filled() made it, and can still be copied.
  static void expectFilled(const Array& array) {
    EXPECT_EQ(shapeOf(array), (Shape{3, 2}));
    EXPECT_EQ(valuesOf(array), filling(GetParam(), 6));
    EXPECT_EQ(valuesOf(Array(hcyDuplicateArray(array))), filling(GetParam(), 6));
  }
};
INSTANTIATE_TEST_SUITE_P(All, ExhaustedMemory, testing::ValuesIn(allKinds()), kindName);

TEST_P(ExhaustedMemory, ReachesTheCallerOfACreation) {
  const Shape shape = {3, 2};
  expectBadAlloc([&] {
    return GetParam().isSparse ? createMatrix(GetParam(), 3, 2, hcyCOMPLEX)
                               : createArray(GetParam(), shape, hcyCOMPLEX);
  });
}

TEST_P(ExhaustedMemory, ReachesTheCallerOfACopy) {
  const int failures = failEachAllocation(
      filled, [](const Array& array) { hcyDestroyArray(hcyDuplicateArray(array)); },
      [](const Array& array, bool threw) {
        EXPECT_TRUE(threw);
        expectFilled(array);
      });
  EXPECT_GT(failures, 0);
}

TEST_P(ExhaustedMemory, ReachesTheCallerOfAGetter) {
  const Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, filled());
  expectBadAlloc([&] { return hcyGetCell(cell, 0); });
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), filling(GetParam(), 6));

  const Array structure = hcyCreateStructMatrix(1, 1, fieldCount, fieldNames);
  hcySetField(structure, 0, "second", filled());
  expectBadAlloc([&] { return hcyGetField(structure, 0, "second"); });
  expectBadAlloc([&] { return hcyGetFieldByNumber(structure, 0, 1); });
  EXPECT_EQ(valuesOf(Array(hcyGetField(structure, 0, "second"))), filling(GetParam(), 6));
}

TEST_P(ExhaustedMemory, LeavesTheElementThatASetterWouldReplace) {
  const Array cell = hcyCreateCellMatrix(1, 1);
  setValue(cell, 0, 5.0);
  const int failures = failEachAllocation(
      filled, [&](const Array& value) { hcySetCell(cell, 0, value); },
      [&](const Array& value, bool threw) {
        EXPECT_TRUE(threw);
        EXPECT_EQ(valueAt(cell, 0), 5.0);
        expectFilled(value);
      });
  // Only the elements of a container need room in its message before it is stored.
  EXPECT_EQ(failures > 0, GetParam().isContainer());
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), filling(GetParam(), 6));
}

TEST_P(ExhaustedMemory, ReachesTheCallerOfAChangeOfShape) {
  const int failures = failEachAllocation(
      filled, [](const Array& array) { hcySetN(array, 300); },
      [](const Array& array, bool threw) {
        EXPECT_TRUE(threw);
        expectFilled(array);
        hcySetN(array, 300);
        EXPECT_EQ(hcyGetN(array), 300U);
        EXPECT_EQ(valueAt(array, 5), filling(GetParam(), 6)[5]);
      });
  EXPECT_GT(failures, 0);
}

TEST_P(ExhaustedMemory, IsAResultOfSettingDimensions) {
  const Shape shape = {10, 10, 10, 10, 1, 1, 1, 1, 1, 1, 1, 1};
  int result = 0;
  const int failures = failEachAllocation(
      filled,
      [&](const Array& array) { result = hcySetDimensions(array, shape.data(), shape.size()); },
      [&](const Array& array, bool threw) {
        EXPECT_FALSE(threw);
        EXPECT_EQ(result, 1);
        expectFilled(array);
      });
  EXPECT_EQ(result, 0);
  EXPECT_GT(failures, 1);
}

TEST_P(ExhaustedMemory, LeavesAnArrayThatHadNoStorageAsItWas) {
  const int failures =
      failEachAllocation([] { return Array(createMatrix(GetParam(), 0, 0)); },
                         [](const Array& array) {
                           const Shape shape = {3, 2};
                           if (hcySetDimensions(array, shape.data(), 2) != 0)
                             throw std::bad_alloc();
                         },
                         [](const Array& array, bool threw) {
                           EXPECT_TRUE(threw);
                           EXPECT_EQ(shapeOf(Array(hcyDuplicateArray(array))), (Shape{0, 0}));
                         });
  EXPECT_GT(failures, 0);
}

TEST_P(ExhaustedMemory, IsNotMetByQueries) {
  const auto query = [](const Array& array) {
    hcyIsNumeric(array);
    hcyIsEmpty(array);
    hcyIsComplex(array);
    hcyIsLogicalScalarTrue(array);
    hcyIsClass(array, "double");
    hcyGetClassID(array);
    hcyGetElementSize(array);
    hcyGetNumberOfElements(array);
    hcyGetFieldNumber(array, "second");
  };
  EXPECT_EQ(failEachAllocation(filled, query, expectThrown), 0);
}

TEST(ExhaustedMemoryOf, EveryOtherCreationReachesTheCaller) {
  const char* const texts[] = {"a text that is too long to lie in its object", "another"};
  expectBadAlloc([] { return hcyCreateDoubleMatrix(2, 2, hcyREAL); });
  expectBadAlloc([] { return hcyCreateDoubleScalar(1.0); });
  expectBadAlloc([] { return hcyCreateLogicalMatrix(2, 2); });
  expectBadAlloc([] { return hcyCreateLogicalScalar(true); });
  expectBadAlloc([] { return hcyCreateString("text"); });
  expectBadAlloc([&] { return hcyCreateCharMatrixFromStrings(2, texts); });
  expectBadAlloc([] { return hcyCreateCellMatrix(2, 2); });
  expectBadAlloc([&] { return hcyCreateStructMatrix(2, 2, 2, texts); });
}

TEST(ExhaustedMemoryOf, TheFirstReadOfAnElementReachesTheCaller) {
  const int failures =
      failEachAllocation([] { return Array(hcyCreateCellMatrix(1, 1)); },
                         [](const Array& cell) { hcyDestroyArray(hcyGetCell(cell, 0)); },
                         [](const Array& cell, bool threw) {
                           EXPECT_TRUE(threw);
                           const Array element = hcyGetCell(cell, 0);
                           EXPECT_EQ(hcyGetClassID(element), hcyDOUBLE_CLASS);
                           EXPECT_EQ(shapeOf(element), (Shape{0, 0}));
                         });
  EXPECT_GT(failures, 1);
}

TEST(ExhaustedMemoryOf, ACopyLeavesTheElementToItsContainer) {
  const Array outer = cellWith(filledMatrix({hcyCELL_CLASS}, 2, 2));
  const Array text = hcyCreateString("text");
  const auto changedElement = [&] {
    Array inner = hcyGetCell(outer, 0);
    hcySetCell(inner, 0, text);
    return inner;
  };
  const int failures = failEachAllocation(
      changedElement, [](const Array& inner) { hcyDestroyArray(hcyDuplicateArray(inner)); },
      [&](Array& inner, bool threw) {
        EXPECT_TRUE(threw);
        inner.destroy();
        EXPECT_EQ(valueAt(Array(hcyGetCell(outer, 0)), 3), 4.0);
      });
  EXPECT_GT(failures, 0);
}

TEST(ExhaustedMemoryOf, ANewRoomReachesTheCaller) {
  const int failures =
      failEachAllocation([] { return Array(hcyCreateSparse(30, 30, 2, hcyCOMPLEX)); },
                         [](const Array& array) { hcySetNzmax(array, 500); },
                         [](const Array& array, bool threw) {
                           EXPECT_TRUE(threw);
                           EXPECT_EQ(hcyGetNzmax(array), 2U);
                           EXPECT_EQ(valuesOf(array), std::vector<double>(2, 0.0));
                           EXPECT_EQ(imaginaryOf(array), std::vector<double>(2, 0.0));
                         });
  EXPECT_GT(failures, 0);
}

TEST(ExhaustedMemoryOf, AnAddedFieldChangesNothing) {
  const char* const longName = "a name that is too long to lie in its object";
  const Array array = filledMatrix({hcySTRUCT_CLASS}, 2, 2);
  int number = 0;
  const int failures = failEachAllocation(
      [] { return nullptr; }, [&](hcyArray*) { number = hcyAddField(array, longName); },
      [&](hcyArray*, bool threw) {
        EXPECT_FALSE(threw);
        EXPECT_EQ(number, -1);
        EXPECT_EQ(hcyGetNumberOfFields(array), 2);
        EXPECT_EQ(valuesOf(array), filling({hcySTRUCT_CLASS}, 4));
      });
  EXPECT_GT(failures, 1);
  EXPECT_EQ(number, 2);
}

TEST(ExhaustedMemoryOf, ARemovedFieldIsNotMet) {
  const auto make = [] { return filledMatrix({hcySTRUCT_CLASS}, 2, 2); };
  const auto call = [](const Array& array) { hcyRemoveField(array, 0); };
  EXPECT_EQ(failEachAllocation(make, call, expectThrown), 0);
}

TEST(ExhaustedMemoryOf, ATextMakesNone) {
  const Array array = hcyCreateString("text");
  char* text = nullptr;
  const int failures =
      failEachAllocation([] { return nullptr; }, [&](hcyArray*) { text = hcyArrayToString(array); },
                         [&](hcyArray*, bool threw) {
                           EXPECT_FALSE(threw);
                           EXPECT_EQ(text, nullptr);
                         });
  EXPECT_EQ(failures, 1);
  EXPECT_STREQ(Text(text).get(), "text");
}

}  // namespace
}  // namespace hcy::abi

#endif
