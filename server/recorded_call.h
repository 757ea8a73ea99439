// SPDX-License-Identifier: Apache-2.0
//
// One call and its reply in a file: a line of JSON that describes them, then the body of the
// request, then the body of the reply, both byte for byte.

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "byte_buffer.h"

namespace hcy::server {

inline constexpr std::string_view kRecordedCallEnding = ".hcycall";

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
  std::string contentType;
  // Empty if there was none.
  std::string retryAfter;
  std::uint64_t replySize = 0;
  double milliseconds = 0;
  // Where the body of the request begins in the file.
  std::uint64_t headerSize = 0;
};

// The line of JSON, with its line end.
std::string headerLineOf(const RecordedCall& call);

// What a file says of its call. Throws std::runtime_error if it is not such a file, or cut short.
RecordedCall readRecordedCall(const std::filesystem::path& file);

// A part of the file. Throws std::runtime_error, and std::bad_alloc.
ByteBuffer requestOf(const RecordedCall& call, const std::filesystem::path& folder);
ByteBuffer replyOf(const RecordedCall& call, const std::filesystem::path& folder);

// Writes a file that is there whole or not at all, also when the program is killed meanwhile.
// Throws std::runtime_error.
void writeWholeFile(const std::filesystem::path& file,
                    std::initializer_list<std::string_view> parts);

}  // namespace hcy::server
