// SPDX-License-Identifier: Apache-2.0
//
// Inputs on their way to the server: sent as they are, and the caller's afterwards as before.

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "array/array_to_send.h"
#include "runtime/reply_call.h"

namespace hcy::abi {
namespace {

using FevalInputs = ReplyCall;

std::string bytesOf(const hcyArray* array) {
  const SentArray sent(proxyOf(array).toSend(SendingOrder()));
  std::string bytes(sent.size(), '\0');
  sent.write(reinterpret_cast<std::uint8_t*>(bytes.data()));
  return bytes;
}

OwnedArray int16s() {
  OwnedArray array(hcyCreateNumericMatrix(1, 2, hcyINT16_CLASS, hcyCOMPLEX));
  static_cast<std::int16_t*>(hcyGetData(array.get()))[0] = -1;
  static_cast<std::int16_t*>(hcyGetImagData(array.get()))[1] = 300;
  return array;
}

TEST_F(FevalInputs, nargoutIsPresentWhateverItIs) {
  for (const std::int32_t nargout : {0, 1, 7, 2147483647, -1}) {
    std::vector<hcyArray*> outputs(8, nullptr);
    static_cast<void>(feval("", nargout, outputs.data()));
    EXPECT_TRUE(params.has_nargout());
    EXPECT_EQ(params.nargout(), nargout);
  }
}

TEST_F(FevalInputs, elementsThatAreKeptOutsideTheMessageAreWrittenIntoItFirst) {
  const OwnedArray input = int16s();
  const VORTEN_Array array = sent(input.get());
  EXPECT_EQ(array.int16().elements(0), -1);
  EXPECT_EQ(array.int16().imag_elements(1), 300);
  const OwnedArray text(hcyCreateString("ab"));
  hcyGetChars(text.get())[0] = 0xD83C;
  EXPECT_EQ(sent(text.get()).qxchar().elements(0), 0xD83CU);
}

TEST_F(FevalInputs, elementsOfContainersThreeDeepAreWrittenIntoThem) {
  const OwnedArray inner = int16s();
  const OwnedArray middle(hcyCreateCellMatrix(1, 1));
  hcySetCell(middle.get(), 0, inner.get());
  const char* const names[] = {"f"};
  const OwnedArray outer(hcyCreateStructMatrix(1, 1, 1, names));
  hcySetField(outer.get(), 0, "f", middle.get());
  const VORTEN_Array array = sent(outer.get());
  EXPECT_EQ(array.struct_().elements(0).cell().elements(0).int16().elements(0), -1);
}

TEST_F(FevalInputs, aChangeBetweenTwoCallsIsSent) {
  const OwnedArray input = int16s();
  EXPECT_EQ(sent(input.get()).int16().elements(0), -1);
  static_cast<std::int16_t*>(hcyGetData(input.get()))[0] = 5;
  EXPECT_EQ(sent(input.get()).int16().elements(0), 5);
}

TEST_F(FevalInputs, oneArrayMayOccurTwiceAndInContainersOfTheSameCall) {
  const OwnedArray one = int16s();
  const OwnedArray cell(hcyCreateCellMatrix(1, 2));
  hcySetCell(cell.get(), 0, one.get());
  hcySetCell(cell.get(), 1, one.get());
  EXPECT_EQ(feval("", 0, nullptr, {one.get(), cell.get(), one.get(), cell.get()}), 0);
  ASSERT_EQ(params.rhs_size(), 4);
  EXPECT_EQ(params.rhs(0).SerializeAsString(), params.rhs(2).SerializeAsString());
  EXPECT_EQ(params.rhs(1).SerializeAsString(), params.rhs(3).SerializeAsString());
  EXPECT_EQ(params.rhs(1).cell().elements(0).SerializeAsString(), bytesOf(one.get()));
  EXPECT_EQ(params.rhs(1).cell().elements(1).SerializeAsString(), bytesOf(one.get()));
}

// The content of an input is only read, whatever becomes of the call.
TEST_F(FevalInputs, areTheSameContentsAndBytesAfterEveryOutcome) {
  const OwnedArray a = int16s();
  const OwnedArray b(hcyCreateCellMatrix(1, 2));
  const std::vector<const hcyArray*> inputs{a.get(), b.get(), a.get()};
  const std::vector<std::string> before{bytesOf(a.get()), bytesOf(b.get())};
  const auto* const content = proxyOf(a.get()).content().get();
  VORTEN_Result unserved;
  unserved.add_lhs()->set_type(VORTEN_Array::OBJECT);
  const test::UnlistenedPort nobody;
  const test::ScriptServer missing(
      {test::Connection{test::replyToEach(test::httpReply(404, "Not Found", ""))}});

  const auto expectUnchanged = [&](const char* outcome) {
    EXPECT_EQ(proxyOf(a.get()).content().get(), content) << outcome;
    EXPECT_EQ(proxyOf(a.get()).content()->use_count(), 1U) << outcome;
    EXPECT_EQ(bytesOf(a.get()), before[0]) << outcome;
    EXPECT_EQ(bytesOf(b.get()), before[1]) << outcome;
  };
  EXPECT_EQ(feval("", 0, nullptr, inputs), 0);
  expectUnchanged("success");
  EXPECT_EQ(feval(test::errorResult("m", "i"), 0, nullptr, inputs), 1);
  expectUnchanged("server error");
  EXPECT_EQ(feval(answer(), 0, nullptr, inputs), 1);
  expectUnchanged("other number of outputs");
  EXPECT_EQ(feval(unserved, 1, Outputs(1).data(), inputs), 1);
  expectUnchanged("unserved output");
  EXPECT_EQ(context.feval(nobody.url(), 0, nullptr, inputs), 1);
  expectUnchanged("nobody listens");
  EXPECT_EQ(context.feval(missing.url(), 0, nullptr, inputs), 1);
  expectUnchanged("status 404");
}

// An array whose elements cannot be written.
class FailingProxy : public VORTENArrayProxy {
 public:
  FailingProxy()
      : VORTENArrayProxy(VORTEN_Array::DOUBLE, std::array<std::uint64_t, 2>{}, false, 0) {}
  ArrayToSend toSend(const SendingOrder& /*order*/) const override {
    throw std::runtime_error("cannot be written");
  }
};

TEST_F(FevalInputs, oneThatFailsOnItsWayLeavesThoseBeforeItToTheCaller) {
  const OwnedArray good(hcyCreateDoubleScalar(2));
  const FailingProxy failing;
  EXPECT_EQ(context.feval("http://127.0.0.1:1/", 0, nullptr, {good.get(), &failing}), 1);
  EXPECT_EQ(context.lastFailure(), genericFailure("cannot be written"));
  EXPECT_EQ(hcyGetScalar(good.get()), 2.0);
  EXPECT_EQ(sent(good.get()).qxdouble().elements(0), 2.0);
}

}  // namespace
}  // namespace hcy::abi
