// SPDX-License-Identifier: Apache-2.0
//
// Does operations a given number of times under callgrind, twice over, and has it dump what the
// second time costs: by then all that is made but once has been made.

#include <valgrind/callgrind.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>

#include "operations/operation.h"

namespace {

using hcy::bench::Operation;

void count(const Operation& operation, std::size_t repeats) {
  const Operation::Repeat repeat = operation.prepare();
  repeat(repeats);
  CALLGRIND_ZERO_STATS;
  repeat(repeats);
  CALLGRIND_DUMP_STATS_AT(operation.name.c_str());
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 3 || argc % 2 == 0) {
    std::cerr << "usage: " << argv[0] << " OPERATION REPEATS...\n";
    return EXIT_FAILURE;
  }
  std::map<std::string, Operation> operations;
  for (Operation& operation : hcy::bench::allOperations()) {
    operations.emplace(operation.name, std::move(operation));
  }
  for (int i = 1; i < argc; i += 2) count(operations.at(argv[i]), std::stoul(argv[i + 1]));
  return EXIT_SUCCESS;
} catch (const std::out_of_range&) {
  std::cerr << argv[0] << ": there is no such operation\n";
  return EXIT_FAILURE;
}
