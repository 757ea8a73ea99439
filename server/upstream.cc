// SPDX-License-Identifier: Apache-2.0

#include "upstream.h"

#include <curl/curl.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "settings/pass_phrase.h"
#include "text/source_text.h"

namespace hcy::server {
namespace {

namespace http = boost::beast::http;

constexpr std::size_t kLongestHeader = std::size_t{64} << 10;
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
  // Whether the header of the reply itself, not that of an interim one, has come. Trailers follow.
  bool hasHeader = false;
  bool isInterim = false;
  bool isOutOfMemory = false;
  bool isTooLong = false;
};

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

// "HTTP/1.1 200 OK"
void takeStatusLine(Reception& reception, std::string_view line) {
  const std::size_t status = std::min(line.find(' '), line.size());
  const std::size_t reason = line.find(' ', status + 1);
  reception.isInterim = line.substr(status).starts_with(" 1");
  reception.reply.reason = reason == std::string_view::npos ? "" : line.substr(reason + 1);
  reception.reply.fields.clear();
}

void takeHeaderLine(Reception& reception, std::string_view line) {
  if (reception.hasHeader) return;
  line = line.substr(0, line.find_first_of("\r\n"));
  HeaderFields& fields = reception.reply.fields;
  if (line.empty()) {
    reception.hasHeader = !reception.isInterim;
  } else if (line.starts_with("HTTP/")) {
    takeStatusLine(reception, line);
  } else if (line.starts_with(' ') || line.starts_with('\t')) {
    // The line before goes on.
    if (!fields.empty()) fields.back().value.append(" ").append(trimmed(line));
  } else {
    const std::size_t colon = std::min(line.find(':'), line.size());
    HeaderField field{std::string(line.substr(0, colon)),
                      std::string(trimmed(line.substr(std::min(colon + 1, line.size()))))};
    if (isValid(field)) fields.push_back(std::move(field));
  }
}

std::size_t onHeaderLine(char* bytes, std::size_t, std::size_t count, void* user) {
  auto& reception = *static_cast<Reception*>(user);
  reception.headerSize += count;
  if (reception.headerSize > kLongestHeader) {
    reception.isTooLong = true;
    return 0;
  }
  try {
    takeHeaderLine(reception, {bytes, count});
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

// Those that libcurl sets. What the other server sends is kept, and not all clients can decode it.
bool isOfTransfer(std::string_view name) {
  return areNamesEqual(name, "Host") || areNamesEqual(name, "Expect") ||
         areNamesEqual(name, "Accept-Encoding");
}

List headerOf(const http::request<ByteBody>& request) {
  List list;
  append(list, "Expect:");
  append(list, "Accept:");
  append(list, "Content-Type:");
  HeaderFields fields;
  for (const auto& field : request) {
    fields.push_back({std::string(field.name_string()), std::string(field.value())});
  }
  for (const auto& [name, value] : endToEnd(std::move(fields))) {
    if (isOfTransfer(name)) continue;
    // Only a semicolon behind the name makes libcurl send a field without a value.
    append(list, name + (value.empty() ? ";" : ": ") + value);
  }
  return list;
}

}  // namespace

class Upstream::Handles {
 public:
  explicit Handles(const UpstreamOptions& options) : options_(options) {
    const std::string& file = options.tls.passPhraseFile;
    if (!file.empty()) passPhrase_.emplace(tools::passPhraseOfFile(file));
    if (!options.userFile.empty()) user_.emplace(tools::passPhraseOfFile(options.userFile));
    if (user_ && user_->text().find(':') == std::string::npos) {
      throw tools::BadInput(options.userFile + ": the first line is not NAME:PASSWORD");
    }
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
    if (user_) set(CURLOPT_USERPWD, user_->text());
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, tls.verifiesHost ? 2L : 0L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, tls.verifiesPeer ? 1L : 0L);
    // A proxy's own answer is no part of the reply.
    curl_easy_setopt(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, onHeaderLine);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, onBody);
  }

  const UpstreamOptions options_;
  std::optional<tools::Secret> passPhrase_;
  std::optional<tools::Secret> user_;
  std::mutex mutex_;
  std::vector<Handle> idle_;
};

Upstream::Upstream(const UpstreamOptions& options, std::uint64_t longestReply)
    : url_(options.url), longestReply_(longestReply) {
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
  reply.fields = endToEnd(std::move(reply.fields));
  return reply;
}

}  // namespace hcy::server
