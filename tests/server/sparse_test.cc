// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "calls.h"

namespace hcy::test {
namespace {

// [0 5 0; 7 0 2]
VORTEN_Array example() { return sparse({2, 3}, {0, 1, 2, 3}, {1, 0, 1}, {7, 5, 2}); }

TEST(SparseMultiply, GivesTheProduct) {
  const LocalServer server;
  const auto result =
      outputs(server, "/sparse/multiply", 1, {example(), doubles({3, 2}, {1, 2, 3, 4, 5, 6})})[0];
  expectWellFormed(result);
  EXPECT_EQ(dimensionsOf(result), (Dimensions{2, 2}));
  EXPECT_EQ(realPart(result), (std::vector<double>{10, 13, 25, 40}));
}

TEST(SparseMultiply, AddsUpARow) {
  const LocalServer server;
  const auto ones = doubles({3, 1}, {1, 1, 1});
  const auto row = sparse({1, 3}, {0, 1, 2, 3}, {0, 0, 0}, {1, 2, 4});
  EXPECT_EQ(realPart(outputs(server, "/sparse/multiply", 1, {row, ones})[0]),
            (std::vector<double>{7}));
}

TEST(SparseMultiply, MultipliesEmptyMatrices) {
  const LocalServer server;
  const auto none = sparse({2, 0}, {0}, {}, {});
  const auto zero = outputs(server, "/sparse/multiply", 1, {none, doubles({0, 3}, {})})[0];
  EXPECT_EQ(dimensionsOf(zero), (Dimensions{2, 3}));
  EXPECT_EQ(realPart(zero), std::vector<double>(6));
  const auto flat = outputs(server, "/sparse/multiply", 1, {example(), doubles({3, 0}, {})})[0];
  EXPECT_EQ(dimensionsOf(flat), (Dimensions{2, 0}));
}

TEST(SparseMultiply, RefusesBrokenIndices) {
  const LocalServer server;
  const auto error = [&server](const VORTEN_Array& a) {
    return errorOf(server, "/sparse/multiply", 1, {a, doubles({3, 1}, {1, 1, 1})});
  };
  const std::uint64_t huge = std::uint64_t{1} << 63;
  EXPECT_EQ(error(sparse({2, 3}, {}, {}, {})), "halcyon:argument:value");
  EXPECT_EQ(error(sparse({2, 3}, {0, 1, 2}, {1, 0}, {7, 5})), "halcyon:argument:value");
  EXPECT_EQ(error(sparse({2, 3}, {0, 1, 2, 3}, {1, 0}, {7, 5, 2})), "halcyon:argument:value");
  EXPECT_EQ(error(sparse({2, 3}, {1, 1, 2, 3}, {1, 0, 1}, {7, 5, 2})), "halcyon:argument:value");
  EXPECT_EQ(error(sparse({2, 3}, {0, 1, 2, huge}, {1, 0, 1}, {7, 5, 2})), "halcyon:argument:value");
  EXPECT_EQ(error(sparse({2, 3}, {0, 3, 2, 3}, {0, 1, 1}, {7, 5, 2})), "halcyon:argument:value");
  EXPECT_EQ(error(sparse({2, 3}, {0, huge, 2, 3}, {0, 1, 1}, {7, 5, 2})), "halcyon:argument:value");
  EXPECT_EQ(error(sparse({2, 3}, {0, 1, 2, 3}, {1, 2, 1}, {7, 5, 2})), "halcyon:argument:value");
  EXPECT_EQ(error(sparse({2, 3}, {0, 1, 2, 3}, {1, huge, 1}, {7, 5, 2})), "halcyon:argument:value");
}

TEST(SparseMultiply, TakesRowsInAnyOrder) {
  const LocalServer server;
  const auto a = sparse({2, 3}, {0, 2, 2, 2}, {1, 0}, {7, 5});
  EXPECT_EQ(realPart(outputs(server, "/sparse/multiply", 1, {a, doubles({3, 1}, {1, 1, 1})})[0]),
            (std::vector<double>{5, 7}));
}

TEST(SparseMultiply, RefusesWrongArguments) {
  const LocalServer server;
  const auto b = doubles({3, 1}, {1, 1, 1});
  const auto error = [&server](const VORTEN_Array& a, const VORTEN_Array& right) {
    return errorOf(server, "/sparse/multiply", 1, {a, right});
  };
  EXPECT_EQ(error(example(), doubles({2, 1}, {1, 1})), "halcyon:argument:size");
  EXPECT_EQ(error(example(), example()), "halcyon:argument:class");
  EXPECT_EQ(error(b, b), "halcyon:argument:class");
  auto logical = example();
  logical.mutable_sparse()->set_type(VORTEN_Array::Sparse::LOGICAL);
  EXPECT_EQ(error(logical, b), "halcyon:argument:class");
  auto complex = example();
  complex.mutable_sparse()->mutable_qxsparsedouble()->add_imag_elements(1);
  EXPECT_EQ(error(complex, b), "halcyon:argument:value");
  auto deep = example();
  deep.add_dimension(2);
  EXPECT_EQ(error(deep, b), "halcyon:argument:size");
  EXPECT_EQ(errorOf(server, "/sparse/multiply", 1, {b}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/sparse/multiply", 2, {example(), b}), "halcyon:argument:count");
}

TEST(SparseMultiply, RefusesAProductThatIsTooLarge) {
  const LocalServer server;
  const auto tall = sparse({2147483647, 1}, {0, 0}, {}, {});
  EXPECT_EQ(errorOf(server, "/sparse/multiply", 1, {tall, scalar(1)}), "halcyon:result:size");
  const auto taller = sparse({2147483648, 1}, {0, 0}, {}, {});
  EXPECT_EQ(errorOf(server, "/sparse/multiply", 1, {taller, scalar(1)}), "halcyon:argument:size");
}

}  // namespace
}  // namespace hcy::test
