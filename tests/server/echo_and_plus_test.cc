// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "calls.h"
#include "http_client.h"

namespace hcy::test {
namespace {

TEST(Echo, GivesBackTheFirstArguments) {
  const LocalServer server;
  const auto arrays = outputs(server, "/echo", 2, {scalar(1), chars(u"two"), scalar(3)});
  EXPECT_EQ(arrays[0].SerializeAsString(), scalar(1).SerializeAsString());
  EXPECT_EQ(arrays[1].SerializeAsString(), chars(u"two").SerializeAsString());
  outputs(server, "/echo", 0, {scalar(1)});
  outputs(server, "/echo", 0, {});
}

TEST(Echo, KeepsWhatItDoesNotKnow) {
  const LocalServer server;
  VORTEN_Array object;
  object.set_type(VORTEN_Array::OBJECT);
  object.set_arrayid(7);
  object.set_iscomplex(true);
  object.set_memorylayout(VORTEN_Array::ROW_MAJOR);
  object.mutable_objects()->add_elements()->set_classnameindex(3);
  object.mutable_shareddata()->mutable_stringtable()->add_stringentry("\xff entry");
  EXPECT_EQ(outputs(server, "/echo", 1, {object})[0].SerializeAsString(),
            object.SerializeAsString());
}

TEST(Echo, CarriesALargeArray) {
  const LocalServer server;
  std::vector<double> values(3'000'000);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i);
  EXPECT_EQ(realPart(outputs(server, "/echo", 1, {doubles({1, values.size()}, values)})[0]),
            values);
}

TEST(Echo, CannotGiveMoreThanItGot) {
  const LocalServer server;
  EXPECT_EQ(errorOf(server, "/echo", 2, {scalar(1)}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/echo", -1, {scalar(1)}), "halcyon:argument:count");
}

VORTEN_Array sum(const LocalServer& server, const VORTEN_Array& a, const VORTEN_Array& b) {
  VORTEN_Array result = outputs(server, "/math/plus", 1, {a, b})[0];
  expectWellFormed(result);
  return result;
}

TEST(Plus, AddsElementByElement) {
  const LocalServer server;
  const auto result =
      sum(server, doubles({2, 1, 2}, {1, 2, 3, 4}), doubles({2, 1, 2}, {5, 6, 7, 8}));
  EXPECT_EQ(dimensionsOf(result), (Dimensions{2, 1, 2}));
  EXPECT_EQ(realPart(result), (std::vector<double>{6, 8, 10, 12}));
  EXPECT_TRUE(imaginaryPart(result).empty());
}

TEST(Plus, AddsAScalarFromEitherSide) {
  const LocalServer server;
  const auto matrix = doubles({1, 3}, {1, 2, 3});
  EXPECT_EQ(realPart(sum(server, matrix, scalar(10))), (std::vector<double>{11, 12, 13}));
  EXPECT_EQ(realPart(sum(server, scalar(10), matrix)), (std::vector<double>{11, 12, 13}));
  EXPECT_EQ(dimensionsOf(sum(server, scalar(10), matrix)), (Dimensions{1, 3}));
  EXPECT_EQ(realPart(sum(server, scalar(10), scalar(1))), (std::vector<double>{11}));
}

TEST(Plus, AddsComplexNumbers) {
  const LocalServer server;
  const auto a = complexDoubles({1, 2}, {1, 2}, {3, 4});
  const auto both = sum(server, a, complexDoubles({1, 2}, {10, 20}, {30, 40}));
  EXPECT_EQ(realPart(both), (std::vector<double>{11, 22}));
  EXPECT_EQ(imaginaryPart(both), (std::vector<double>{33, 44}));
  EXPECT_EQ(imaginaryPart(sum(server, doubles({1, 2}, {1, 2}), a)), (std::vector<double>{3, 4}));
  const auto spread = sum(server, doubles({1, 2}, {1, 2}), complexDoubles({1, 1}, {5}, {6}));
  EXPECT_EQ(realPart(spread), (std::vector<double>{6, 7}));
  EXPECT_EQ(imaginaryPart(spread), (std::vector<double>{6, 6}));
}

TEST(Plus, AddsEmptyArrays) {
  const LocalServer server;
  EXPECT_EQ(dimensionsOf(sum(server, doubles({0, 3}, {}), doubles({0, 3}, {}))),
            (Dimensions{0, 3}));
  EXPECT_EQ(dimensionsOf(sum(server, scalar(1), doubles({0, 0}, {}))), (Dimensions{0, 0}));
  const auto complex = complexDoubles({1, 1}, {1}, {1});
  EXPECT_EQ(dimensionsOf(sum(server, complex, doubles({0, 0}, {}))), (Dimensions{0, 0}));
}

TEST(Plus, DropsTheUnreliableComplexFlag) {
  const LocalServer server;
  auto flagged = scalar(1);
  flagged.set_iscomplex(true);
  EXPECT_EQ(realPart(sum(server, flagged, flagged)), (std::vector<double>{2}));
}

TEST(Plus, EvaluatesWithoutOutputs) {
  const LocalServer server;
  outputs(server, "/math/plus", 0, {scalar(1), scalar(2)});
  EXPECT_EQ(errorOf(server, "/math/plus", 0, {scalar(1), chars(u"a")}), "halcyon:argument:class");
}

TEST(Plus, RefusesWrongArguments) {
  const LocalServer server;
  const auto error = [&server](int nargout, const std::vector<VORTEN_Array>& arguments) {
    return errorOf(server, "/math/plus", nargout, arguments);
  };
  EXPECT_EQ(error(1, {scalar(1)}), "halcyon:argument:count");
  EXPECT_EQ(error(1, {scalar(1), scalar(1), scalar(1)}), "halcyon:argument:count");
  EXPECT_EQ(error(2, {scalar(1), scalar(1)}), "halcyon:argument:count");
  EXPECT_EQ(error(1, {scalar(1), chars(u"a")}), "halcyon:argument:class");
  EXPECT_EQ(error(1, {doubles({1, 2}, {1, 2}), doubles({2, 1}, {1, 2})}), "halcyon:argument:size");
  EXPECT_EQ(error(1, {doubles({0, 0}, {}), doubles({0, 1}, {})}), "halcyon:argument:size");
}

}  // namespace
}  // namespace hcy::test
