// SPDX-License-Identifier: Apache-2.0
//
// A request and its reply as they go over the wire.

#pragma once

#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hcy::tools {

struct Exchange {
  std::uint32_t status = 0;
  std::string reason;      // after the status
  std::string reply;       // its body
  double connected = 0;    // seconds from the start, TLS included; 0 on a connection that was open
  double firstByte = 0;    // seconds from the start to that of the reply
  double total = 0;        // seconds
  double retryAfter = 0;   // seconds that the server asks to wait, by a Retry-After header
  bool isTooLong = false;  // whether the reply is longer than the limit, and cut one byte above it
  std::string problem;     // why the reply breaks off, in the words of libcurl, or empty
};

// No reply begins. `details` is what libcurl says about this failure.
class NoReply : public hcyclient::TransportError {
 public:
  NoReply(const std::string& problem, std::string details)
      : TransportError(problem), details_(std::move(details)) {}
  const std::string& details() const { return details_; }

 private:
  std::string details_;
};

// Posts the body with these header lines as the library does, with all settings of the
// configuration, and `seconds` in place of its timeout (0 for no limit). Throws
// NoReply if no reply begins; one that breaks off has a problem.
Exchange post(const hcyclient::Config& config, const std::string& url,
              const std::vector<std::string>& headers, std::string_view body, double seconds);

// Gets a document with these header lines, otherwise as above. Throws hcyclient::TransportError
// also if the reply breaks off.
Exchange get(const hcyclient::Config& config, const std::string& url,
             const std::vector<std::string>& headers, double seconds);

}  // namespace hcy::tools
