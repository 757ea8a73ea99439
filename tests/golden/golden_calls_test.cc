// SPDX-License-Identifier: Apache-2.0
//
// The golden files on the wire: what the library sends for arrays made by the exported functions,
// and what it makes of replies, must be these very bytes.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "arrays.h"
#include "golden_files.h"
#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::Connection;
using test::goldenBytes;
using test::httpReply;
using test::replyToEach;
using test::ScriptServer;

std::vector<const hcyArray*> handlesOf(const std::vector<OwnedArray>& arrays) {
  std::vector<const hcyArray*> handles;
  for (const OwnedArray& array : arrays) handles.push_back(array.get());
  return handles;
}

class Golden : public ::testing::Test {
 protected:
  void TearDown() override { expectUsable(context); }

  // Calls for as many outputs as there are.
  void call(const ScriptServer& server, const std::vector<const hcyArray*>& inputs,
            Outputs& outputs, std::size_t count) {
    ASSERT_EQ(context.feval(server.url(), static_cast<std::int32_t>(count), outputs.data(), inputs),
              0)
        << ::testing::PrintToString(context.lastFailure());
  }

  static std::vector<Connection> replying(const std::string& file) {
    return {Connection{replyToEach(httpReply(200, "OK", goldenBytes(file)))}};
  }

  Library library;
  Config config{library};
  Context context{library, config};
};

class GoldenArraysOnTheWire : public Golden, public ::testing::WithParamInterface<GoldenArrays> {
 protected:
  std::size_t count() const { return GetParam().arrays.size(); }
  std::string request() const { return goldenBytes(GetParam().name + ".request.bin"); }

  const ScriptServer server{replying(GetParam().name + ".reply.bin")};
};

TEST_P(GoldenArraysOnTheWire, areSentAsTheseBytes) {
  std::vector<OwnedArray> inputs;
  for (const Value& value : GetParam().arrays) inputs.push_back(makeArray(value));
  Outputs outputs(count());
  call(server, handlesOf(inputs), outputs, count());
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(server.requests()[0].body, request());
}

TEST_P(GoldenArraysOnTheWire, areReadFromTheseBytes) {
  Outputs outputs(count());
  call(server, {}, outputs, count());
  for (std::size_t i = 0; i < count(); ++i) {
    SCOPED_TRACE("output " + std::to_string(i));
    expectArray(outputs[i], GetParam().arrays[i]);
  }
}

TEST_P(GoldenArraysOnTheWire, areSentOnAsTheyCame) {
  Outputs received(count());
  Outputs outputs(count());
  call(server, {}, received, count());
  call(server, {received.data(), received.data() + count()}, outputs, count());
  ASSERT_EQ(server.requests().size(), 2U);
  EXPECT_EQ(server.requests()[1].body, request());
}

std::string nameOf(const ::testing::TestParamInfo<GoldenArrays>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Numeric, GoldenArraysOnTheWire, ::testing::ValuesIn(goldenNumericArrays()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Other, GoldenArraysOnTheWire, ::testing::ValuesIn(goldenOtherArrays()),
                         nameOf);

// Scalars and texts have creation functions of their own.
TEST_F(Golden, scalarsAndTextsAreSentAsTheseBytes) {
  const char* const rows[] = {"ab", "c"};
  std::vector<OwnedArray> inputs;
  inputs.emplace_back(hcyCreateDoubleScalar(0.1));
  inputs.emplace_back(hcyCreateLogicalScalar(true));
  inputs.emplace_back(hcyCreateString("Halcyon"));
  inputs.emplace_back(hcyCreateString("\xC3\xA9"));
  inputs.emplace_back(hcyCreateString(""));
  inputs.emplace_back(hcyCreateCharMatrixFromStrings(2, rows));
  const ScriptServer server(replying("nothing.reply.bin"));
  Outputs none(0);
  call(server, handlesOf(inputs), none, 0);
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(server.requests()[0].body, goldenBytes("scalars_and_texts.request.bin"));
}

// One array three times, and stored in a container besides, is sent whole each time.
TEST_F(Golden, anArrayInManyPlacesIsSentAsTheseBytes) {
  const OwnedArray shared(hcyCreateDoubleScalar(1.5));
  const OwnedArray container(hcyCreateCellMatrix(1, 2));
  hcySetCell(container.get(), 0, shared.get());
  hcySetCell(container.get(), 1, shared.get());
  const ScriptServer server(replying("nothing.reply.bin"));
  Outputs none(0);
  call(server, {shared.get(), container.get(), shared.get()}, none, 0);
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(server.requests()[0].body, goldenBytes("many_places.request.bin"));
}

// Fields of the schema that the library has no use for, in arrays of every kind of storage.
TEST_F(Golden, fieldsWithoutAUseAreSentOnAsTheyCame) {
  const ScriptServer server(replying("unused_fields.reply.bin"));
  Outputs received(3);
  call(server, {}, received, 3);
  EXPECT_FALSE(hcyIsComplex(received[0]));
  Outputs outputs(3);
  call(server, {received[0], received[1], received[2]}, outputs, 3);
  ASSERT_EQ(server.requests().size(), 2U);
  EXPECT_EQ(server.requests()[1].body, goldenBytes("unused_fields.request.bin"));
}

TEST_F(Golden, anErrorIsReadFromTheseBytes) {
  const ScriptServer server(replying("error.reply.bin"));
  hcyArray* untouched = nullptr;
  EXPECT_EQ(context.feval(server.url(), 1, &untouched), 1);
  EXPECT_EQ(untouched, nullptr);
  EXPECT_EQ(context.lastFailure(),
            vortenFailure("Matrix is singular to working precision: \xCF\x83 = 0.",
                          "halcyon:matrix:singular",
                          {{"/srv/functions/solve.vt", "solve", 42},
                           {"", "anonymous", -1},
                           {"/srv/functions/main.vt", "", 2147483647},
                           {"", "", 0}}));
}

TEST_F(Golden, anErrorWithoutAnyFieldIsReadFromTheseBytes) {
  const ScriptServer server(replying("bare_error.reply.bin"));
  hcyArray* untouched = nullptr;
  EXPECT_EQ(context.feval(server.url(), 1, &untouched), 1);
  EXPECT_EQ(untouched, nullptr);
  EXPECT_EQ(context.lastFailure(), vortenFailure("", ""));
}

}  // namespace
}  // namespace hcy::abi
