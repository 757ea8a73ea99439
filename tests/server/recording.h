// SPDX-License-Identifier: Apache-2.0
//
// A folder of recorded calls, for one test.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "calls.h"
#include "http_client.h"
#include "support/pki.h"

namespace hcy::test {

namespace fs = std::filesystem;

inline HttpReply plusOne(const ServerProcess& server, double value) {
  return sendRequest(server.url("/math/plus"), serializedParams(1, {scalar(value), scalar(1)}));
}

class Recording : public testing::Test {
 protected:
  std::size_t recorded() const {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(folder())) {
      count += entry.path().extension() == ".hcycall";
    }
    return count;
  }
  // The file of the only call that is recorded.
  fs::path onlyFile() const {
    for (const auto& entry : fs::directory_iterator(folder())) {
      if (entry.path().extension() == ".hcycall") return entry.path();
    }
    throw std::runtime_error("nothing is recorded");
  }
  fs::path folder() const { return temporary_.file("calls"); }
  std::vector<std::string> recording(const std::string& upstream) const {
    return {"--upstream", upstream, "--record", folder().string()};
  }
  std::vector<std::string> replaying() const { return {"--replay", folder().string()}; }

  const TestDirectory temporary_;
};

}  // namespace hcy::test
