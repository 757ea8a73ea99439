// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

#include <string>

namespace hcy::test {

// What the libcurl in use says of a failure; the texts differ from version to version.
inline std::string libcurlText(CURLcode code) { return curl_easy_strerror(code); }

// The failure of a reply with a header line that is too long, which 8.6 gave a code of its own.
#if LIBCURL_VERSION_NUM >= 0x080600
inline constexpr CURLcode kHeaderTooLong = CURLE_TOO_LARGE;
#else
inline constexpr CURLcode kHeaderTooLong = CURLE_OUT_OF_MEMORY;
#endif

}  // namespace hcy::test
