// SPDX-License-Identifier: Apache-2.0
//
// The first line of the file of a recorded call.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "header_fields.h"

namespace hcy::server {

inline constexpr std::string_view kRecordedCallEnding = ".hcycall";
inline constexpr std::size_t kLongestHeaderLine = std::size_t{512} << 10;

struct RecordedCall {
  // The name of the file in its folder.
  std::string file;
  // With the leading slash, without a query.
  std::string path;
  // The SHA-256 of the body of the request.
  std::string digest;
  std::uint64_t requestSize = 0;
  unsigned status = 0;
  std::string reason;
  // Of the reply; those for one hop are not among them.
  HeaderFields fields;
  std::uint64_t replySize = 0;
  double milliseconds = 0;
  // Where the body of the request begins in the file.
  std::uint64_t headerSize = 0;
};

// The value of the first field of this name; empty if there is none.
std::string_view valueOf(const HeaderFields& fields, std::string_view name);

// The line of JSON, with its line end.
std::string headerLineOf(const RecordedCall& call);

// What the line at the beginning of these bytes says of the call. Throws std::runtime_error if
// they do not begin with one.
RecordedCall recordedCallFrom(std::string_view beginning);

}  // namespace hcy::server
