// SPDX-License-Identifier: Apache-2.0
//
// One call and its reply in a file: a line of JSON that describes them, then the body of the
// request, then the body of the reply, both byte for byte.

#pragma once

#include <filesystem>
#include <string_view>

#include "byte_buffer.h"
#include "recorded_header.h"

namespace hcy::server {

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
