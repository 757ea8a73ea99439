// SPDX-License-Identifier: Apache-2.0

#include "bodies/exchange.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>

namespace hcy::tools {
namespace {

struct Deleter {
  void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
  void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};
using Handle = std::unique_ptr<CURL, Deleter>;
using Headers = std::unique_ptr<curl_slist, Deleter>;

struct Reception {
  Exchange& exchange;
  std::size_t limit;  // one byte more than the library accepts, so that it reports the excess
};

std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* user) {
  const std::string_view line(data, size * count);
  if (!line.starts_with("HTTP/")) return line.size();
  // "HTTP/1.1 200 OK"; only the last such line belongs to the reply.
  std::string& reason = static_cast<Reception*>(user)->exchange.reason;
  const std::size_t code = line.find(' ');
  const std::size_t text = code == std::string_view::npos ? code : line.find(' ', code + 1);
  reason = text == std::string_view::npos ? "" : line.substr(text + 1);
  reason.resize(std::min(reason.find_first_of("\r\n"), reason.size()));
  return line.size();
}

std::size_t onBody(char* data, std::size_t size, std::size_t count, void* user) {
  Reception& reception = *static_cast<Reception*>(user);
  std::string& reply = reception.exchange.reply;
  const std::size_t room = reception.limit - reply.size();
  try {
    reply.append(data, std::min(size * count, room));
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return size * count <= room ? size * count : 0;
}

void setText(CURL* handle, CURLoption option, const char* text) {
  if (*text != '\0') curl_easy_setopt(handle, option, text);
}

void applySettings(CURL* handle, const hcyclient::Config& config, double seconds) {
  const hcyClientRuntime& settings = *config.runtime();
  const hcyClientConfig* const of = config.get();
  // The URL is the user's: nothing but HTTP, and no redirection.
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  // Rounded up: 0 would be no limit.
  curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(std::ceil(seconds * 1000)));
  setText(handle, CURLOPT_SSLCERT, settings.getClientCertFile(of));
  setText(handle, CURLOPT_SSLKEY, settings.getClientPrivateKeyFile(of));
  setText(handle, CURLOPT_KEYPASSWD, settings.getPrivateKeyPasswd(of));
  setText(handle, CURLOPT_CAINFO, settings.getCAFile(of));
  setText(handle, CURLOPT_CRLFILE, settings.getRevocationListFile(of));
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, settings.getHostnameVerification(of) ? 2L : 0L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, settings.getPeerVerification(of) ? 1L : 0L);
}

double secondsOf(CURL* handle, CURLINFO what) {
  curl_off_t microseconds = 0;
  curl_easy_getinfo(handle, what, &microseconds);
  return static_cast<double>(microseconds) * 1e-6;
}

Headers linesOf(const std::vector<std::string>& headers) {
  Headers lines(curl_slist_append(nullptr, "Expect:"));  // as the library: the body comes at once
  if (!lines) throw std::bad_alloc();
  for (const std::string& header : headers) {
    curl_slist* const longer = curl_slist_append(lines.get(), header.c_str());
    if (longer == nullptr) throw std::bad_alloc();
    static_cast<void>(lines.release());
    lines.reset(longer);
  }
  return lines;
}

// A GET if there is no body.
Exchange exchange(const hcyclient::Config& config, const std::string& url,
                  const std::vector<std::string>& headers, const std::string_view* body,
                  double seconds) {
  const Handle owner(curl_easy_init());
  CURL* const handle = owner.get();
  if (handle == nullptr) throw std::bad_alloc();
  applySettings(handle, config, seconds);
  const Headers lines = linesOf(headers);
  Exchange exchange;
  Reception reception{exchange,
                      std::size_t{1} + config.runtime()->getResponseSizeLimit(config.get())};
  curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, lines.get());
  if (body != nullptr) {
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body->data());
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body->size()));
  }
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, onHeader);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, &reception);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, onBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &reception);
  std::array<char, CURL_ERROR_SIZE> details{};
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, details.data());
  const CURLcode code = curl_easy_perform(handle);
  exchange.isTooLong = exchange.reply.size() == reception.limit;
  long status = 0;
  curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
  exchange.status = static_cast<std::uint32_t>(status);
  if (code != CURLE_OK && !(code == CURLE_WRITE_ERROR && exchange.isTooLong)) {
    exchange.problem = curl_easy_strerror(code);
    if (exchange.status == 0) throw NoReply(exchange.problem, details.data());
  }
  curl_off_t retryAfter = 0;
  curl_easy_getinfo(handle, CURLINFO_RETRY_AFTER, &retryAfter);
  exchange.retryAfter = static_cast<double>(retryAfter);
  const double connected = secondsOf(handle, CURLINFO_CONNECT_TIME_T);
  exchange.connected = std::max(connected, secondsOf(handle, CURLINFO_APPCONNECT_TIME_T));
  exchange.firstByte = secondsOf(handle, CURLINFO_STARTTRANSFER_TIME_T);
  exchange.total = secondsOf(handle, CURLINFO_TOTAL_TIME_T);
  return exchange;
}

}  // namespace

Exchange post(const hcyclient::Config& config, const std::string& url,
              const std::vector<std::string>& headers, std::string_view body, double seconds) {
  return exchange(config, url, headers, &body, seconds);
}

Exchange get(const hcyclient::Config& config, const std::string& url,
             const std::vector<std::string>& headers, double seconds) {
  Exchange got = exchange(config, url, headers, nullptr, seconds);
  if (!got.problem.empty()) throw hcyclient::TransportError(got.problem);
  return got;
}

}  // namespace hcy::tools
