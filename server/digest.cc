// SPDX-License-Identifier: Apache-2.0

#include "digest.h"

#include <openssl/evp.h>

#include <new>

namespace hcy::server {

std::string sha256(std::string_view bytes) {
  // Fetched once: looking it up takes longer than the digest of a short text.
  static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned size = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest, &size, algorithm, nullptr) != 1) {
    throw std::bad_alloc();
  }
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (unsigned i = 0; i < size; ++i) {
    text.push_back(digits[digest[i] >> 4]);
    text.push_back(digits[digest[i] & 15]);
  }
  return text;
}

}  // namespace hcy::server
