// SPDX-License-Identifier: Apache-2.0
//
// Feeds a fuzzer the files of the directories that are named, without libFuzzer, so that
// any compiler makes a test of it. A directory that does not exist has no files.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void feed(const std::filesystem::path& file) {
  // Told first, for the case that it does not come back.
  std::printf("%s\n", file.c_str());
  std::fflush(stdout);
  std::ifstream stream(file, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
  // In a block of its own, so that a sanitizer sees a read behind the end.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) continue;
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      feed(entry.path());
      ++count;
    }
  }
  std::printf("%d files\n", count);
  return count == 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}
