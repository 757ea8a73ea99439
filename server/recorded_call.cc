// SPDX-License-Identifier: Apache-2.0

#include "recorded_call.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace hcy::server {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kUsualHeaderLine = std::size_t{8} << 10;

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

[[noreturn]] void fail(const fs::path& file, const std::string& problem) {
  throw std::runtime_error(file.string() + ": " + problem);
}

Descriptor openToRead(const fs::path& file) {
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) fail(file, std::strerror(errno));
  return Descriptor(descriptor);
}

// As much as there is, up to `size`.
std::size_t readAt(const Descriptor& file, char* bytes, std::size_t size, std::uint64_t offset) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count =
        ::pread(file.get(), bytes + done, size - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

std::string beginningOf(const Descriptor& file, std::size_t size) {
  std::string bytes(size, '\0');
  bytes.resize(readAt(file, bytes.data(), size, 0));
  return bytes;
}

ByteBuffer partOf(const fs::path& file, std::uint64_t offset, std::uint64_t size) {
  const Descriptor opened = openToRead(file);
  ByteBuffer bytes;
  bytes.resizeUninitialized(size);
  if (readAt(opened, bytes.data(), size, offset) != size) fail(file, "is truncated");
  return bytes;
}

void writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) throw std::runtime_error(std::strerror(errno));
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

RecordedCall readRecordedCall(const fs::path& file) {
  const Descriptor opened = openToRead(file);
  std::string beginning = beginningOf(opened, kUsualHeaderLine);
  if (beginning.size() == kUsualHeaderLine && beginning.find('\n') == std::string::npos) {
    beginning = beginningOf(opened, kLongestHeaderLine);
  }
  RecordedCall call;
  try {
    call = recordedCallFrom(beginning);
  } catch (const std::runtime_error& error) {
    fail(file, error.what());
  }
  const off_t size = ::lseek(opened.get(), 0, SEEK_END);
  const auto bodies = static_cast<std::uint64_t>(size) - call.headerSize;
  if (call.requestSize > bodies || bodies - call.requestSize != call.replySize) {
    fail(file, "is truncated, or its bodies have been changed");
  }
  call.file = file.filename().string();
  return call;
}

ByteBuffer requestOf(const RecordedCall& call, const fs::path& folder) {
  return partOf(folder / call.file, call.headerSize, call.requestSize);
}

ByteBuffer replyOf(const RecordedCall& call, const fs::path& folder) {
  return partOf(folder / call.file, call.headerSize + call.requestSize, call.replySize);
}

void writeWholeFile(const fs::path& file, std::initializer_list<std::string_view> parts) {
  const fs::path unfinished = file.string() + ".part";
  try {
    const Descriptor opened(
        ::open(unfinished.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (opened.get() < 0) throw std::runtime_error(std::strerror(errno));
    for (const std::string_view part : parts) writeAll(opened.get(), part);
    if (::rename(unfinished.c_str(), file.c_str()) != 0) {
      throw std::runtime_error(std::strerror(errno));
    }
  } catch (const std::runtime_error& error) {
    ::unlink(unfinished.c_str());
    fail(file, error.what());
  }
}

}  // namespace hcy::server
