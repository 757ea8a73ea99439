// SPDX-License-Identifier: Apache-2.0
//
// Another server, to which calls are passed on.

#pragma once

#include <boost/beast/http/message.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "byte_body.h"
#include "header_fields.h"
#include "options.h"

namespace hcy::server {

struct UpstreamReply {
  unsigned status = 0;
  std::string reason;
  // But for those that concern only this connection.
  HeaderFields fields;
  ByteBuffer body;
};

// The other server gave no whole reply; what() says why.
class UpstreamFailure : public std::runtime_error {
 public:
  UpstreamFailure(const std::string& text, bool timedOut)
      : std::runtime_error(text), isTimeout(timedOut) {}
  bool isTimeout;
};

// Keeps its connections open. All functions may be called by several threads at once.
class Upstream {
 public:
  // Throws tools::BadInput if a file is of no use.
  Upstream(const UpstreamOptions& options, std::uint64_t longestReply);
  ~Upstream();

  // Posts the body to the target, a path and perhaps a query, with the header fields of the request
  // that are meant for the last server. Blocks. Throws UpstreamFailure, and std::bad_alloc if there
  // is no memory for the reply.
  UpstreamReply post(const boost::beast::http::request<ByteBody>& request,
                     std::string_view target) const;

 private:
  class Handles;

  std::unique_ptr<Handles> handles_;
  std::string url_;
  std::uint64_t longestReply_;
};

}  // namespace hcy::server
