// SPDX-License-Identifier: Apache-2.0
//
// How the outputs of a reply reach the caller, and when they do not.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/reply_call.h"

namespace hcy::abi {
namespace {

class FevalOutputs : public ReplyCall {
 protected:
  FevalOutputs() : sentinel_(hcyCreateDoubleScalar(0)) {}

  // Room for outputs that shows what a call has written: it holds an array of the test's.
  std::vector<hcyArray*> room(std::size_t count) { return {count, sentinel_.get()}; }
  bool isUntouched(hcyArray* output) const { return output == sentinel_.get(); }

 private:
  OwnedArray sentinel_;
};

VORTEN_Result resultWith(int outputs) {
  VORTEN_Result result;
  for (int i = 0; i < outputs; ++i) *result.add_lhs() = doubleArray(i);
  return result;
}

TEST_F(FevalOutputs, noneAreWantedAndNoneCome) {
  auto outputs = room(1);
  EXPECT_EQ(feval(VORTEN_Result(), 0, outputs.data()), 0);
  EXPECT_TRUE(isUntouched(outputs[0]));
  EXPECT_EQ(feval(VORTEN_Result(), 0, nullptr), 0);
}

TEST_F(FevalOutputs, keepTheOrderOfTheReply) {
  Outputs outputs(3);
  EXPECT_EQ(feval(resultWith(3), 3, outputs.data()), 0);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(hcyGetScalar(outputs[i]), static_cast<double>(i));
}

TEST_F(FevalOutputs, ofAnotherNumberAreAllDropped) {
  for (const int received : {0, 1, 3, 10}) {
    auto outputs = room(2);
    EXPECT_EQ(feval(resultWith(received), 2, outputs.data()), 1);
    EXPECT_EQ(context.lastFailure(), countFailure(received, 2));
    EXPECT_TRUE(isUntouched(outputs[0]) && isUntouched(outputs[1])) << received;
  }
}

TEST_F(FevalOutputs, thatNobodyWantedFailTheCall) {
  EXPECT_EQ(feval(resultWith(1), 0, nullptr), 1);
  EXPECT_EQ(context.lastFailure(), countFailure(1, 0));
}

TEST_F(FevalOutputs, giveWayToAnError) {
  VORTEN_Result result = resultWith(1);
  result.mutable_error()->set_message("m");
  auto outputs = room(1);
  EXPECT_EQ(feval(result, 1, outputs.data()), 1);
  EXPECT_EQ(context.lastFailure(), vortenFailure("m", ""));
  EXPECT_TRUE(isUntouched(outputs[0]));
}

TEST_F(FevalOutputs, giveWayToAnErrorWithoutAnyFieldAndOfAnyNumber) {
  VORTEN_Result result = resultWith(3);
  result.mutable_error();
  EXPECT_EQ(feval(result, 1, room(1).data()), 1);
  EXPECT_EQ(context.lastFailure(), vortenFailure("", ""));
}

TEST_F(FevalOutputs, ofAnUnservedTypeFailInEachPositionAndLeaveTheHigherOnesInPlace) {
  for (int type = VORTEN_Array::OBJECT; type <= VORTEN_Array::STRING + 1; ++type) {
    for (int position = 0; position < 3; ++position) {
      VORTEN_Result result = resultWith(3);
      result.mutable_lhs(position)->set_type(static_cast<VORTEN_Array::QXType>(type));
      auto outputs = room(3);
      EXPECT_EQ(feval(result, 3, outputs.data()), 1);
      EXPECT_EQ(context.lastFailure(), genericFailure("dispatch_on_QXType"));
      for (int i = 0; i < 3; ++i) {
        hcyArray* const output = outputs[static_cast<std::size_t>(i)];
        EXPECT_EQ(isUntouched(output), i <= position) << type << " at " << position << ": " << i;
        if (isUntouched(output)) continue;
        EXPECT_EQ(hcyGetScalar(output), i);
        hcyDestroyArray(output);
      }
    }
  }
}

TEST_F(FevalOutputs, ofTwoUnservedTypesTheHigherOneFails) {
  VORTEN_Result result = resultWith(3);
  result.mutable_lhs(0)->set_type(VORTEN_Array::STRING);
  result.mutable_lhs(1)->set_type(VORTEN_Array::OBJECT);
  auto outputs = room(3);
  EXPECT_EQ(feval(result, 3, outputs.data()), 1);
  EXPECT_TRUE(isUntouched(outputs[0]) && isUntouched(outputs[1]));
  ASSERT_FALSE(isUntouched(outputs[2]));
  EXPECT_EQ(hcyGetScalar(OwnedArray(outputs[2]).get()), 2.0);
}

TEST_F(FevalOutputs, areArraysOfTheirOwn) {
  Outputs outputs(2);
  VORTEN_Result result;
  *result.add_lhs() = doubleArray(1);
  *result.add_lhs() = doubleArray(1);
  EXPECT_EQ(feval(result, 2, outputs.data()), 0);
  *hcyGetPr(outputs[0]) = 2;
  EXPECT_EQ(hcyGetScalar(outputs[1]), 1.0);
}

TEST_F(FevalOutputs, mayBeStoredWhereTheInputsWere) {
  hcyArray* const input = hcyCreateDoubleScalar(5);
  hcyArray* handles[] = {input};
  EXPECT_EQ(feval(resultWith(1), 1, handles, {handles[0]}), 0);
  EXPECT_NE(handles[0], input);
  hcyDestroyArray(handles[0]);
  EXPECT_EQ(hcyGetScalar(input), 5.0);
  hcyDestroyArray(input);
}

TEST_F(FevalOutputs, aThousandOfThem) {
  Outputs outputs(1000);
  EXPECT_EQ(feval(resultWith(1000), 1000, outputs.data()), 0);
  for (std::size_t i = 0; i < 1000; ++i)
    EXPECT_EQ(hcyGetScalar(outputs[i]), static_cast<double>(i));
}

}  // namespace
}  // namespace hcy::abi
