// SPDX-License-Identifier: Apache-2.0
#include "script_channel.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace hcy::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kReadSize = 65536;

std::string errorText(int error) { return std::generic_category().message(error); }

bool wouldBlock(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

int millisecondsUntil(const std::optional<Clock::time_point>& deadline) {
  if (!deadline) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now());
  return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 3'600'000));
}

}  // namespace

StopSignal::StopSignal() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_.isOpen()) throw std::system_error(errno, std::generic_category(), "eventfd");
}

void StopSignal::raise() noexcept { ::eventfd_write(event_.get(), 1); }

short StopSignal::wait(int descriptor, short events,
                       std::optional<std::chrono::milliseconds> timeout) const {
  std::optional<Clock::time_point> deadline;
  if (timeout) deadline = Clock::now() + *timeout;
  while (true) {
    std::array<pollfd, 2> watched{{{event_.get(), POLLIN, 0}, {descriptor, events, 0}}};
    const int ready = ::poll(watched.data(), watched.size(), millisecondsUntil(deadline));
    if (ready < 0 && errno != EINTR) throw ScriptFailure("poll: " + errorText(errno));
    if (ready > 0 && watched[0].revents != 0) throw Stopped{};
    if (ready > 0) return watched[1].revents;
    if (deadline && Clock::now() >= *deadline) return 0;
  }
}

// Pieces leave one by one only without Nagle's algorithm.
Channel::Channel(FileDescriptor socket, const StopSignal& stop)
    : socket_(std::move(socket)), stop_(stop) {
  const int on = 1;
  ::setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

std::string Channel::readThrough(std::string_view mark) {
  std::size_t searched = 0;
  std::size_t found = std::string::npos;
  while ((found = received_.find(mark, searched)) == std::string::npos) {
    searched = received_.size() - std::min(received_.size(), mark.size() - 1);
    receiveMore();
  }
  return readExactly(found + mark.size());
}

std::string Channel::readExactly(std::size_t count) {
  while (received_.size() < count) receiveMore();
  std::string rest = received_.substr(count);
  received_.resize(count);
  return std::exchange(received_, std::move(rest));
}

void Channel::send(std::string_view bytes) {
  while (!bytes.empty()) {
    stop_.wait(socket(), POLLOUT);
    const ssize_t count = ::send(socket(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
      sent_ += static_cast<std::size_t>(count);
    } else if (!wouldBlock(errno)) {
      throw ScriptFailure(errorText(errno) + " after " + std::to_string(sent_) +
                          " bytes sent on the connection");
    }
  }
}

void Channel::drip(std::string_view bytes, std::size_t pieceSize,
                   std::chrono::milliseconds interval) {
  while (bytes.size() > pieceSize) {
    send(bytes.substr(0, pieceSize));
    bytes.remove_prefix(pieceSize);
    if (stop_.wait(socket(), POLLRDHUP, interval) != 0) {
      throw ScriptFailure("the peer closed the connection with " + std::to_string(bytes.size()) +
                          " bytes still to come");
    }
  }
  send(bytes);
}

void Channel::halfClose() {
  if (::shutdown(socket(), SHUT_WR) != 0) throw ScriptFailure("shutdown: " + errorText(errno));
}

// A reset drops what the socket has not sent yet. With a low-water mark of one unsent byte the
// socket is writable only when none is left, so the peer gets all of it first.
void Channel::reset() {
  const int lowWater = 1;
  ::setsockopt(socket(), IPPROTO_TCP, TCP_NOTSENT_LOWAT, &lowWater, sizeof lowWater);
  if ((stop_.wait(socket(), POLLOUT) & (POLLERR | POLLHUP)) != 0) {
    throw ScriptFailure("the peer was gone before the reset");
  }
  const linger noLinger{1, 0};
  ::setsockopt(socket(), SOL_SOCKET, SO_LINGER, &noLinger, sizeof noLinger);
  socket_.close();
}

// The kernel resets instead of closing while unread bytes are queued. Only those here by now are
// discarded: the peer may go on sending for ever.
void Channel::close() {
  int arrived = 0;
  if (::ioctl(socket(), FIONREAD, &arrived) != 0) arrived = 0;
  std::array<char, kReadSize> discarded;
  while (arrived > 0) {
    const ssize_t count = ::recv(socket(), discarded.data(), discarded.size(), MSG_DONTWAIT);
    if (count <= 0) break;
    arrived -= static_cast<int>(count);
  }
  socket_.close();
}

bool Channel::atEnd() { return received_.empty() && !receive(); }

void Channel::stall() { stop_.wait(socket(), POLLRDHUP); }

void Channel::discardUntilClosed() {
  do {
    received_.clear();
  } while (receive());
}

int Channel::socket() {
  if (!socket_.isOpen()) throw ScriptFailure("an earlier step has closed the connection");
  return socket_.get();
}

// Waits for more bytes; false if the peer has closed or reset the connection instead.
bool Channel::receive() {
  const std::size_t before = received_.size();
  received_.resize(before + kReadSize);
  ssize_t count = -1;
  do {
    stop_.wait(socket(), POLLIN);
    count = ::recv(socket(), received_.data() + before, kReadSize, MSG_DONTWAIT);
  } while (count < 0 && wouldBlock(errno));
  received_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  return count > 0;
}

void Channel::receiveMore() {
  if (!receive()) {
    throw ScriptFailure("the peer closed the connection with " + std::to_string(received_.size()) +
                        " bytes of an unfinished read received");
  }
}

}  // namespace hcy::test
