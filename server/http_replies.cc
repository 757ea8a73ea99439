// SPDX-License-Identifier: Apache-2.0

#include "http_replies.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/beast/http/fields.hpp>
#include <boost/beast/http/verb.hpp>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "overload.h"

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

// Leaves out the query, and the server's own address if the target begins with it.
std::string_view pathOf(const HttpRequest& request) {
  std::string_view target(request.target().data(), request.target().size());
  target = target.substr(0, target.find('?'));
  const std::size_t schemeEnd = target.find("://");
  if (target.starts_with('/') || schemeEnd == std::string_view::npos) return target;
  const std::size_t path = target.find('/', schemeEnd + 3);
  return path == std::string_view::npos ? "/" : target.substr(path);
}

bool isGetOrHead(const HttpRequest& request) {
  return request.method() == http::verb::get || request.method() == http::verb::head;
}

bool asksForJson(const HttpRequest& request) {
  const auto [first, last] = request.equal_range(http::field::accept);
  return std::any_of(first, last,
                     [](const auto& field) { return boost::icontains(field.value(), kJson); });
}

Reply index(const HttpRequest& request) {
  Reply reply{asksForJson(request)
                  ? makeResponse(http::status::ok, kJson, ByteBuffer(functionsAsJson()))
                  : plainText(http::status::ok, listOfFunctions())};
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

std::optional<Reply> refusalOfHeader(const HttpRequest& request) {
  if (request.version() == kHttp11 && request.count(http::field::host) != 1) {
    return refusal(http::status::bad_request, "The request names no host, or several.\n");
  }
  if (request.count(http::field::transfer_encoding) > 0 && !request.chunked()) {
    return refusal(http::status::not_implemented, "Of transfer codings, chunked is known.\n");
  }
  return std::nullopt;
}

const Function* functionCalledBy(const HttpRequest& request) {
  const std::string_view path = pathOf(request);
  if (request.method() != http::verb::post || !path.starts_with('/')) return nullptr;
  return findFunction(path.substr(1));
}

Reply replyWithoutCall(const HttpRequest& request) {
  const std::string_view path = pathOf(request);
  if (path == "/" || path == "/healthz") {
    if (!isGetOrHead(request)) return {methodNotAllowed("GET, HEAD")};
    return path == "/" ? index(request) : Reply{plainText(http::status::ok, "ok\n")};
  }
  if (path.starts_with('/') && findFunction(path.substr(1)) != nullptr) {
    return {methodNotAllowed("POST")};
  }
  return {plainText(http::status::not_found, "There is no function of this path.\n")};
}

std::optional<Reply> failureToParse(FunctionCall& call, HttpRequest& request) try {
  if (call.parse(std::move(request.body()))) return std::nullopt;
  return Reply{plainText(http::status::bad_request, "The body is no VORTEN_Params.\n")};
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
