// SPDX-License-Identifier: Apache-2.0
//
// The pass phrase of a private key does not stay in memory. libcurl's own copy, which a context
// has, is not ours to wipe.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/client.h"

namespace hcy::abi {
namespace {

// Made when it is needed, and wiped then, so that no memory of this program holds it.
class Phrase {
 public:
  explicit Phrase(char variant) {
    auto state = static_cast<std::uint32_t>(variant);
    for (std::size_t i = 0; i + 1 < text_.size(); ++i) {
      state = state * 1664525 + 1013904223;
      text_.at(i) = static_cast<char>('A' + (state >> 16) % 26);
    }
  }
  Phrase(const Phrase&) = delete;
  Phrase& operator=(const Phrase&) = delete;
  ~Phrase() {
    for (volatile char& character : text_) character = '\0';
  }
  const char* c_str() const { return text_.data(); }
  std::string_view text() const { return {text_.data(), text_.size() - 1}; }
  // The allocator writes over the beginning of what is freed.
  std::string_view end() const { return text().substr(50); }

 private:
  std::array<char, 100> text_{};
};

struct Region {
  std::uintptr_t begin;
  std::uintptr_t end;
};

// Where this process can write, but for what a sanitizer maps.
std::vector<Region> writableRegions() {
  constexpr std::uintptr_t largest = std::uintptr_t{1} << 31;
  std::vector<Region> regions;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    Region region{};
    std::array<char, 5> access{};
    if (std::sscanf(line.c_str(), "%lx-%lx %4s", &region.begin, &region.end, access.data()) == 3 &&
        access[0] == 'r' && access[1] == 'w' && region.end - region.begin < largest) {
      regions.push_back(region);
    }
  }
  return regions;
}

// How often the phrase stands in memory.
int occurrences(char variant) {
  std::vector<char> piece(1 << 16);
  int count = 0;
  const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  for (const Region& region : writableRegions()) {
    for (std::uintptr_t at = region.begin; at < region.end; at += piece.size() / 2) {
      const auto size = std::min<std::uintptr_t>(piece.size(), region.end - at);
      const ssize_t got = ::pread(memory, piece.data(), size, static_cast<off_t>(at));
      const auto half = std::min<std::uintptr_t>(size, piece.size() / 2);
      const Phrase phrase(variant);
      // What begins in the second half is found with the next piece.
      const std::string_view text(piece.data(),
                                  static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
      for (auto found = text.find(phrase.end()); found < half;
           found = text.find(phrase.end(), found + 1)) {
        // A read that reaches the buffer itself finds there what it has just read.
        const std::uintptr_t place = at + found;
        const auto buffer = reinterpret_cast<std::uintptr_t>(piece.data());
        if (place < buffer || place >= buffer + piece.size()) ++count;
      }
      std::ranges::fill(piece, '\0');
    }
  }
  ::close(memory);
  return count;
}

class PassPhrase : public ::testing::Test {
 protected:
  void set(char variant) {
    const Phrase phrase(variant);
    library->setPrivateKeyPasswd(config, phrase.c_str());
    EXPECT_TRUE(phrase.text() == library->getPrivateKeyPasswd(config));
  }

  const Library library;
  hcyClientConfig* config = nullptr;
};

TEST_F(PassPhrase, isWipedWhenItIsReplacedAndWhenItsConfigurationIsDestroyed) {
  ASSERT_EQ(library->createConfig(&config), 0);
  set(1);
  EXPECT_EQ(occurrences(1), 1);
  set(2);
  EXPECT_EQ(occurrences(1), 0);
  EXPECT_EQ(occurrences(2), 1);
  set(2);
  EXPECT_EQ(occurrences(2), 1);
  library->destroyConfig(config);
  EXPECT_EQ(occurrences(2), 0);
}

TEST_F(PassPhrase, isWipedWithTheContextThatHasACopy) {
  ASSERT_EQ(library->createConfig(&config), 0);
  set(3);
  hcyClientContext* context = nullptr;
  ASSERT_EQ(library->createContext(&context, config), 0);
  library->destroyConfig(config);
  EXPECT_EQ(occurrences(3), 2);
  library->destroyContext(context);
  EXPECT_LE(occurrences(3), 1);  // libcurl's, which it has freed
}

}  // namespace
}  // namespace hcy::abi
