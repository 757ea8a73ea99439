// SPDX-License-Identifier: Apache-2.0
//
// What the server answers to a request.

#pragma once

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/status.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "budget.h"
#include "byte_body.h"
#include "listed_function.h"

namespace hcy::server {

class FunctionCall;
struct RecordedCall;

inline constexpr std::string_view kNoMemory = "Not enough memory.\n";

using HttpRequest = boost::beast::http::request<ByteBody>;
using HttpResponse = boost::beast::http::response<ByteBody>;

// How a reply is sent.
struct Delivery {
  enum class Way {
    kWhole,
    kReset,      // the connection is reset instead
    kClosed,     // the connection ends instead
    kTruncated,  // the body ends after some bytes, and the connection with it
    kDripped,    // the body comes slowly
  };
  Way way = Way::kWhole;
  std::uint64_t bytes = 0;
  double bytesPerSecond = 0;
};

// Where a reply comes from.
enum class Source { kServer, kCommand, kRecorded, kUpstream };

// NOLINTNEXTLINE(bugprone-exception-escape): a message that is moved allocates nothing
struct Reply {
  HttpResponse message;
  std::chrono::nanoseconds delay{0};
  // Kept until the delay is over.
  std::optional<BudgetShare> place{};
  // Kept until the client has read the reply.
  std::optional<BudgetShare> room{};
  Source source = Source::kServer;
  // What was done to it on purpose; empty for nothing.
  std::string fault{};
  Delivery delivery{};
};

// A reason in plain text; the connection ends with it.
Reply refusal(boost::beast::http::status status, std::string_view reason);

// Present if a request that could not be read for this reason is answered; otherwise the connection
// is lost.
std::optional<Reply> refusalOf(boost::system::error_code error);

// Present if the header alone is enough to refuse the request.
std::optional<Reply> refusalOfHeader(const HttpRequest& request);

// The path, and the path with its query, that the request is for; they live as long as it does.
std::string_view pathOf(const HttpRequest& request);
std::string_view targetOf(const HttpRequest& request);

// Whether the request calls a function, whatever its name.
bool isCall(const HttpRequest& request);

// To a request that calls no function: a page of the server, or that there is none.
Reply replyWithoutCall(const HttpRequest& request, const std::vector<ListedFunction>& functions);
Reply notFound(std::string_view reason);
// The server or one behind it fails.
Reply serverFault(boost::beast::http::status status, const std::string& reason);
// The body is not a VORTEN_Params.
Reply badParams();
// A VORTEN_Result.
Reply resultReply(ByteBuffer result, Source source);
// What another server has answered.
HttpResponse asRecorded(const RecordedCall& call, ByteBuffer body);

// Takes the request's body; present if it is not one that can be evaluated.
std::optional<Reply> failureToParse(FunctionCall& call, HttpRequest& request);

// Evaluates the call. Throws nothing.
Reply replyTo(FunctionCall& call);

// There is too much to do; a later attempt may succeed.
Reply overloaded(std::string_view reason);

// Gives the reply what depends on the request's header.
void finish(Reply& reply, const HttpRequest& request);

}  // namespace hcy::server
