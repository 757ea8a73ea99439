// SPDX-License-Identifier: Apache-2.0
#include "http_client.h"

#include <curl/curl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <stdexcept>

namespace hcy::test {
namespace {

constexpr long kPatienceSeconds = 100;

std::size_t appendBody(char* bytes, std::size_t, std::size_t count, void* body) {
  static_cast<std::string*>(body)->append(bytes, count);
  return count;
}

std::size_t addHeaderLine(char* bytes, std::size_t, std::size_t count, void* header) {
  const std::string line(bytes, count);
  const std::size_t colon = line.find(": ");
  if (colon == std::string::npos || !line.ends_with("\r\n")) return count;
  std::string name = line.substr(0, colon);
  std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
  (*static_cast<std::map<std::string, std::string>*>(header))[name] =
      line.substr(colon + 2, line.size() - colon - 4);
  return count;
}

void setTls(CURL* handle, const HttpOptions& options) {
  const auto set = [handle](CURLoption option, const std::string& file) {
    if (!file.empty()) curl_easy_setopt(handle, option, file.c_str());
  };
  set(CURLOPT_CAINFO, options.authorityFile);
  set(CURLOPT_SSLCERT, options.certificateFile);
  set(CURLOPT_SSLKEY, options.keyFile);
  if (options.newestTls != 0) curl_easy_setopt(handle, CURLOPT_SSLVERSION, options.newestTls);
}

}  // namespace

HttpReply sendRequest(const std::string& url, const std::string& body, const HttpOptions& options) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(),
                                                                   curl_easy_cleanup);
  curl_slist* lines = curl_slist_append(nullptr, "Expect:");
  for (const std::string& line : options.headerLines)
    lines = curl_slist_append(lines, line.c_str());
  HttpReply reply;
  curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle.get(), CURLOPT_NOPROXY, "*");
  curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle.get(), CURLOPT_TIMEOUT, kPatienceSeconds);
  curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, lines);
  curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, appendBody);
  curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &reply.body);
  curl_easy_setopt(handle.get(), CURLOPT_HEADERFUNCTION, addHeaderLine);
  curl_easy_setopt(handle.get(), CURLOPT_HEADERDATA, &reply.header);
  if (options.method == "HEAD") {
    curl_easy_setopt(handle.get(), CURLOPT_NOBODY, 1L);
  } else {
    if (options.method != "GET") {
      curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS, body.data());
      curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDSIZE_LARGE,
                       static_cast<curl_off_t>(body.size()));
    }
    curl_easy_setopt(handle.get(), CURLOPT_CUSTOMREQUEST, options.method.c_str());
  }
  setTls(handle.get(), options);
  curl_easy_setopt(handle.get(), CURLOPT_FORBID_REUSE, 1L);
  for (int i = 1; i < options.times; ++i) curl_easy_perform(handle.get());
  reply = {};
  const CURLcode outcome = curl_easy_perform(handle.get());
  curl_slist_free_all(lines);
  if (outcome == CURLE_OK) {
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &reply.status);
  } else {
    reply.failure = curl_easy_strerror(outcome);
  }
  return reply;
}

RawConnection::RawConnection(std::uint16_t port) : socket_(connectTo(port)) {}

void RawConnection::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0) throw std::runtime_error("The server does not read any more.");
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void RawConnection::endSending() { ::shutdown(socket_.get(), SHUT_WR); }

bool RawConnection::hasInput() const {
  pollfd readable{socket_.get(), POLLIN, 0};
  return !received_.empty() || ::poll(&readable, 1, 0) == 1;
}

bool RawConnection::receiveSome() {
  pollfd readable{socket_.get(), POLLIN, 0};
  if (::poll(&readable, 1, 1000 * static_cast<int>(kPatienceSeconds)) != 1) {
    throw std::runtime_error("Nothing came.");
  }
  char bytes[4096];
  const ssize_t count = ::recv(socket_.get(), bytes, sizeof bytes, 0);
  if (count < 0) throw std::runtime_error("The connection was reset.");
  received_.append(bytes, static_cast<std::size_t>(count));
  return count > 0;
}

std::string RawConnection::receive(std::size_t count) {
  while (received_.size() < count && receiveSome()) continue;
  const std::string taken = received_.substr(0, count);
  received_.erase(0, count);
  return taken;
}

std::string RawConnection::receiveLine() {
  std::size_t end;
  while ((end = received_.find("\r\n")) == std::string::npos) {
    if (!receiveSome()) return "";
  }
  std::string line = receive(end + 2);
  line.resize(end);
  return line;
}

std::string RawConnection::receiveAll() {
  while (receiveSome()) continue;
  return receive(received_.size());
}

}  // namespace hcy::test
