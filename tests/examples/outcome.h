// SPDX-License-Identifier: Apache-2.0
//
// A program run by the shell.

#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

namespace hcy::test {

struct Outcome {
  int status = -1;
  std::string output;  // of both streams
};

inline Outcome run(const std::string& command) {
  Outcome outcome;
  std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
  std::array<char, 4096> piece{};
  while (std::fgets(piece.data(), piece.size(), pipe) != nullptr) outcome.output += piece.data();
  outcome.status = WEXITSTATUS(pclose(pipe));
  return outcome;
}

}  // namespace hcy::test
