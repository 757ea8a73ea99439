// SPDX-License-Identifier: Apache-2.0
//
// What the server answers to a request.

#pragma once

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/status.hpp>
#include <chrono>
#include <optional>
#include <string_view>

#include "byte_body.h"

namespace hcy::server {

using HttpRequest = boost::beast::http::request<ByteBody>;
using HttpResponse = boost::beast::http::response<ByteBody>;

struct Reply {
  HttpResponse message;
  std::chrono::nanoseconds delay{0};
};

// A reason in plain text; the connection ends with it.
Reply refusal(boost::beast::http::status status, std::string_view reason);

// Present if the header alone is enough to refuse the request.
std::optional<Reply> refusalOfHeader(const HttpRequest& request);

// Takes the request's body. Throws nothing.
Reply replyTo(HttpRequest& request);

}  // namespace hcy::server
