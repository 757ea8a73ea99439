// SPDX-License-Identifier: Apache-2.0
//
// A request and its reply as they go over the wire.

#pragma once

#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace hcy::tools {

struct Exchange {
  std::uint32_t status = 0;
  std::string reason;    // after the status
  std::string reply;     // its body
  double connected = 0;  // seconds from the start, TLS included; 0 on a connection that was open
  double firstByte = 0;  // seconds from the start to that of the reply
  double total = 0;      // seconds
};

// Posts the body with these header lines as the library does, with all settings of the
// configuration, and `seconds` in place of its timeout (0 for no limit). Throws
// hcyclient::TransportError.
Exchange post(const hcyclient::Config& config, const std::string& url,
              const std::vector<std::string>& headers, std::string_view body, double seconds);

// Gets a document with these header lines, otherwise as above.
Exchange get(const hcyclient::Config& config, const std::string& url,
             const std::vector<std::string>& headers, double seconds);

}  // namespace hcy::tools
