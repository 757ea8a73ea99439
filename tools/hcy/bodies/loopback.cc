// SPDX-License-Identifier: Apache-2.0

#include "bodies/loopback.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "text/descriptor.h"

namespace hcy::tools {
namespace {

constexpr std::size_t kLongestHead = 65536;

// With more, the first is closed. Ours writes at once.
constexpr int kMostClients = 64;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

std::string randomPath() {
  std::random_device random;
  std::string path = "/";
  for (int i = 0; i < 4; ++i) path += std::to_string(random());
  return path;
}

bool sendAll(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// Appends what has arrived; false at the end.
bool receive(int connection, std::string& bytes) {
  std::array<char, 65536> piece{};
  ssize_t count = 0;
  do {
    count = ::recv(connection, piece.data(), piece.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count > 0) bytes.append(piece.data(), static_cast<std::size_t>(count));
  return count > 0;
}

// As the library's transport writes it.
std::size_t lengthIn(std::string_view head) {
  constexpr std::string_view name = "\r\nContent-Length: ";
  const std::size_t start = head.find(name);
  std::size_t length = 0;
  if (start == std::string_view::npos) return length;
  const std::string_view digits = head.substr(start + name.size());
  std::from_chars(digits.data(), digits.data() + digits.size(), length);
  return length;
}

// The headers without those that any transport adds.
std::vector<std::string> headersIn(std::string_view head) {
  std::vector<std::string> headers;
  head.remove_prefix(head.find("\r\n") + 2);
  while (!head.empty()) {
    const std::string_view line = head.substr(0, head.find("\r\n"));
    head.remove_prefix(line.size() + 2);
    const bool isOfTransport = line.starts_with("Host:") || line.starts_with("Content-Length:") ||
                               line.starts_with("Accept:");
    if (!isOfTransport) headers.emplace_back(line);
  }
  return headers;
}

}  // namespace

struct Loopback::Client {
  Descriptor connection;
  std::string bytes;  // what has come
};

TemporaryVariable::TemporaryVariable(const char* name, const char* value) : name_(name) {
  if (const char* const before = std::getenv(name)) before_ = before;
  ::setenv(name, value, 1);
}

TemporaryVariable::~TemporaryVariable() {
  if (before_) {
    ::setenv(name_, before_->c_str(), 1);
  } else {
    ::unsetenv(name_);
  }
}

Loopback::Loopback(std::string reply) : reply_(std::move(reply)), path_(randomPath()) {
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener_ < 0) fail("socket");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener_, generic, size) != 0 || ::listen(listener_, kMostClients) != 0 ||
      ::getsockname(listener_, generic, &size) != 0) {
    const int problem = errno;
    ::close(listener_);
    errno = problem;
    fail("127.0.0.1");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] {
    try {
      run();
    } catch (...) {
      problem_ = std::current_exception();
    }
  });
}

std::string Loopback::url() const { return "http://127.0.0.1:" + std::to_string(port_) + path_; }

EncodedRequest Loopback::takeRequest() {
  end();
  if (problem_) std::rethrow_exception(problem_);
  return std::move(request_);
}

// Reads what has come from the clients, side by side, so that none can keep ours waiting.
void Loopback::run() {
  std::vector<Client> clients;
  for (;;) {
    std::vector<pollfd> watched = {{listener_, POLLIN, 0}};
    for (const Client& client : clients) watched.push_back({client.connection.get(), POLLIN, 0});
    if (::poll(watched.data(), watched.size(), -1) < 0) {
      if (errno == EINTR) continue;
      return;
    }
    for (std::size_t i = clients.size(); i-- > 0;) {
      if (watched[i + 1].revents == 0) continue;
      const bool isUnfinished = receive(clients[i].connection.get(), clients[i].bytes) &&
                                clients[i].bytes.find("\r\n\r\n") == std::string::npos &&
                                clients[i].bytes.size() <= kLongestHead;
      if (isUnfinished) continue;
      if (serve(clients[i])) return;
      clients.erase(clients.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (watched[0].revents == 0) continue;
    clients.push_back({Descriptor(::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)), {}});
    if (!clients.back().connection.isOpen()) {
      if (errno != EINTR && errno != ECONNABORTED) return;
      clients.pop_back();
    }
    if (std::ssize(clients) > kMostClients) clients.erase(clients.begin());
  }
}

// Returns whether it was the expected request.
bool Loopback::serve(Client& client) {
  const int connection = client.connection.get();
  std::string& bytes = client.bytes;
  const std::size_t end = bytes.find("\r\n\r\n");
  if (end == std::string::npos || !bytes.starts_with("POST " + path_ + " ")) return false;
  const std::string head = bytes.substr(0, end + 2);
  if (head.find("\r\nExpect: 100-continue\r\n") != std::string::npos) {
    sendAll(connection, "HTTP/1.1 100 Continue\r\n\r\n");
  }
  bytes.erase(0, end + 4);
  const std::size_t length = lengthIn(head);
  while (bytes.size() < length && receive(connection, bytes)) {
  }
  if (bytes.size() == length) request_ = {headersIn(head), std::move(bytes)};
  sendAll(connection, "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                          std::to_string(reply_.size()) + "\r\n\r\n");
  sendAll(connection, reply_);
  return true;
}

void Loopback::end() {
  if (!thread_.joinable()) return;
  ::shutdown(listener_, SHUT_RDWR);  // wakes a thread that still waits for a connection
  thread_.join();
  ::close(listener_);
}

}  // namespace hcy::tools
