// SPDX-License-Identifier: Apache-2.0

#include "text/file_replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& file) {
  throw std::system_error(errno, std::generic_category(), printable(file));
}

std::string randomLetters() {
  constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device source;
  std::string text;
  for (int i = 0; i < 6; ++i) text += letters[source() % letters.size()];
  return text;
}

// Writes everything and closes the descriptor; false if any of that fails.
bool writeAndClose(int descriptor, std::string_view contents) {
  std::FILE* const stream = ::fdopen(descriptor, "wb");
  if (stream == nullptr) {
    ::close(descriptor);
    return false;
  }
  const bool isWritten =
      std::fwrite(contents.data(), 1, contents.size(), stream) == contents.size();
  const int problem = errno;
  const bool isClosed = std::fclose(stream) == 0;
  if (!isWritten) errno = problem;
  return isWritten && isClosed;
}

}  // namespace

FileReplacement::FileReplacement(const std::string& file, std::string_view contents)
    : file_(file), contents_(contents) {
  struct stat state {};
  if (::stat(file.c_str(), &state) == 0) {
    if (!S_ISREG(state.st_mode)) return;
    if (::access(file.c_str(), W_OK) != 0) fail(file_);
    std::error_code unknown;
    target_ = fs::canonical(file, unknown);
    // A file behind /dev/stdout or the like may have no name any more.
    unknown ? target_.clear() : writeBeside(state.st_mode & 07777U);
  } else {
    if (errno != ENOENT) fail(file_);
    // A link to nothing: opening it creates its target.
    if (::lstat(file.c_str(), &state) == 0) return;
    target_ = file;
    writeBeside(std::nullopt);
  }
}

FileReplacement::FileReplacement(FileReplacement&& other) noexcept
    : file_(std::move(other.file_)),
      target_(std::move(other.target_)),
      contents_(other.contents_),
      beside_(std::exchange(other.beside_, {})) {}

FileReplacement::~FileReplacement() {
  if (!beside_.empty()) ::unlink(beside_.c_str());
}

void FileReplacement::writeBeside(std::optional<mode_t> mode) {
  // With other permissions, it must not be readable before it has them.
  const mode_t created = mode ? S_IRUSR | S_IWUSR : 0666;
  int descriptor = -1;
  do {
    beside_ = target_ + "." + randomLetters();
    descriptor = ::open(beside_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, created);
  } while (descriptor < 0 && errno == EEXIST);
  if (descriptor < 0) {
    beside_.clear();
    fail(file_);
  }
  bool isWritten = writeAndClose(descriptor, contents_);
  isWritten = isWritten && (!mode || ::chmod(beside_.c_str(), *mode) == 0);
  if (isWritten) return;
  const int problem = errno;
  // The destructor does not run if the constructor throws.
  ::unlink(beside_.c_str());
  errno = problem;
  fail(file_);
}

void FileReplacement::commit() {
  if (beside_.empty()) {
    const int descriptor = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0 || !writeAndClose(descriptor, contents_)) fail(file_);
    return;
  }
  if (::rename(beside_.c_str(), target_.c_str()) != 0) fail(file_);
  beside_.clear();
}

void requireWritable(const std::string& file) {
  if (::access(file.c_str(), W_OK) == 0) {
    struct stat state {};
    if (::stat(file.c_str(), &state) != 0 || !S_ISDIR(state.st_mode)) return;
    errno = EISDIR;
    refuseFile(file);
  }
  if (errno != ENOENT) refuseFile(file);
  const fs::path directory = fs::path(file).parent_path();
  if (::access(directory.empty() ? "." : directory.c_str(), W_OK | X_OK) != 0) refuseFile(file);
}

void writeFile(const std::string& file, std::string_view contents) {
  FileReplacement(file, contents).commit();
}

}  // namespace hcy::tools
