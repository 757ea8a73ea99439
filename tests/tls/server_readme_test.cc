// SPDX-License-Identifier: Apache-2.0
//
// What the README of our server says about TLS, done as a reader does it: command by command, in
// an empty directory.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support/local_server.h"
#include "tls_test.h"

namespace hcy::abi {
namespace {

// The blocks of indented lines in the section about TLS, without their indentation.
std::vector<std::string> readmeBlocks() {
  std::ifstream readme(HCY_SERVER_README);
  std::vector<std::string> blocks(1);
  bool isInside = false;
  for (std::string line; std::getline(readme, line);) {
    if (line.starts_with("## ")) isInside = line == "## TLS";
    if (!isInside) continue;
    if (line.starts_with("    ")) {
      blocks.back() += line.substr(4) + "\n";
    } else if (!blocks.back().empty()) {
      blocks.emplace_back();
    }
  }
  if (blocks.back().empty()) blocks.pop_back();
  return blocks;
}

bool isCode(const std::string& block) { return block.starts_with("runtime->"); }
bool startsServer(const std::string& block) { return block.starts_with("hcy-local-server "); }

class TlsServerReadme : public ::testing::Test {
 protected:
  TlsServerReadme() { std::filesystem::current_path(directory_.path()); }
  ~TlsServerReadme() override { std::filesystem::current_path(before_); }

  void follow(const std::string& block) {
    if (startsServer(block)) {
      std::istringstream words(block.substr(block.find(' ')));
      server_.emplace(std::vector<std::string>(std::istream_iterator<std::string>(words), {}));
    } else if (isCode(block)) {
      applySettings(block);
    } else if (!block.starts_with("curl ")) {  // which calls another port
      std::ofstream("commands.sh") << block;
      EXPECT_EQ(std::system("sh -e commands.sh >log.txt 2>&1"), 0)
          << block << test::contentsOf("log.txt");
    }
  }

  // Calls with the settings of now; the failure if there is one.
  std::optional<Failure> failure() const {
    const Context context(library_, config_);
    const OwnedArray input(hcyCreateDoubleScalar(0.1));
    Outputs outputs(1);
    if (context.feval(server_->url("/echo"), 1, outputs.data(), {input.get()}) == 0) return {};
    expectUsable(context);
    return context.lastFailure();
  }

  void set(const std::string& setter, const std::string& text) {
    const std::map<std::string, decltype(hcyClientRuntime::setCAFile)> setters = {
        {"setCAFile", library_->setCAFile},
        {"setClientCertFile", library_->setClientCertFile},
        {"setClientPrivateKeyFile", library_->setClientPrivateKeyFile},
        {"setPrivateKeyPasswd", library_->setPrivateKeyPasswd},
        {"setRevocationListFile", library_->setRevocationListFile}};
    ASSERT_TRUE(setters.contains(setter)) << setter;
    setters.at(setter)(config_.get(), text.c_str());
  }

 private:
  void applySettings(const std::string& code) {
    static const std::regex kLine(R"line(runtime->(\w+)\(config, "(.*)"\);)line");
    std::istringstream lines(code);
    for (std::string line; std::getline(lines, line);) {
      std::smatch parts;
      ASSERT_TRUE(std::regex_match(line, parts, kLine)) << line;
      set(parts[1], parts[2]);
    }
  }

  const std::filesystem::path before_ = std::filesystem::current_path();
  const test::TestDirectory directory_;
  std::optional<test::LocalServer> server_;
  Library library_;
  Config config_{library_};
};

TEST_F(TlsServerReadme, eachOfItsSettingsWorksUntilTheCertificateIsRevoked) {
  int settings = 0;
  for (const std::string& block : readmeBlocks()) {
    SCOPED_TRACE(block);
    ASSERT_NO_FATAL_FAILURE(follow(block));
    if (!isCode(block)) continue;
    EXPECT_EQ(failure(), std::nullopt);
    ++settings;
  }
  EXPECT_EQ(settings, 3);
  EXPECT_EQ(failure(), genericFailure(kUnverified));
}

TEST_F(TlsServerReadme, itsServerDemandsTheCertificate) {
  for (const std::string& block : readmeBlocks()) {
    if (isCode(block)) break;
    ASSERT_NO_FATAL_FAILURE(follow(block));
  }
  EXPECT_EQ(failure(), genericFailure(kUnverified));
  set("setCAFile", "ca.pem");
  EXPECT_EQ(failure(), genericFailure(kNoReply));
}

}  // namespace
}  // namespace hcy::abi
