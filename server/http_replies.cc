// SPDX-License-Identifier: Apache-2.0

#include "http_replies.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/fields.hpp>
#include <boost/beast/http/verb.hpp>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "function_call.h"
#include "overload.h"
#include "recorded_call.h"

namespace hcy::server {
namespace {

namespace http = boost::beast::http;

constexpr std::string_view kPlainText = "text/plain; charset=utf-8";
constexpr std::string_view kJson = "application/json";
constexpr std::string_view kProtobuf = "application/x-google-protobuf";
constexpr unsigned kHttp11 = 11;

boost::beast::string_view toBoost(std::string_view text) { return {text.data(), text.size()}; }

HttpResponse makeResponse(http::status status, std::string_view contentType, ByteBuffer body) {
  HttpResponse response(status, kHttp11);
  response.set(http::field::server, "hcy-local-server");
  response.set(http::field::content_type, toBoost(contentType));
  response.content_length(body.size());
  response.body() = std::move(body);
  return response;
}

HttpResponse plainText(http::status status, std::string_view text) {
  return makeResponse(status, kPlainText, ByteBuffer(text));
}

HttpResponse methodNotAllowed(std::string_view allowed) {
  HttpResponse response = plainText(http::status::method_not_allowed,
                                    "Only " + std::string(allowed) + " is answered here.\n");
  response.set(http::field::allow, toBoost(allowed));
  return response;
}

bool isGetOrHead(const HttpRequest& request) {
  return request.method() == http::verb::get || request.method() == http::verb::head;
}

bool asksForJson(const HttpRequest& request) {
  const auto [first, last] = request.equal_range(http::field::accept);
  return std::any_of(first, last,
                     [](const auto& field) { return boost::icontains(field.value(), kJson); });
}

Reply index(const HttpRequest& request, const std::vector<ListedFunction>& functions) {
  Reply reply{asksForJson(request)
                  ? makeResponse(http::status::ok, kJson, ByteBuffer(functionsAsJson(functions)))
                  : plainText(http::status::ok, listOfFunctions(functions))};
  reply.message.set(http::field::vary, "Accept");
  return reply;
}

Reply evaluated(FunctionCall& call) {
  Evaluation evaluation = call.evaluate();
  return {makeResponse(http::status::ok, kProtobuf, std::move(evaluation.result)),
          evaluation.replyDelay, std::nullopt, std::move(evaluation.room)};
}

}  // namespace

Reply refusal(http::status status, std::string_view reason) {
  Reply reply{plainText(status, reason)};
  reply.message.keep_alive(false);
  return reply;
}

std::optional<Reply> refusalOf(boost::system::error_code error) {
  if (error == http::error::body_limit) {
    return refusal(http::status::payload_too_large, "The body is too long.\n");
  }
  if (error == http::error::header_limit || error == http::error::buffer_overflow) {
    return refusal(http::status::request_header_fields_too_large,
                   "The header, extensions of chunks or trailers are too long.\n");
  }
  if (error == boost::system::errc::not_enough_memory) {
    return refusal(http::status::service_unavailable, kNoMemory);
  }
  if (error.category() == make_error_code(http::error::bad_method).category()) {
    return refusal(http::status::bad_request,
                   "The request is malformed: " + error.message() + "\n");
  }
  return std::nullopt;
}

std::optional<Reply> refusalOfHeader(const HttpRequest& request) {
  if (request.version() == kHttp11 && request.count(http::field::host) != 1) {
    return refusal(http::status::bad_request, "The request names no host, or several.\n");
  }
  if (request.count(http::field::transfer_encoding) > 0 && !request.chunked()) {
    return refusal(http::status::not_implemented,
                   "The only supported transfer coding is chunked.\n");
  }
  return std::nullopt;
}

std::string_view targetOf(const HttpRequest& request) {
  const std::string_view target(request.target().data(), request.target().size());
  // The server's own address may stand before it.
  const std::size_t schemeEnd = target.substr(0, target.find('?')).find("://");
  if (target.starts_with('/') || schemeEnd == std::string_view::npos) return target;
  const std::size_t path = target.find_first_of("/?", schemeEnd + 3);
  return path == std::string_view::npos || target[path] == '?' ? "/" : target.substr(path);
}

std::string_view pathOf(const HttpRequest& request) {
  const std::string_view target = targetOf(request);
  return target.substr(0, target.find('?'));
}

bool isCall(const HttpRequest& request) {
  const std::string_view path = pathOf(request);
  return request.method() == http::verb::post && path.starts_with('/') && path != "/" &&
         path != "/healthz";
}

Reply replyWithoutCall(const HttpRequest& request, const std::vector<ListedFunction>& functions) {
  const std::string_view path = pathOf(request);
  if (path == "/" || path == "/healthz") {
    if (!isGetOrHead(request)) return {methodNotAllowed("GET, HEAD")};
    return path == "/" ? index(request, functions) : Reply{plainText(http::status::ok, "ok\n")};
  }
  const auto hasPath = [path](const ListedFunction& one) { return "/" + one.name == path; };
  if (std::ranges::any_of(functions, hasPath)) return {methodNotAllowed("POST")};
  return notFound("There is no function at this path.\n");
}

Reply notFound(std::string_view reason) { return {plainText(http::status::not_found, reason)}; }

Reply serverFault(http::status status, const std::string& reason) {
  return {plainText(status, reason + "\n")};
}

Reply badParams() {
  return {plainText(http::status::bad_request, "The body is not a VORTEN_Params message.\n")};
}

Reply resultReply(ByteBuffer result, Source source) {
  Reply reply{makeResponse(http::status::ok, kProtobuf, std::move(result))};
  reply.source = source;
  return reply;
}

HttpResponse asRecorded(const RecordedCall& call, ByteBuffer body) {
  HttpResponse response = makeResponse(http::status::ok, "", std::move(body));
  response.result(call.status);
  response.reason(call.reason);
  response.erase(http::field::content_type);
  if (!valueOf(call.fields, "Server").empty()) response.erase(http::field::server);
  for (const HeaderField& field : call.fields) response.insert(field.name, field.value);
  // Such a message has no body, and says nothing of its length.
  if (call.status == 204 || call.status == 304) response.erase(http::field::content_length);
  return response;
}

std::optional<Reply> failureToParse(FunctionCall& call, HttpRequest& request) try {
  if (call.parse(std::move(request.body()))) return std::nullopt;
  return badParams();
} catch (const std::bad_alloc&) {
  return overloaded(kNoMemory);
}

Reply replyTo(FunctionCall& call) try { return evaluated(call); } catch (const Overload& overload) {
  return overloaded(std::string(overload.what()) + "\n");
} catch (const std::bad_alloc&) {
  return overloaded(kNoMemory);
} catch (const std::exception& error) {
  return {plainText(http::status::internal_server_error, std::string(error.what()) + "\n")};
}

Reply overloaded(std::string_view reason) {
  return {plainText(http::status::service_unavailable, reason)};
}

void finish(Reply& reply, const HttpRequest& request) {
  reply.message.version(request.version());
  reply.message.keep_alive(request.keep_alive());
  // The length stays, as it would be for GET.
  if (request.method() == http::verb::head) reply.message.body() = ByteBuffer();
}

}  // namespace hcy::server
