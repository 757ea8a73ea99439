// SPDX-License-Identifier: Apache-2.0

#include "header_fields.h"

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <set>

namespace hcy::server {
namespace {

constexpr std::string_view kTokenCharacters =
    "!#$%&'*+-.^_`|~0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

bool isControl(unsigned char c) { return (c < ' ' && c != '\t') || c == 0x7F; }

struct IsLessWithoutCase {
  bool operator()(const std::string& one, const std::string& other) const {
    return ::strcasecmp(one.c_str(), other.c_str()) < 0;
  }
};
using Names = std::set<std::string, IsLessWithoutCase>;

// Those in a list such as "close, X-Own".
void addNames(std::string_view list, Names& names) {
  for (;;) {
    const std::size_t begin = list.find_first_not_of(" \t,");
    if (begin == std::string_view::npos) return;
    list.remove_prefix(begin);
    const std::size_t length = std::min(list.find_first_of(" \t,"), list.size());
    names.emplace(list.substr(0, length));
    list.remove_prefix(length);
  }
}

bool contains(std::string_view name, std::string_view part) {
  const auto sameLetter = [](char a, char b) { return ::strncasecmp(&a, &b, 1) == 0; };
  return std::search(name.begin(), name.end(), part.begin(), part.end(), sameLetter) != name.end();
}

bool canBeSecret(std::string_view name) {
  constexpr std::string_view signs[] = {"auth",   "cookie",  "key",       "password",
                                        "secret", "session", "signature", "token"};
  return std::ranges::any_of(signs, [name](std::string_view sign) { return contains(name, sign); });
}

}  // namespace

bool areNamesEqual(std::string_view one, std::string_view other) {
  return one.size() == other.size() && ::strncasecmp(one.data(), other.data(), one.size()) == 0;
}

bool isValid(const HeaderField& field) {
  return !field.name.empty() &&
         field.name.find_first_not_of(kTokenCharacters) == std::string::npos &&
         std::ranges::none_of(field.value, isControl);
}

bool isForOneHop(const std::string& name) {
  static const Names names = {"Connection",
                              "Content-Length",
                              "Keep-Alive",
                              "Proxy-Authenticate",
                              "Proxy-Authentication-Info",
                              "Proxy-Authorization",
                              "Proxy-Connection",
                              "TE",
                              "Trailer",
                              "Transfer-Encoding",
                              "Upgrade"};
  return names.contains(name);
}

HeaderFields endToEnd(HeaderFields fields) {
  Names named;
  for (const HeaderField& field : fields) {
    if (areNamesEqual(field.name, "Connection")) addNames(field.value, named);
  }
  std::erase_if(fields, [&named](const HeaderField& field) {
    return isForOneHop(field.name) || named.contains(field.name);
  });
  return fields;
}

HeaderFields withoutSecrets(const HeaderFields& fields) {
  HeaderFields kept;
  for (const HeaderField& field : fields) {
    if (areNamesEqual(field.name, "WWW-Authenticate")) {
      const std::size_t end =
          std::min(field.value.find_first_not_of(kTokenCharacters), field.value.size());
      kept.push_back({field.name, field.value.substr(0, end)});
    } else if (!canBeSecret(field.name)) {
      kept.push_back(field);
    }
  }
  return kept;
}

}  // namespace hcy::server
