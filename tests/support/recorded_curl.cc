// SPDX-License-Identifier: Apache-2.0

#include "support/recorded_curl.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>

using hcy::test::recordedCurl;

namespace hcy::test {

std::size_t RecordedCurl::count(const std::string& call) const {
  return static_cast<std::size_t>(std::ranges::count(calls, call));
}

RecordedCurl& recordedCurl() {
  static RecordedCurl record;
  return record;
}

}  // namespace hcy::test

namespace {

// The function of this name that libcurl itself has.
template <class Function>
Function* real(Function*, const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) {
    std::fprintf(stderr, "libcurl has no %s\n", name);
    std::abort();
  }
  return reinterpret_cast<Function*>(found);
}

void note(std::string call) { recordedCurl().calls.push_back(std::move(call)); }

std::string joined(const curl_slist* list) {
  std::string lines;
  for (; list != nullptr; list = list->next) lines.append(lines.empty() ? "" : "|") += list->data;
  return lines;
}

std::string optionWith(const std::string& name, curl_easytype type, const void* value) {
  if (type == CURLOT_STRING) return name + "=" + static_cast<const char*>(value);
  if (type == CURLOT_SLIST) return name + "=" + joined(static_cast<const curl_slist*>(value));
  return name;
}

// The pointers that options were set to last.
std::map<CURLoption, void*>& pointers() {
  static std::map<CURLoption, void*> last;
  return last;
}

bool handOver(CURLoption function, CURLoption data, std::size_t itemSize, std::string_view bytes) {
  using Callback = std::size_t (*)(char*, std::size_t, std::size_t, void*);
  std::vector<char> copy(bytes.begin(), bytes.end());
  return reinterpret_cast<Callback>(pointers()[function])(
             copy.data(), itemSize, copy.size() / itemSize, pointers()[data]) == copy.size();
}

CURLcode deliver(const hcy::test::RecordedCurl::Delivery& delivery) {
  const bool taken = handOver(CURLOPT_HEADERFUNCTION, CURLOPT_HEADERDATA, 1, delivery.headerLine) &&
                     handOver(CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA, 2, delivery.body);
  return taken ? CURLE_OK : CURLE_WRITE_ERROR;
}

}  // namespace

CURLcode curl_global_init(long flags) {
  note("global_init " + std::to_string(flags));
  if (recordedCurl().globalInitFails) return CURLE_FAILED_INIT;
  return real(&curl_global_init, "curl_global_init")(flags);
}

void curl_global_cleanup() {
  note("global_cleanup");
  real(&curl_global_cleanup, "curl_global_cleanup")();
}

CURL* curl_easy_init() {
  note("easy_init");
  if (recordedCurl().easyInitFails) return nullptr;
  ++recordedCurl().handles;
  return real(&curl_easy_init, "curl_easy_init")();
}

void curl_easy_cleanup(CURL* handle) {
  note("easy_cleanup");
  if (handle != nullptr) --recordedCurl().handles;
  real(&curl_easy_cleanup, "curl_easy_cleanup")(handle);
}

// An enumeration is passed as its own size here. A macro of the header has the same name.
#if defined(__clang__)
#pragma clang diagnostic ignored "-Wvarargs"
#endif
CURLcode(curl_easy_setopt)(CURL* handle, CURLoption option, ...) {
  const auto pass = real(&(curl_easy_setopt), "curl_easy_setopt");
  const curl_easyoption* const known = curl_easy_option_by_id(option);
  const std::string name = known == nullptr ? std::to_string(option) : known->name;
  const bool refused = recordedCurl().optionsFail;
  va_list arguments;
  va_start(arguments, option);
  CURLcode result = CURLE_UNKNOWN_OPTION;
  if (option < CURLOPTTYPE_OBJECTPOINT) {
    const long value = va_arg(arguments, long);
    note(name + "=" + std::to_string(value));
    if (!refused) result = pass(handle, option, value);
  } else if (option > CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB) {
    const curl_off_t value = va_arg(arguments, curl_off_t);
    note(name + "=" + std::to_string(value));
    if (!refused) result = pass(handle, option, value);
  } else {
    void* const value = va_arg(arguments, void*);
    note(optionWith(name, known == nullptr ? CURLOT_OBJECT : known->type, value));
    pointers()[option] = value;
    if (!refused) result = pass(handle, option, value);
  }
  va_end(arguments);
  return result;
}

CURLcode curl_easy_perform(CURL* handle) {
  note("easy_perform");
  if (recordedCurl().delivery) return deliver(*recordedCurl().delivery);
  return real(&curl_easy_perform, "curl_easy_perform")(handle);
}

CURLcode(curl_easy_getinfo)(CURL* handle, CURLINFO info, ...) {
  va_list arguments;
  va_start(arguments, info);
  void* const place = va_arg(arguments, void*);
  va_end(arguments);
  const auto result = real(&(curl_easy_getinfo), "curl_easy_getinfo")(handle, info, place);
  if (info == CURLINFO_RESPONSE_CODE && recordedCurl().responseCode) {
    *static_cast<long*>(place) = *recordedCurl().responseCode;
  }
  return result;
}
