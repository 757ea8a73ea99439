// SPDX-License-Identifier: Apache-2.0
//
// What the server answers to a request.

#pragma once

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/status.hpp>
#include <chrono>
#include <optional>
#include <string_view>

#include "budget.h"
#include "byte_body.h"
#include "function_call.h"
#include "function_table.h"

namespace hcy::server {

inline constexpr std::string_view kNoMemory = "Not enough memory.\n";

using HttpRequest = boost::beast::http::request<ByteBody>;
using HttpResponse = boost::beast::http::response<ByteBody>;

struct Reply {
  HttpResponse message;
  std::chrono::nanoseconds delay{0};
  // Kept until the delay is over.
  std::optional<BudgetShare> place{};
  // Kept until the client has read the reply.
  std::optional<BudgetShare> room{};
};

// A reason in plain text; the connection ends with it.
Reply refusal(boost::beast::http::status status, std::string_view reason);

// Present if the header alone is enough to refuse the request.
std::optional<Reply> refusalOfHeader(const HttpRequest& request);

// The function that the request calls; null if it calls none, and replyWithoutCall() answers it.
const Function* functionCalledBy(const HttpRequest& request);
Reply replyWithoutCall(const HttpRequest& request);

// Takes the request's body; present if it is not one that can be evaluated.
std::optional<Reply> failureToParse(FunctionCall& call, HttpRequest& request);

// Evaluates the call. Throws nothing.
Reply replyTo(FunctionCall& call);

// There is too much to do; a later attempt may succeed.
Reply overloaded(std::string_view reason);

// Gives the reply what depends on the request's header.
void finish(Reply& reply, const HttpRequest& request);

}  // namespace hcy::server
