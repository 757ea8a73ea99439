// SPDX-License-Identifier: Apache-2.0
//
// Sparse arrays of a reply whose indices or values do not describe a matrix of their dimensions,
// however the program comes to them, and those that the program itself has made so.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/ways_to_arrays.h"
#include "wire/protobuf_version.h"

namespace hcy {
namespace {

using test::Numbers;
using test::numbers;
using test::sparseOf;
using Type = VORTEN_Array::Sparse::SparseType;

constexpr Type kTypes[] = {VORTEN_Array::Sparse::DOUBLE, VORTEN_Array::Sparse::LOGICAL};

VORTEN_Array withValues(VORTEN_Array array, int count, int imaginary = 0) {
  VORTEN_Array::Sparse& sparse = *array.mutable_sparse();
  for (int i = 0; i < count; ++i) {
    if (sparse.type() == VORTEN_Array::Sparse::DOUBLE) {
      sparse.mutable_qxsparsedouble()->add_elements(i + 5);
    } else {
      sparse.mutable_logical()->add_elements(true);
    }
  }
  for (int i = 0; i < imaginary; ++i) sparse.mutable_qxsparsedouble()->add_imag_elements(i + 8);
  return array;
}

// A 3-by-3 array with values for all of its row indices.
VORTEN_Array withIndices(Type type, std::initializer_list<int> rows,
                         std::initializer_list<int> starts) {
  return withValues(sparseOf(type, {3, 3}, rows, starts), static_cast<int>(rows.size()));
}

const void* values(const ArrayHandle& array) {
  const void* const logicals = hcyGetLogicals(array.get());
  return logicals != nullptr ? logicals : hcyGetPr(array.get());
}

void expectNoIndices(const ArrayHandle& array) {
  EXPECT_EQ(hcyGetIr(array.get()), nullptr);
  EXPECT_EQ(hcyGetJc(array.get()), nullptr);
  EXPECT_EQ(hcyGetNzmax(array.get()), 0U);
  EXPECT_EQ(values(array), nullptr);
  EXPECT_EQ(hcyGetPi(array.get()), nullptr);
  EXPECT_EQ(hcyGetData(array.get()), nullptr);
  EXPECT_EQ(hcyGetImagData(array.get()), nullptr);
}

void expectIndices(const ArrayHandle& array, std::size_t nzmax) {
  EXPECT_EQ(hcyGetIr(array.get()) != nullptr, nzmax != 0);
  EXPECT_NE(hcyGetJc(array.get()), nullptr);
  EXPECT_EQ(hcyGetNzmax(array.get()), nzmax);
}

Numbers startsOf(const ArrayHandle& array) {
  const std::size_t* const starts = hcyGetJc(array.get());
  if (starts == nullptr) return {};
  return Numbers(starts, starts + hcyGetN(array.get()) + 1);
}

// Calls use(array, message) for each message and each way to the array.
template <class Use>
void forEachWay(const std::vector<std::pair<std::string, VORTEN_Array>>& messages, Use use) {
  for (const auto& [defect, message] : messages) {
    for (const auto& [name, way] : test::waysFromReplies()) {
      SCOPED_TRACE(defect + ", " + name);
      use(way(message), message);
    }
  }
}

// What is wrong with the indices.
std::vector<std::pair<std::string, VORTEN_Array>> wrongIndices() {
  std::vector<std::pair<std::string, VORTEN_Array>> messages;
  for (const Type type : kTypes) {
    messages.insert(messages.end(),
                    {{"no starts", withIndices(type, {0, 1}, {})},
                     {"a start missing", withIndices(type, {0, 1}, {0, 1, 2})},
                     {"first start not 0", withIndices(type, {0, 1}, {1, 1, 2, 2})},
                     {"falling starts", withIndices(type, {0, 1}, {0, 2, 1, 2})},
                     {"last start falling", withIndices(type, {0, 1}, {0, 1, 2, 1})},
                     {"last start beyond the rows", withIndices(type, {0, 1}, {0, 1, 2, 3})},
                     {"no rows", withIndices(type, {}, {0, 0, 0, 1})},
                     {"first row outside", withIndices(type, {3, 1}, {0, 1, 2, 2})},
                     {"last row outside", withIndices(type, {0, 3}, {0, 1, 2, 2})}});
    for (const auto& dimensions : {std::initializer_list<std::uint64_t>{}, {3}, {3, 3, 1}}) {
      messages.emplace_back(std::to_string(dimensions.size()) + " dimensions",
                            withValues(sparseOf(type, dimensions, {0, 1}, {0, 1, 2, 2}), 2));
    }
    VORTEN_Array huge = withIndices(type, {0, 1}, {0, 1, 2, 2});
    huge.set_dimension(1, SIZE_MAX);
    messages.emplace_back("no starts for that many columns", huge);
    VORTEN_Array far = withIndices(type, {0, 1}, {0, 1, 2, 2});
    far.mutable_sparse()->set_jc(3, SIZE_MAX);
    messages.emplace_back("last start far beyond the rows", far);
    VORTEN_Array outside = withIndices(type, {0, 1}, {0, 1, 2, 2});
    outside.mutable_sparse()->set_ir(0, SIZE_MAX);
    messages.emplace_back("row far outside", outside);
  }
  return messages;
}

TEST(SparseOfWrongIndices, HandsOutNeitherIndicesNorValues) {
  forEachWay(wrongIndices(),
             [](const ArrayHandle& array, const VORTEN_Array&) { expectNoIndices(array); });
}

TEST(SparseOfWrongIndices, IsSentAgainAsItArrived) {
  forEachWay(wrongIndices(), [](const ArrayHandle& array, const VORTEN_Array& message) {
    expectNoIndices(array);
    hcyGetScalar(array.get());
    EXPECT_EQ(test::sent(array).SerializeAsString(), message.SerializeAsString());
  });
}

TEST(SparseOfWrongIndices, HasItsClassAndShape) {
  forEachWay(wrongIndices(), [](const ArrayHandle& array, const VORTEN_Array& message) {
    const bool isDouble = message.sparse().type() == VORTEN_Array::Sparse::DOUBLE;
    EXPECT_TRUE(hcyIsSparse(array.get()));
    EXPECT_EQ(hcyIsDouble(array.get()), isDouble);
    EXPECT_EQ(hcyIsLogical(array.get()), !isDouble);
    EXPECT_EQ(hcyGetNumberOfDimensions(array.get()),
              static_cast<std::size_t>(message.dimension_size()));
  });
}

// More room makes no matrix of what came, unless that was all that was missing.
TEST(SparseOfWrongIndices, StaysSoWithMoreRoom) {
  forEachWay(wrongIndices(), [](const ArrayHandle& array, const VORTEN_Array& message) {
    if (hcyGetNumberOfElements(array.get()) != 9) return;
    hcySetNzmax(array.get(), 9);
    const bool isMatrixNow = numbers(message.sparse().jc()) == Numbers{0, 1, 2, 3} ||
                             numbers(message.sparse().jc()) == Numbers{0, 0, 0, 1};
    if (isMatrixNow) {
      expectIndices(array, 9);
      EXPECT_NE(values(array), nullptr);
    } else {
      expectNoIndices(array);
    }
  });
}

TEST(SparseWithoutStarts, GetsThemWithItsDimensions) {
  const std::size_t dims[] = {3, 3};
  const std::vector<void (*)(hcyArray*)> setters = {[](hcyArray* array) { hcySetM(array, 3); },
                                                    [](hcyArray* array) { hcySetN(array, 3); }};
  for (const Type type : kTypes) {
    const std::vector<std::pair<std::string, VORTEN_Array>> messages = {
        {"no starts", withIndices(type, {0, 1}, {})}};
    for (const auto& setter : setters) {
      forEachWay(messages, [&](const ArrayHandle& array, const VORTEN_Array&) {
        setter(array.get());
        expectIndices(array, 2);
        EXPECT_EQ(startsOf(array), (Numbers{0, 0, 0, 0}));
        EXPECT_EQ(hcyGetIr(array.get())[1], 1U);
        EXPECT_NE(values(array), nullptr);
      });
    }
    forEachWay(messages, [&](const ArrayHandle& array, const VORTEN_Array&) {
      EXPECT_EQ(hcySetDimensions(array.get(), dims, 2), 0);
      expectIndices(array, 2);
    });
  }
}

TEST(SparseOfFallingStarts, StaysWithoutIndicesWhateverItsRows) {
  for (const Type type : kTypes) {
    forEachWay({{"falling", withIndices(type, {0, 1}, {0, 2, 1, 2})}},
               [](const ArrayHandle& array, const VORTEN_Array&) {
                 hcySetM(array.get(), 5);
                 expectNoIndices(array);
                 hcySetN(array.get(), 3);
                 expectNoIndices(array);
                 // The first column alone is a matrix.
                 hcySetN(array.get(), 1);
                 expectIndices(array, 2);
                 EXPECT_EQ(startsOf(array), (Numbers{0, 2}));
               });
  }
}

TEST(SparseOfARowOutside, IsAMatrixOfMoreRows) {
  for (const Type type : kTypes) {
    forEachWay({{"outside", withIndices(type, {0, 3}, {0, 1, 2, 2})}},
               [](const ArrayHandle& array, const VORTEN_Array&) {
                 hcySetM(array.get(), 4);
                 expectIndices(array, 2);
                 EXPECT_EQ(hcyGetIr(array.get())[1], 3U);
               });
  }
}

// Three stored elements with fewer values.
TEST(SparseOfFewerValues, HasIndicesOnly) {
  for (const Type type : kTypes) {
    for (int count = 0; count <= 3; ++count) {
      const auto message = withValues(sparseOf(type, {3, 3}, {0, 1, 2}, {0, 1, 2, 3}), count);
      forEachWay({{std::to_string(count), message}},
                 [&](const ArrayHandle& array, const VORTEN_Array&) {
                   expectIndices(array, 3);
                   EXPECT_EQ(startsOf(array), (Numbers{0, 1, 2, 3}));
                   EXPECT_EQ(values(array) != nullptr, count == 3);
                   EXPECT_EQ(hcyGetScalar(array.get()) != 0.0, count != 0);
                   EXPECT_EQ(test::sent(array).SerializeAsString(), message.SerializeAsString());
                   hcySetNzmax(array.get(), 3);
                   expectIndices(array, 3);
                   ASSERT_NE(values(array), nullptr);
                   EXPECT_EQ(hcyGetScalar(array.get()) != 0.0, count != 0);
                 });
    }
  }
}

TEST(SparseOfFewerImaginaryValues, HasRealOnesOnly) {
  for (int count = 1; count <= 3; ++count) {
    const auto message = withValues(
        sparseOf(VORTEN_Array::Sparse::DOUBLE, {3, 3}, {0, 1, 2}, {0, 1, 2, 3}), 3, count);
    forEachWay(
        {{std::to_string(count), message}}, [&](const ArrayHandle& array, const VORTEN_Array&) {
          EXPECT_TRUE(hcyIsComplex(array.get()));
          expectIndices(array, 3);
          ASSERT_NE(hcyGetPr(array.get()), nullptr);
          EXPECT_EQ(Numbers(hcyGetPr(array.get()), hcyGetPr(array.get()) + 3), (Numbers{5, 6, 7}));
          EXPECT_EQ(hcyGetPi(array.get()) != nullptr, count == 3);
          EXPECT_EQ(test::sent(array).SerializeAsString(), message.SerializeAsString());
          hcySetNzmax(array.get(), 3);
          ASSERT_NE(hcyGetPi(array.get()), nullptr);
          Numbers expected = {8, 9, 10};
          std::fill(expected.begin() + count, expected.end(), 0.0);
          EXPECT_EQ(Numbers(hcyGetPi(array.get()), hcyGetPi(array.get()) + 3), expected);
        });
  }
}

// Room that no column uses, and for which there are no values.
TEST(SparseOfMoreRowsThanValues, HasRoomForItsValues) {
  for (const Type type : kTypes) {
    const auto message = withValues(sparseOf(type, {3, 3}, {0, 1, 2, 0}, {0, 1, 2, 2}), 3);
    forEachWay({{"four rows", message}}, [&](const ArrayHandle& array, const VORTEN_Array&) {
      expectIndices(array, 3);
      EXPECT_NE(values(array), nullptr);
      EXPECT_EQ(test::sent(array).SerializeAsString(), message.SerializeAsString());
      hcySetNzmax(array.get(), 4);
      expectIndices(array, 4);
      EXPECT_NE(values(array), nullptr);
    });
  }
}

TEST(SparseOfManyElements, NeedsNoMoreValuesThanItStores) {
  for (const Type type : kTypes) {
    VORTEN_Array message = withValues(sparseOf(type, {50000, 50000}, {7, 49999}), 2);
    auto& starts = *message.mutable_sparse()->mutable_jc();
    resizeList(starts, 50001, 2);
    starts[0] = 0;
    forEachWay({{"50000-by-50000", message}}, [&](const ArrayHandle& array, const VORTEN_Array&) {
      EXPECT_EQ(hcyGetNumberOfElements(array.get()), 2500000000U);
      expectIndices(array, 2);
      EXPECT_EQ(hcyGetJc(array.get())[50000], 2U);
      EXPECT_NE(values(array), nullptr);
      EXPECT_TRUE(test::sent(array).SerializeAsString() == message.SerializeAsString());
    });
  }
}

TEST(SparseOfSingles, HasIndicesAndNoValues) {
  VORTEN_Array message = sparseOf(VORTEN_Array::Sparse::SINGLE, {3, 3}, {0, 2}, {0, 1, 2, 2});
  message.mutable_sparse()->mutable_qxsparsesingle()->add_elements(5.0F);
  message.mutable_sparse()->mutable_qxsparsesingle()->add_elements(6.0F);
  forEachWay({{"singles", message}}, [&](const ArrayHandle& array, const VORTEN_Array&) {
    expectIndices(array, 2);
    EXPECT_EQ(hcyGetIr(array.get())[1], 2U);
    EXPECT_EQ(startsOf(array), (Numbers{0, 1, 2, 2}));
    EXPECT_EQ(values(array), nullptr);
    EXPECT_EQ(hcyGetData(array.get()), nullptr);
    EXPECT_EQ(test::sent(array).SerializeAsString(), message.SerializeAsString());
  });
}

// From then on it is the program's own affair.
TEST(SparseMatrix, KeepsItsPointersWhenTheProgramHasChangedIt) {
  for (const Type type : kTypes) {
    const auto message = withIndices(type, {0, 1, 2}, {0, 1, 2, 3});
    forEachWay({{"less room", message}}, [](const ArrayHandle& array, const VORTEN_Array&) {
      hcySetNzmax(array.get(), 2);
      expectIndices(array, 2);
      EXPECT_NE(values(array), nullptr);
    });
    forEachWay({{"more columns", message}}, [](const ArrayHandle& array, const VORTEN_Array&) {
      hcySetN(array.get(), 4);
      expectIndices(array, 3);
      EXPECT_EQ(startsOf(array), (Numbers{0, 1, 2, 3, 0}));
      EXPECT_NE(values(array), nullptr);
    });
  }
}

ArrayHandle madeSparse(Type type) {
  ArrayHandle array =
      test::owned(type == VORTEN_Array::Sparse::DOUBLE ? hcyCreateSparse(3, 3, 2, hcyCOMPLEX)
                                                       : hcyCreateSparseLogicalMatrix(3, 3, 2));
  hcyGetIr(array.get())[1] = 2;
  const std::size_t starts[] = {0, 1, 2, 2};
  std::copy(starts, starts + 4, hcyGetJc(array.get()));
  return array;
}

void expectAll(const ArrayHandle& array, const Numbers& starts) {
  expectIndices(array, 2);
  EXPECT_EQ(startsOf(array), starts);
  EXPECT_EQ(hcyGetIr(array.get())[1], 2U);
  EXPECT_NE(values(array), nullptr);
  EXPECT_EQ(hcyGetPi(array.get()) != nullptr, hcyIsDouble(array.get()));
}

TEST(MadeSparse, OfFallingStartsKeepsItsPointers) {
  for (const Type type : kTypes) {
    for (const auto& [name, detour] : test::detours()) {
      SCOPED_TRACE(name);
      const ArrayHandle array = madeSparse(type);
      hcySetN(array.get(), 5);
      expectAll(array, {0, 1, 2, 2, 0, 0});
      const ArrayHandle same = detour(test::duplicateOf(array));
      expectAll(same, {0, 1, 2, 2, 0, 0});
      hcySetN(same.get(), 6);
      expectAll(same, {0, 1, 2, 2, 0, 0, 0});
    }
  }
}

TEST(MadeSparse, OfAnyIndicesKeepsItsPointers) {
  for (const Type type : kTypes) {
    for (const auto& [name, detour] : test::detours()) {
      SCOPED_TRACE(name);
      ArrayHandle array = madeSparse(type);
      hcyGetJc(array.get())[0] = 7;
      hcySetM(array.get(), 2);
      expectAll(detour(std::move(array)), {7, 1, 2, 2});
    }
  }
}

TEST(MadeSparse, KeepsItsPointersInADuplicateOfItsContainer) {
  for (const Type type : kTypes) {
    const ArrayHandle array = madeSparse(type);
    hcySetN(array.get(), 5);
    const Numbers starts = {0, 1, 2, 2, 0, 0};
    const ArrayHandle copy = test::duplicateOf(test::newStructWith(test::newCellWith(array)));
    expectAll(test::onlyElementOf(test::onlyElementOf(copy)), starts);
    const ArrayHandle cell = test::newCellWith(array);
    expectAll(test::onlyElementOf(test::duplicateOf(test::duplicateOf(cell))), starts);
  }
}

}  // namespace
}  // namespace hcy
