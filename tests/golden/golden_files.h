// SPDX-License-Identifier: Apache-2.0
//
// NAME.request.bin and NAME.reply.bin are whole bodies; the .txt beside each says the same in
// words. `make` writes the one from the other.

#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace hcy::test {

inline const std::filesystem::path kGoldenFiles = HCY_GOLDEN_FILES;

inline std::string goldenBytes(const std::string& name) {
  std::ifstream stream(kGoldenFiles / name, std::ios::binary);
  if (!stream) throw std::runtime_error("no golden file " + name);
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

}  // namespace hcy::test
