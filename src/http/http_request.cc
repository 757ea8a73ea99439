// SPDX-License-Identifier: Apache-2.0

#include "http/http_request.h"

#include <boost/numeric/conversion/cast.hpp>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "http/http_response.h"

namespace hcy {
namespace {

// libcurl only reads the list, so that one made of constants serves every transfer.
curl_slist* headerList() {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the type is for lists that own theirs
  constexpr auto line = [](int i) { return const_cast<char*>(HttpRequest::headerLines[i]); };
  static curl_slist list[] = {{line(0), &list[1]}, {line(1), &list[2]}, {line(2), nullptr}};
  static_assert(std::size(list) == std::size(HttpRequest::headerLines));
  return list;
}

// What the callbacks of one transfer fill. An exception must not unwind through libcurl: it is
// kept here, the callback refuses, and perform() throws it again.
struct Reception {
  CURL* handle;
  HttpResponse& response;
  std::uint64_t requestSize;
  BodyBlock* lent;  // the memory of the request's body, or null
  std::size_t headerSize = 0;
  std::exception_ptr failure = nullptr;
};

// Header lines and trailers of an exchange may come without end; this is more than any has.
constexpr std::size_t kMostHeaders = std::size_t{1} << 20;

// Only the body of a 200 is read.
constexpr std::size_t kMostKeptOfOthers = 4096;

long statusCodeOf(CURL* handle) {
  long code = 0;
  curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &code);
  return code;
}

// Whether libcurl has passed on all of the request's body, and so reads it no more.
bool isSent(const Reception& reception) {
  curl_off_t sent = 0;
  curl_easy_getinfo(reception.handle, CURLINFO_SIZE_UPLOAD_T, &sent);
  return std::cmp_equal(sent, reception.requestSize);
}

std::size_t onHeaderLine(char* data, std::size_t size, std::size_t count, void* user) {
  auto& reception = *static_cast<Reception*>(user);
  const std::size_t n = size * count;
  reception.headerSize += n;
  if (reception.headerSize > kMostHeaders) return 0;
  try {
    reception.response.addHeaderLine({data, n});
    return n;
  } catch (...) {
    reception.failure = std::current_exception();
    return 0;
  }
}

std::size_t onBodyData(char* data, std::size_t size, std::size_t count, void* user) {
  auto& reception = *static_cast<Reception*>(user);
  const std::size_t n = size * count;
  HttpResponse& response = reception.response;
  if (response.bodySize() == 0) {
    if (statusCodeOf(reception.handle) != 200) response.keepAtMost(kMostKeptOfOthers);
    if (reception.lent != nullptr && isSent(reception)) response.takeMemory(*reception.lent);
  }
  return response.appendBody(data, n) ? n : 0;
}

std::string failureText(CURLcode code) {
  std::string text = curl_easy_strerror(code);
  if (code == CURLE_WRITE_ERROR) {
    text += "\nThis might happen if response content size is larger than the response size limit.";
    text += "\nYou can increase response size limit using setResponseSizeLimit method.";
  }
  return text;
}

}  // namespace

HttpRequest::HttpRequest(TransferHandle handle, std::string url, std::uint32_t responseSizeLimit,
                         std::shared_ptr<SpareBlock> spareReply)
    : handle_(std::move(handle)),
      url_(std::move(url)),
      responseSizeLimit_(responseSizeLimit),
      spareReply_(std::move(spareReply)) {}

void HttpRequest::setBody(const void* data, std::uint64_t size) {
  bodySize_ = size;
  curl_easy_setopt(handle_->curl.get(), CURLOPT_POSTFIELDS, data);
  curl_easy_setopt(handle_->curl.get(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(size));
}

std::unique_ptr<Response> HttpRequest::perform() {
  CURL* const handle = handle_->curl.get();
  auto response = std::make_unique<HttpResponse>(responseSizeLimit_, spareReply_);
  Reception reception{handle, *response, bodySize_, lent_};
  handle_->connections.dropUnread();
  setTextOption(handle, CURLOPT_URL, url_.c_str());
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headerList());
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, onHeaderLine);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, &reception);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, onBodyData);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &reception);

  handle_->buffers.fit(handle, bodySize_);

  const CURLcode code = curl_easy_perform(handle);
  handle_->buffers.noteReply(response->bodySize());
  handle_->connections.note(handle);
  if (reception.failure) std::rethrow_exception(reception.failure);
  if (code != CURLE_OK) throw std::runtime_error(failureText(code));
  response->setStatusCode(boost::numeric_cast<std::uint32_t>(statusCodeOf(handle)));
  return response;
}

}  // namespace hcy
