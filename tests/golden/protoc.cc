// SPDX-License-Identifier: Apache-2.0

#include "protoc.h"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace hcy::test {
namespace {

std::string outputOf(const std::string& command) {
  std::FILE* const pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  std::string output;
  std::array<char, 4096> piece{};
  while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), pipe)) {
    output.append(piece.data(), count);
  }
  if (::pclose(pipe) != 0) throw std::runtime_error("failed: " + command);
  return output;
}

std::string translated(const std::string& direction, const std::string& message,
                       const std::string& file) {
  return outputOf("cd '" HCY_SCHEMA "' && '" HCY_PROTOC "' --" + direction + "=hcy.client." +
                  message + " *.proto <'" + file + "'");
}

}  // namespace

std::string decodedByProtoc(const std::string& message, const std::string& binaryFile) {
  return translated("decode", message, binaryFile);
}

std::string encodedByProtoc(const std::string& message, const std::string& textFile) {
  return translated("encode", message, textFile);
}

}  // namespace hcy::test
