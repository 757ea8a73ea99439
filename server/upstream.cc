// SPDX-License-Identifier: Apache-2.0

#include "upstream.h"

#include <curl/curl.h>

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/beast/http/field.hpp>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "settings/pass_phrase.h"

namespace hcy::server {
namespace {

namespace http = boost::beast::http;

constexpr std::size_t kLongestHeader = std::size_t{256} << 10;
constexpr std::size_t kLongestLineKept = 1000;
constexpr std::size_t kMostIdleHandles = 16;

struct FreeHandle {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, FreeHandle>;

struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using List = std::unique_ptr<curl_slist, FreeList>;

void append(List& list, const std::string& line) {
  curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  static_cast<void>(list.release());
  list.reset(longer);
}

struct Reception {
  UpstreamReply& reply;
  std::uint64_t longest = 0;
  std::size_t headerSize = 0;
  bool isOutOfMemory = false;
  bool isTooLong = false;
};

// The value of the line, if the line is that of the field.
void takeValue(std::string_view line, std::string_view field, std::string& value) {
  if (!boost::istarts_with(line, field)) return;
  line.remove_prefix(field.size());
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  value = line;
}

void takeHeaderLine(UpstreamReply& reply, std::string_view line) {
  line = line.substr(0, std::min(line.find_first_of("\r\n"), kLongestLineKept));
  if (line.starts_with("HTTP/")) {
    // What came before was an interim reply.
    reply.contentType.clear();
    reply.retryAfter.clear();
    const std::size_t status = line.find(' ');
    const std::size_t reason =
        status == std::string_view::npos ? status : line.find(' ', status + 1);
    reply.reason = reason == std::string_view::npos ? "" : std::string(line.substr(reason + 1));
    return;
  }
  takeValue(line, "content-type:", reply.contentType);
  takeValue(line, "retry-after:", reply.retryAfter);
}

std::size_t onHeaderLine(char* bytes, std::size_t, std::size_t count, void* user) {
  auto& reception = *static_cast<Reception*>(user);
  reception.headerSize += count;
  if (reception.headerSize > kLongestHeader) {
    reception.isTooLong = true;
    return 0;
  }
  try {
    takeHeaderLine(reception.reply, {bytes, count});
    return count;
  } catch (const std::bad_alloc&) {
    reception.isOutOfMemory = true;
    return 0;
  }
}

std::size_t onBody(char* bytes, std::size_t, std::size_t count, void* user) {
  auto& reception = *static_cast<Reception*>(user);
  ByteBuffer& body = reception.reply.body;
  if (count > reception.longest - body.size()) {
    reception.isTooLong = true;
    return 0;
  }
  try {
    body.append(bytes, count);
    return count;
  } catch (const std::bad_alloc&) {
    reception.isOutOfMemory = true;
    return 0;
  }
}

// Those that concern only the connection of the client, or that libcurl sets.
bool isForThisHop(std::string_view name) {
  for (const std::string_view hop :
       {"Host", "Connection", "Keep-Alive", "Proxy-Connection", "Proxy-Authorization", "TE",
        "Trailer", "Transfer-Encoding", "Upgrade", "Content-Length", "Expect", "Accept-Encoding"}) {
    if (boost::iequals(name, hop)) return true;
  }
  return false;
}

List headerOf(const http::request<ByteBody>& request) {
  List list;
  append(list, "Expect:");
  append(list, "Accept:");
  append(list, "Content-Type:");
  for (const auto& field : request) {
    std::string line(field.name_string());
    if (isForThisHop(line)) continue;
    // Only a semicolon behind the name makes libcurl send a field without a value.
    const std::string value(field.value());
    line += value.empty() ? ";" : ": ";
    line += value;
    append(list, line);
  }
  return list;
}

}  // namespace

class Upstream::Handles {
 public:
  explicit Handles(const UpstreamOptions& options) : options_(options) {
    const std::string& file = options.tls.passPhraseFile;
    if (!file.empty()) passPhrase_.emplace(tools::passPhraseOfFile(file));
  }

  Handle take() {
    {
      const std::lock_guard lock(mutex_);
      if (!idle_.empty()) {
        Handle handle = std::move(idle_.back());
        idle_.pop_back();
        return handle;
      }
    }
    Handle handle(curl_easy_init());
    if (!handle) throw std::bad_alloc();
    configure(handle.get());
    return handle;
  }

  void giveBack(Handle handle) {
    const std::lock_guard lock(mutex_);
    if (idle_.size() < kMostIdleHandles) idle_.push_back(std::move(handle));
  }

 private:
  void configure(CURL* handle) const {
    const auto set = [handle](CURLoption option, const std::string& text) {
      if (!text.empty()) curl_easy_setopt(handle, option, text.c_str());
    };
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_POST, 1L);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(options_.seconds * 1000));
    const tools::TlsSettings& tls = options_.tls;
    set(CURLOPT_CAINFO, tls.authorityFile);
    set(CURLOPT_CRLFILE, tls.revocationListFile);
    set(CURLOPT_SSLCERT, tls.certificateFile);
    set(CURLOPT_SSLKEY, tls.keyFile);
    if (passPhrase_) set(CURLOPT_KEYPASSWD, passPhrase_->text());
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, tls.verifiesHost ? 2L : 0L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, tls.verifiesPeer ? 1L : 0L);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, onHeaderLine);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, onBody);
  }

  const UpstreamOptions options_;
  std::optional<tools::Secret> passPhrase_;
  std::mutex mutex_;
  std::vector<Handle> idle_;
};

Upstream::Upstream(const UpstreamOptions& options, std::uint64_t longestReply)
    : url_(options.url), longestReply_(longestReply) {
  if (!boost::istarts_with(url_, "http://") && !boost::istarts_with(url_, "https://")) {
    throw std::runtime_error(
        "the URL of the upstream server begins with neither http:// nor https://");
  }
  while (url_.ends_with('/')) url_.pop_back();
  curl_global_init(CURL_GLOBAL_DEFAULT);
  handles_ = std::make_unique<Handles>(options);
}

Upstream::~Upstream() = default;

UpstreamReply Upstream::post(const http::request<ByteBody>& request,
                             std::string_view target) const {
  UpstreamReply reply;
  Reception reception{reply, longestReply_};
  const List header = headerOf(request);
  const std::string url = url_ + std::string(target);
  Handle handle = handles_->take();
  curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, header.get());
  curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS,
                   request.body().size() == 0 ? "" : request.body().data());
  curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDSIZE_LARGE,
                   static_cast<curl_off_t>(request.body().size()));
  curl_easy_setopt(handle.get(), CURLOPT_HEADERDATA, &reception);
  curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &reception);
  const CURLcode code = curl_easy_perform(handle.get());
  long status = 0;
  curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
  handles_->giveBack(std::move(handle));
  if (reception.isOutOfMemory) throw std::bad_alloc();
  if (reception.isTooLong) throw UpstreamFailure("its reply is too long", false);
  if (code != CURLE_OK) {
    throw UpstreamFailure(curl_easy_strerror(code), code == CURLE_OPERATION_TIMEDOUT);
  }
  // HTTP/0.9 has no status.
  if (status < 200 || status > 999) throw UpstreamFailure("its reply has no HTTP status", false);
  reply.status = static_cast<unsigned>(status);
  return reply;
}

}  // namespace hcy::server
