// SPDX-License-Identifier: Apache-2.0

#include "recorded_call.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace hcy::server {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestHeaderLine = std::size_t{128} << 10;

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

ByteBuffer partOf(const fs::path& file, std::uint64_t offset, std::uint64_t size) {
  const Descriptor opened = openToRead(file);
  ByteBuffer bytes;
  bytes.resizeUninitialized(size);
  if (readAt(opened, bytes.data(), size, offset) != size) fail(file, "is cut short");
  return bytes;
}

RecordedCall fromHeaderLine(std::string_view line) {
  const auto json = nlohmann::json::parse(line);
  if (json.at("format") != 1) throw std::runtime_error("has a format of a later version");
  RecordedCall call;
  call.path = json.at("path").get<std::string>();
  call.digest = json.at("sha256").get<std::string>();
  call.requestSize = json.at("requestBytes").get<std::uint64_t>();
  call.status = json.at("status").get<unsigned>();
  call.reason = json.at("reason").get<std::string>();
  call.contentType = json.at("contentType").get<std::string>();
  call.retryAfter = json.value("retryAfter", std::string());
  call.replySize = json.at("replyBytes").get<std::uint64_t>();
  call.milliseconds = json.at("milliseconds").get<double>();
  call.headerSize = line.size();
  return call;
}

void requireSense(const RecordedCall& call) {
  if (call.status < 200 || call.status > 999) throw std::runtime_error("has no HTTP status");
  for (const std::string& text : {call.reason, call.contentType, call.retryAfter}) {
    if (text.find_first_of("\r\n") != std::string::npos) {
      throw std::runtime_error("has a line end inside a field of the header");
    }
  }
}

void writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) throw std::runtime_error(std::strerror(errno));
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

std::string headerLineOf(const RecordedCall& call) {
  nlohmann::ordered_json json = {
      {"format", 1},
      {"path", call.path},
      {"sha256", call.digest},
      {"requestBytes", call.requestSize},
      {"status", call.status},
      {"reason", call.reason},
      {"contentType", call.contentType},
      {"replyBytes", call.replySize},
      {"milliseconds", std::round(call.milliseconds * 1000) / 1000},
  };
  if (!call.retryAfter.empty()) json["retryAfter"] = call.retryAfter;
  // What a server sends need not be UTF-8.
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

RecordedCall readRecordedCall(const fs::path& file) {
  const Descriptor opened = openToRead(file);
  char bytes[kLongestHeaderLine];
  const std::string_view beginning(bytes, readAt(opened, bytes, sizeof bytes, 0));
  const std::size_t lineEnd = beginning.find('\n');
  if (lineEnd == std::string_view::npos) fail(file, "is not a recorded call");
  RecordedCall call;
  try {
    call = fromHeaderLine(beginning.substr(0, lineEnd + 1));
    requireSense(call);
  } catch (const nlohmann::json::exception&) {
    fail(file, "is not a recorded call: its first line does not describe one");
  } catch (const std::runtime_error& error) {
    fail(file, std::string("is not a recorded call: ") + error.what());
  }
  const off_t size = ::lseek(opened.get(), 0, SEEK_END);
  const auto bodies = static_cast<std::uint64_t>(size) - call.headerSize;
  if (call.requestSize > bodies || bodies - call.requestSize != call.replySize) {
    fail(file, "is cut short, or its bodies have been changed");
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
