// SPDX-License-Identifier: Apache-2.0
//
// Bodies that do not parse, or not whole: what was read of them counts.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/reply_call.h"

namespace hcy::abi {
namespace {

class FevalBodies : public ReplyCall {
 protected:
  // How many outputs are read of a body.
  int outputsIn(const std::string& body) {
    for (int count = 0; count < 3; ++count) {
      Outputs outputs(3);
      if (feval(body, count, outputs.data()) == 0) return count;
      EXPECT_EQ(context.lastFailure().kind, HCY_GENERIC_ERROR);
    }
    return -1;
  }
};

const std::string kGarbage("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 12);

std::string twoOutputs() {
  VORTEN_Result result;
  *result.add_lhs() = doubleArray(1);
  *result.add_lhs() = doubleArray(2);
  return result.SerializeAsString();
}

TEST_F(FevalBodies, anEmptyOneHasNoOutputs) {
  EXPECT_EQ(feval("", 0, nullptr), 0);
  EXPECT_EQ(feval("", 1, Outputs(1).data()), 1);
  EXPECT_EQ(context.lastFailure(), countFailure(0, 1));
}

TEST_F(FevalBodies, garbageHasNoOutputs) {
  EXPECT_EQ(feval(kGarbage, 0, nullptr), 0);
  EXPECT_EQ(feval(kGarbage, 1, Outputs(1).data()), 1);
  EXPECT_EQ(context.lastFailure(), countFailure(0, 1));
  EXPECT_EQ(outputsIn("<html>Service restarts</html>"), 0);
}

TEST_F(FevalBodies, garbageBehindTheOutputsChangesNothing) {
  EXPECT_EQ(outputsIn(twoOutputs() + kGarbage), 2);
}

TEST_F(FevalBodies, garbageHidesWhatIsBehindIt) {
  EXPECT_EQ(outputsIn(kGarbage + twoOutputs()), 0);
  EXPECT_EQ(feval(kGarbage + test::errorResult("m", "i"), 0, nullptr), 0);
}

TEST_F(FevalBodies, anErrorBeforeGarbageIsRead) {
  EXPECT_EQ(feval(test::errorResult("m", "i") + kGarbage, 0, nullptr), 1);
  EXPECT_EQ(context.lastFailure(), vortenFailure("m", "i"));
}

TEST_F(FevalBodies, anErrorCutInTheMiddleIsAnError) {
  const std::string body = test::errorResult("message", "identifier");
  EXPECT_EQ(feval(body.substr(0, body.size() - 3), 0, nullptr), 1);
  EXPECT_EQ(context.lastFailure().kind, HCY_VORTEN_ERROR);
  EXPECT_EQ(context.lastFailure().text, "message");
}

// Wherever it is cut, the outputs before the cut are whole.
TEST_F(FevalBodies, oneThatIsCutHasTheOutputsBeforeTheCut) {
  const std::string body = twoOutputs();
  const std::size_t half = body.size() / 2;
  int last = 0;
  for (std::size_t size = 0; size <= body.size(); ++size) {
    const int count = outputsIn(body.substr(0, size));
    EXPECT_GE(count, last) << size;
    EXPECT_LE(count, size == 0 ? 0 : size <= half ? 1 : 2) << size;
    EXPECT_GE(count, size < half ? 0 : size < body.size() ? 1 : 2) << size;
    last = count;
    if (size <= half || count != 2) continue;
    Outputs outputs(2);
    EXPECT_EQ(feval(body.substr(0, size), 2, outputs.data()), 0);
    EXPECT_EQ(hcyGetScalar(outputs[0]), 1.0);
  }
}

// Single bytes of a body with outputs and an error, each set to other values.
TEST_F(FevalBodies, oneWithAnyByteChangedIsSurvived) {
  VORTEN_Result result;
  *result.add_lhs() = containerOf(VORTEN_Array::CELL, {doubleArray(1), doubleArray(2)});
  const std::string body =
      result.SerializeAsString() + test::errorResult("m", "i", {test::stackFrame("f", "n", 1)});
  for (std::size_t i = 0; i < body.size(); ++i) {
    for (const int flip : {0x01, 0x80, 0xFF}) {
      std::string changed = body;
      changed[i] = static_cast<char>(static_cast<unsigned char>(changed[i]) ^ flip);
      Outputs outputs(1);
      const int status = feval(changed, 1, outputs.data());
      EXPECT_EQ(outputs[0] != nullptr, status == 0) << i;
    }
  }
}

TEST_F(FevalBodies, anArrayWithoutTypeIsOfTheFirstClass) {
  VORTEN_Array array = doubleArray(1);
  array.clear_type();
  EXPECT_EQ(hcyGetClassID(received(array).get()), hcyUINT8_CLASS);
}

TEST_F(FevalBodies, namesOfFieldsThatAreNotUtf8AreHandedOnAsTheyCame) {
  const std::string name = "caf\xE9";
  const std::string record =
      test::numberField(1, 12) + test::bytesField(2, "\x01\x01") +
      test::bytesField(29, test::bytesField(1, name) + test::bytesField(2, test::doubleScalar(1)));
  Outputs outputs(1);
  EXPECT_EQ(feval(test::resultOf({record}), 1, outputs.data()), 0);
  EXPECT_EQ(hcyGetFieldNameByNumber(outputs[0], 0), name);
  EXPECT_EQ(hcyGetNumberOfFields(outputs[0]), 1);
  const VORTEN_Array back = sent(outputs[0]);
  ASSERT_EQ(back.struct_().field_names_size(), 1);
  EXPECT_EQ(back.struct_().field_names(0), name);
  EXPECT_EQ(back.struct_().elements_size(), 1);
}

// A double array in this many cell arrays, one in another.
VORTEN_Array nested(int depth) {
  VORTEN_Array array = doubleArray(1);
  for (; depth > 0; --depth) array = containerOf(VORTEN_Array::CELL, {array});
  return array;
}

TEST_F(FevalBodies, containersNested49DeepAreReadWhole) {
  OwnedArray array = received(nested(49));
  for (int level = 0; level < 49; ++level) {
    ASSERT_TRUE(hcyIsCell(array.get())) << level;
    array.reset(hcyGetCell(array.get(), 0));
  }
  EXPECT_TRUE(hcyIsDouble(array.get()));
  EXPECT_EQ(hcyGetScalar(array.get()), 1.0);
}

TEST_F(FevalBodies, ofContainersNestedDeeperTheOuter49AreRead) {
  for (const int depth : {50, 300}) {
    OwnedArray array = received(nested(depth));
    for (int level = 1; level < 49; ++level) {
      array.reset(hcyGetCell(array.get(), 0));
      ASSERT_NE(array, nullptr) << level;
      EXPECT_TRUE(hcyIsCell(array.get())) << level;
    }
  }
}

}  // namespace
}  // namespace hcy::abi
