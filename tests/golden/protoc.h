// SPDX-License-Identifier: Apache-2.0
//
// The protocol compiler as a decoder and encoder that shares no code with the library.

#pragma once

#include <string>

namespace hcy::test {

// The text that protoc prints for the bytes of a file, taken for a message of this name, and the
// bytes that it writes for a text. Both throw std::runtime_error when it fails.
std::string decodedByProtoc(const std::string& message, const std::string& binaryFile);
std::string encodedByProtoc(const std::string& message, const std::string& textFile);

}  // namespace hcy::test
