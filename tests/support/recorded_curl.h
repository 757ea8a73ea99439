// SPDX-License-Identifier: Apache-2.0
//
// libcurl under watch. Linked into a test program, recorded_curl.cc stands between the objects of
// the program and libcurl: it notes every call and passes it on, or makes it fail.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace hcy::test {

struct RecordedCurl {
  // In order: "global_init 3", "easy_init", "TIMEOUT=120" for an option, "easy_perform"...
  // Options that are functions or data pointers have their name alone.
  std::vector<std::string> calls;
  int handles = 0;  // made and not yet cleaned up

  // What is to fail, or to be read, from now on.
  bool globalInitFails = false;
  bool easyInitFails = false;
  bool optionsFail = false;  // each is refused, and not passed on
  std::optional<long> responseCode;

  // What easy_perform hands to the callbacks instead of a transfer: a header line with no byte
  // behind it that could be read, and a piece of body in items of two bytes.
  struct Delivery {
    std::string headerLine;
    std::string body;
  };
  std::optional<Delivery> delivery;

  std::size_t count(const std::string& call) const;
};

// The record of this program.
RecordedCurl& recordedCurl();

}  // namespace hcy::test
