// SPDX-License-Identifier: Apache-2.0

#include "recording_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <stdexcept>
#include <string>

namespace hcy::server {
namespace {

[[noreturn]] void fail(const std::filesystem::path& file) {
  throw std::runtime_error(file.string() + ": " + std::strerror(errno));
}

}  // namespace

RecordingLock::RecordingLock(const std::filesystem::path& folder)
    : file_(folder / ".lock"),
      descriptor_(::open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
  if (descriptor_ < 0) fail(file_);
}

RecordingLock::~RecordingLock() { ::close(descriptor_); }

RecordingLock::Turn::Turn(RecordingLock& lock) : lock_(lock) {
  while (::flock(lock.descriptor_, LOCK_EX) != 0) {
    if (errno != EINTR) fail(lock.file_);
  }
}

RecordingLock::Turn::~Turn() { ::flock(lock_.descriptor_, LOCK_UN); }

std::size_t RecordingLock::Turn::lastNumber() const {
  char text[32];
  const ssize_t size = ::pread(lock_.descriptor_, text, sizeof text, 0);
  std::size_t number = 0;
  if (size > 0) std::from_chars(text, text + size, number);
  return number;
}

void RecordingLock::Turn::setLastNumber(std::size_t number) {
  const std::string text = std::to_string(number) + "\n";
  const ssize_t size = ::pwrite(lock_.descriptor_, text.data(), text.size(), 0);
  if (size != static_cast<ssize_t>(text.size())) fail(lock_.file_);
}

}  // namespace hcy::server
