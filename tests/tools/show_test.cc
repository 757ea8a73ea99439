// SPDX-License-Identifier: Apache-2.0
//
// Files that are no bodies, or nearly so, are shown or refused.

#include "bodies/show.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "support/pki.h"
#include "support/wire_bytes.h"
#include "text/source_text.h"

namespace hcy::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// Whether it is shown; what is shown is JSON.
bool isShown(const std::string& bytes) {
  try {
    const std::string shown = tools::jsonOfBody(bytes, tools::Body::kDetected);
    EXPECT_TRUE(nlohmann::json::accept(shown)) << shown;
    return true;
  } catch (const tools::BadInput&) {
    return false;
  }
}

TEST(Show, bodiesOfEveryKindAndWhatIsLeftOfThem) {
  std::mt19937 random(5);
  int shown = 0;
  int refused = 0;
  for (const auto& file : std::filesystem::directory_iterator(HCY_GOLDEN_FILES)) {
    if (file.path().extension() != ".bin") continue;
    const std::string body = contentsOf(file.path());
    EXPECT_EQ(isShown(body), !body.empty()) << file.path();
    for (int i = 0; i < 40; ++i) {
      std::string changed = body.substr(0, random() % (body.size() + 1));
      for (std::size_t j = random() % 3; j > 0 && !changed.empty(); --j) {
        changed[random() % changed.size()] = static_cast<char>(random());
      }
      (isShown(changed) ? shown : refused) += 1;
    }
  }
  EXPECT_GT(shown, 40);
  EXPECT_GT(refused, 100);
}

TEST(Show, anEmptyFileIsNoBodyUnlessItIsSaidToBeOne) {
  try {
    tools::jsonOfBody("", tools::Body::kDetected);
    FAIL();
  } catch (const tools::BadInput& problem) {
    EXPECT_THAT(problem.what(), StartsWith("the file is empty"));
  }
  EXPECT_EQ(tools::jsonOfBody("", tools::Body::kReply), "{\"reply\": {}}");
  EXPECT_EQ(tools::jsonOfBody("", tools::Body::kRequest), "{\"request\": {}}");
}

TEST(Show, nestedDeeperThanTheStackWouldBear) {
  std::string array;
  for (int i = 0; i < 40; ++i) array = bytesField(28, bytesField(1, array));
  EXPECT_TRUE(isShown(resultOf({array})));
  for (int i = 0; i < 1000; ++i) array = bytesField(28, bytesField(1, array));
  EXPECT_FALSE(isShown(resultOf({array})));
  EXPECT_FALSE(isShown(std::string(1000000, '\x0B')));  // groups
}

TEST(Show, aTypeWithoutANameIsANumber) {
  EXPECT_THAT(tools::jsonOfBody(resultOf({numberField(1, 99)}), tools::Body::kDetected),
              HasSubstr(R"("type": 99)"));
}

TEST(Show, unknownFieldsInsideOfAllMessagesTellRequestsFromReplies) {
  // As much is unknown in two inputs as in an error.
  const std::string body = bytesField(2, numberField(99, 1)) + bytesField(2, "");
  EXPECT_THAT(tools::jsonOfBody(body, tools::Body::kDetected), HasSubstr(R"({"reply": )"));
}

TEST(Show, bytesOfIntegersAreNumbers) {
  const auto shown = [](unsigned classId, unsigned field) {
    return tools::jsonOfBody(
        resultOf({numberField(1, classId) + bytesField(field, bytesField(1, "\x01\xFF"))}),
        tools::Body::kDetected);
  };
  EXPECT_THAT(shown(0, 16), HasSubstr(R"("elements": [1, 255])"));
  EXPECT_THAT(shown(1, 17), HasSubstr(R"("elements": [1, -1])"));
}

TEST(Show, textsThatAreNotUtf8AreShownWhereverTheyAre) {
  const std::string name = bytesField(29, bytesField(1, "\xFF"));
  EXPECT_THAT(tools::jsonOfBody(resultOf({numberField(1, 12) + name}), tools::Body::kDetected),
              HasSubstr(R"("hexadecimal": "ff")"));
}

TEST(Show, codeUnitsThatAreNoTextAreNumbers) {
  const auto shown = [](const std::string& units) {
    return tools::jsonOfBody(resultOf({numberField(1, 11) + bytesField(27, bytesField(1, units))}),
                             tools::Body::kDetected);
  };
  EXPECT_THAT(shown(varint('a') + varint(0x10000)), HasSubstr(R"("elements": [97, 65536])"));
  EXPECT_THAT(shown(varint('a') + varint(0xD800)), HasSubstr(R"("elements": [97, 55296])"));
}

}  // namespace
}  // namespace hcy::test
