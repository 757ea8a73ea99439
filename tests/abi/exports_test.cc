// SPDX-License-Identifier: Apache-2.0
//
// The names that the library exports, by its list, its header and its symbol table.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace hcy::abi {
namespace {

using Names = std::vector<std::string>;

std::string contentsOf(const char* path) {
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

Names listedNames() {
  std::istringstream lines(contentsOf(HCY_EXPORTED_NAMES));
  Names names;
  for (std::string line; std::getline(lines, line);) names.push_back(line);
  return names;
}

// Sorted, as nm gives them.
Names definedSymbols() {
  struct Closer {
    void operator()(std::FILE* file) const { pclose(file); }
  };
  const std::unique_ptr<std::FILE, Closer> output(
      popen(HCY_NM " -D --defined-only '" HCY_LIBRARY "'", "r"));
  Names names;
  char type = '\0';
  char name[512];
  while (std::fscanf(output.get(), "%*s %c %511s", &type, name) == 2) {
    if (type != 'A') names.emplace_back(name);  // the name of the version itself is no symbol
  }
  return names;
}

// "name@@version" without its version.
Names withoutVersions(Names symbols) {
  for (std::string& symbol : symbols) symbol.erase(std::min(symbol.find('@'), symbol.size()));
  std::ranges::sort(symbols);
  return symbols;
}

// The names of the functions that the header declares.
Names declaredNames() {
  const std::string header = contentsOf(HCY_PUBLIC_HEADER);
  const std::regex declaration(R"(\nHCY_API [^;]*?\b(hcy\w+)\()");
  Names names;
  for (std::sregex_iterator match(header.begin(), header.end(), declaration), end; match != end;
       ++match) {
    names.push_back((*match)[1]);
  }
  std::ranges::sort(names);
  return names;
}

TEST(ListOfExports, HasEightyNamesInOrder) {
  const Names names = listedNames();
  EXPECT_EQ(names.size(), 80U);
  EXPECT_TRUE(std::ranges::is_sorted(names));
  EXPECT_EQ(std::ranges::adjacent_find(names), names.end()) << "a name is listed twice";
}

TEST(ListOfExports, IsWhatTheLibraryDefines) {
  Names names = withoutVersions(definedSymbols());
#ifdef HCY_PORTABLE
  // Those of C++'s own library are visible, too.
  std::erase_if(names, [](const std::string& name) { return !name.starts_with("hcy"); });
#endif
  EXPECT_THAT(names, testing::ElementsAreArray(listedNames()));
}

TEST(ListOfExports, IsWhatTheHeaderDeclares) {
  EXPECT_THAT(declaredNames(), testing::ElementsAreArray(listedNames()));
}

#ifndef HCY_PORTABLE
TEST(ListOfExports, HasOneVersion) {
  for (const std::string& symbol : definedSymbols()) {
    EXPECT_THAT(symbol, testing::EndsWith("@@HCYCLIENT_1.0"));
  }
}
#endif

}  // namespace
}  // namespace hcy::abi
