// SPDX-License-Identifier: Apache-2.0
//
// Golden replies with each byte removed, each bit flipped, and cut behind each byte: the call ends
// as documented, and every function can be called on its outputs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "array_walk.h"
#include "canned_client.h"
#include "hcy.client.VORTENResult.pb.h"
#include "runtime/error_info.h"
#include "runtime/feval.h"

namespace hcy::fuzz {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::filesystem::path> goldenReplies() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(HCY_GOLDEN_FILES)) {
    if (entry.path().string().ends_with(".reply.bin")) files.push_back(entry.path());
  }
  return files;
}

std::string contentsOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The name of a golden reply as the name of a test.
std::string nameOf(const testing::TestParamInfo<std::filesystem::path>& info) {
  const std::string file = info.param.filename().string();
  return file.substr(0, file.find('.'));
}

class ByteSweep : public testing::TestWithParam<std::filesystem::path> {
 protected:
  ByteSweep() : golden_(contentsOf(GetParam())) {
    auto client = std::make_unique<CannedClient>();
    client_ = client.get();
    context_.client = std::move(client);
  }

  static int outputsOf(const std::string& body) {
    client::VORTEN_Result received;
    static_cast<void>(received.ParsePartialFromString(body));
    return received.lhs_size();
  }

  // Calls that are answered with the body, one that wants what is there and one that wants what
  // there was before it was damaged, and the walk over their outputs.
  void call(const std::string& body) {
    client_->reply = body;
    const int count = outputsOf(body);
    callFor(count);
    if (count != goldenCount_) callFor(goldenCount_);
  }

  void callFor(int count) {
    std::vector<hcyArray*> outputs(static_cast<std::size_t>(count), nullptr);
    const bool failed = feval(&context_, "", count, outputs.data(), 0, nullptr) != 0;
    if (failed) expectDocumentedFailure();
    for (hcyArray* output : outputs) {
      if (output == nullptr) {
        EXPECT_TRUE(failed);
        continue;
      }
      readEverything(output, 3);
      changeEverything(output);
      readEverything(output, 3);
      hcyDestroyArray(output);
    }
  }

  void expectDocumentedFailure() {
    hcyErrorInfo info;
    getLastErrorInfo(&context_, &info);
    if (info.kind == HCY_GENERIC_ERROR) {
      EXPECT_THAT(info.details.generic.details,
                  AnyOf(StartsWith("Number of outputs received from VORTEN, "),
                        HasSubstr("dispatch_on_QXType")));
    } else {
      EXPECT_EQ(info.kind, HCY_VORTEN_ERROR);
    }
    destroyLastErrorInfo(&info);
  }

  const std::string golden_;
  const int goldenCount_ = outputsOf(golden_);
  CannedClient* client_ = nullptr;
  hcyClientContext context_;
};

TEST_P(ByteSweep, eachPrefix) {
  for (std::size_t size = 0; size <= golden_.size(); ++size) call(golden_.substr(0, size));
}

TEST_P(ByteSweep, eachByteRemoved) {
  for (std::size_t i = 0; i < golden_.size(); ++i) {
    call(std::string(golden_).erase(i, 1));
  }
}

TEST_P(ByteSweep, eachBitFlipped) {
  for (std::size_t i = 0; i < golden_.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      std::string flipped = golden_;
      flipped[i] = static_cast<char>(static_cast<unsigned char>(flipped[i]) ^ (1U << bit));
      call(flipped);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(GoldenReplies, ByteSweep, testing::ValuesIn(goldenReplies()), nameOf);

}  // namespace
}  // namespace hcy::fuzz
