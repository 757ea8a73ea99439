// SPDX-License-Identifier: Apache-2.0

#include "text/file_replacement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <system_error>

#include "support/pki.h"

namespace hcy::test {
namespace {

namespace fs = std::filesystem;
using tools::FileReplacement;

// No file of this process can become longer, for as long as this lives.
class ShortFiles {
 public:
  explicit ShortFiles(rlim_t bytes) : action_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ShortFiles(const ShortFiles&) = delete;
  ShortFiles& operator=(const ShortFiles&) = delete;
  ~ShortFiles() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, action_);
  }

 private:
  rlimit before_{};
  void (*action_)(int);
};

std::size_t filesIn(const TestDirectory& directory) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory.path()), fs::directory_iterator()));
}

unsigned modeOf(const std::string& file) {
  struct stat state {};
  return ::stat(file.c_str(), &state) == 0 ? state.st_mode & 07777U : 0;
}

TEST(FileReplacement, aFileThatCannotBeWrittenStaysAsItWas) {
  const TestDirectory directory;
  const std::string file = directory.write("a.txt", "old");
  const std::string other = directory.file("b.txt");
  for (const std::string& name : {file, other}) {
    int problem = 0;
    try {
      const ShortFiles limit(4);
      tools::writeFile(name, "too long for the limit");
    } catch (const std::system_error& error) {
      problem = error.code().value();
      EXPECT_TRUE(std::string(error.what()).starts_with(name)) << error.what();
    }
    EXPECT_EQ(problem, EFBIG);
  }
  EXPECT_EQ(contentsOf(file), "old");
  EXPECT_EQ(filesIn(directory), 1U);
}

TEST(FileReplacement, nothingChangesBeforeItIsCommitted) {
  const TestDirectory directory;
  const std::string file = directory.write("a.txt", "old");
  { const FileReplacement dropped(file, "new"); }
  EXPECT_EQ(contentsOf(file), "old");
  EXPECT_EQ(filesIn(directory), 1U);
  FileReplacement replacement(file, "new");
  EXPECT_EQ(contentsOf(file), "old");
  replacement.commit();
  EXPECT_EQ(contentsOf(file), "new");
  EXPECT_EQ(filesIn(directory), 1U);
}

TEST(FileReplacement, permissionsAreThoseOfAnyFile) {
  const TestDirectory directory;
  const mode_t before = ::umask(027);
  tools::writeFile(directory.file("new.txt"), "x");
  ::umask(before);
  EXPECT_EQ(modeOf(directory.file("new.txt")), 0640U);
  const std::string file = directory.write("old.txt", "x");
  ::chmod(file.c_str(), 0604);
  tools::writeFile(file, "y");
  EXPECT_EQ(modeOf(file), 0604U);
}

TEST(FileReplacement, aLinkStaysALink) {
  const TestDirectory directory;
  const std::string link = directory.file("link.txt");
  fs::create_symlink("target.txt", link);
  tools::writeFile(link, "created");
  EXPECT_EQ(contentsOf(directory.file("target.txt")), "created");
  tools::writeFile(link, "replaced");
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(contentsOf(directory.file("target.txt")), "replaced");
  EXPECT_EQ(filesIn(directory), 2U);
}

TEST(FileReplacement, aPipeIsWrittenInPlace) {
  const TestDirectory directory;
  const std::string pipe = directory.file("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  tools::writeFile(pipe, "text");
  std::array<char, 8> read{};
  EXPECT_EQ(::read(reader, read.data(), read.size()), 4);
  ::close(reader);
  EXPECT_STREQ(read.data(), "text");
  EXPECT_TRUE(fs::is_fifo(pipe));
}

}  // namespace
}  // namespace hcy::test
