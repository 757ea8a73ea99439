// SPDX-License-Identifier: Apache-2.0
// Sockets and ports on 127.0.0.1 for tests.
#pragma once

#include <cstdint>
#include <string>

namespace hcy::test {

// Owns one descriptor.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor();

  int get() const noexcept { return descriptor_; }
  bool isOpen() const noexcept { return descriptor_ >= 0; }
  void close() noexcept;

 private:
  int descriptor_ = -1;
};

// "http://127.0.0.1:<port><path>"
std::string loopbackUrl(std::uint16_t port, const std::string& path);

// A non-blocking socket that listens on `port`.
FileDescriptor listenOn(std::uint16_t port, int backlog);

// A blocking socket connected to `port`; throws std::system_error if that fails.
FileDescriptor connectTo(std::uint16_t port);

// A port on which nobody listens: connecting to it is refused. It stays bound for the lifetime of
// the object, so that nobody else is given it.
class UnlistenedPort {
 public:
  UnlistenedPort();
  std::uint16_t number() const noexcept { return number_; }
  std::string url(const std::string& path = "/") const { return loopbackUrl(number_, path); }

 private:
  FileDescriptor socket_;
  std::uint16_t number_ = 0;
};

// A port on which connecting neither succeeds nor fails: its listener accepts nothing and its
// backlog is full, so the kernel drops every further attempt.
class StalledPort {
 public:
  StalledPort();
  std::uint16_t number() const noexcept { return port_.number(); }
  std::string url(const std::string& path = "/") const { return port_.url(path); }

 private:
  UnlistenedPort port_;
  FileDescriptor listener_;
  FileDescriptor filler_;
};

}  // namespace hcy::test
