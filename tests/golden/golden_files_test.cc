// SPDX-License-Identifier: Apache-2.0
//
// The golden files as protoc, which is no code of ours, reads and writes them with our schema.

#include "golden_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "protoc.h"

namespace hcy::test {
namespace {

// Without the ending: "int16.request".
std::vector<std::string> stemsWith(const std::string& ending) {
  std::vector<std::string> stems;
  for (const auto& entry : std::filesystem::directory_iterator(kGoldenFiles)) {
    if (entry.path().extension() == ending) stems.push_back(entry.path().stem().string());
  }
  std::ranges::sort(stems);
  return stems;
}

std::string messageIn(const std::string& stem) {
  return stem.ends_with(".request") ? "VORTEN_Params" : "VORTEN_Result";
}

TEST(GoldenFiles, comeInPairs) {
  EXPECT_FALSE(stemsWith(".bin").empty());
  EXPECT_EQ(stemsWith(".bin"), stemsWith(".txt"));
}

TEST(GoldenFiles, areDecodedToTheirTexts) {
  for (const std::string& stem : stemsWith(".bin")) {
    const std::string file = (kGoldenFiles / (stem + ".bin")).string();
    EXPECT_EQ(decodedByProtoc(messageIn(stem), file), goldenBytes(stem + ".txt")) << stem;
  }
}

TEST(GoldenFiles, areEncodedFromTheirTexts) {
  for (const std::string& stem : stemsWith(".txt")) {
    const std::string file = (kGoldenFiles / (stem + ".txt")).string();
    EXPECT_EQ(encodedByProtoc(messageIn(stem), file), goldenBytes(stem + ".bin")) << stem;
  }
}

}  // namespace
}  // namespace hcy::test
