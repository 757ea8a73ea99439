// SPDX-License-Identifier: Apache-2.0
//
// Header fields that are passed on from one connection to another, or kept in a file.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hcy::server {

struct HeaderField {
  std::string name, value;
};
using HeaderFields = std::vector<HeaderField>;

bool areNamesEqual(std::string_view one, std::string_view other);

// Whether a message can hold the field: the name is a token, the value has no control characters.
bool isValid(const HeaderField& field);

// Whether the field describes one connection or the length of a message on it (RFC 9110, 7.6.1).
bool isForOneHop(const std::string& name);

// The fields that are meant for the other end: those for one hop are left out, and so are those
// that a Connection field names.
HeaderFields endToEnd(HeaderFields fields);

// The fields without what could be a secret. Of a challenge, the scheme is left.
HeaderFields withoutSecrets(const HeaderFields& fields);

}  // namespace hcy::server
