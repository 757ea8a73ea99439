// SPDX-License-Identifier: Apache-2.0

#include "stand_in.h"

#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <string>
#include <system_error>
#include <utility>

#include "nearest_call.h"

namespace hcy::server {
namespace {

namespace http = boost::beast::http;
using std::chrono::steady_clock;

std::string_view bytesOf(const ByteBuffer& buffer) { return {buffer.data(), buffer.size()}; }

Reply replyOf(const RecordedCall& call, ByteBuffer body, Source source) {
  return {asRecorded(call, std::move(body)), std::chrono::nanoseconds(0), std::nullopt,
          std::nullopt, source};
}

bool areSame(const std::string& one, const std::string& other) {
  std::error_code unknown;
  return std::filesystem::equivalent(one, other, unknown);
}

}  // namespace

StandIn::StandIn(const Options& options)
    : order_(options.givesLastAnswer ? AnswerOrder::kLast : AnswerOrder::kRecorded) {
  if (!options.upstream.url.empty()) upstream_.emplace(options.upstream, options.maxBody);
  if (!options.recordFolder.empty()) {
    recorded_ = std::make_shared<Recordings>(options.recordFolder, true);
  }
  if (options.replayFolder.empty()) return;
  const bool isRecorded = recorded_ && areSame(options.replayFolder, options.recordFolder);
  replayed_ = isRecorded ? recorded_ : std::make_shared<Recordings>(options.replayFolder, false);
}

std::optional<Reply> StandIn::answerAtOnce(const HttpRequest& request) const try {
  if (!replayed_) return std::nullopt;
  const std::string_view path = pathOf(request);
  const std::string_view body = bytesOf(request.body());
  if (auto answer = replayed_->find(path, body, order_)) {
    return replyOf(answer->call, std::move(answer->reply), Source::kRecorded);
  }
  if (upstream_) return std::nullopt;
  const std::string reason = explainMiss(*replayed_, path, body);
  // A client shows of a 404 hardly more than its number.
  std::cerr << reason << std::flush;
  return notFound(reason);
} catch (const std::bad_alloc&) {
  return overloaded(kNoMemory);
} catch (const std::exception& error) {
  return serverFault(http::status::internal_server_error, error.what());
}

Reply StandIn::ask(const HttpRequest& request) const try {
  return passOn(request);
} catch (const UpstreamFailure& failure) {
  return serverFault(failure.isTimeout ? http::status::gateway_timeout : http::status::bad_gateway,
                     std::string("The upstream server did not reply: ") + failure.what());
} catch (const std::bad_alloc&) {
  return overloaded(kNoMemory);
} catch (const std::exception& error) {
  return serverFault(http::status::internal_server_error, error.what());
}

Reply StandIn::passOn(const HttpRequest& request) const {
  const auto begin = steady_clock::now();
  UpstreamReply reply = upstream_->post(request, targetOf(request));
  const std::chrono::duration<double, std::milli> time = steady_clock::now() - begin;
  RecordedCall call;
  call.path = pathOf(request);
  call.status = reply.status;
  call.reason = std::move(reply.reason);
  call.fields = std::move(reply.fields);
  call.milliseconds = time.count();
  if (recorded_) {
    try {
      recorded_->add(call, bytesOf(request.body()), bytesOf(reply.body));
    } catch (const std::runtime_error& error) {
      // A client that got an answer would not notice that it is missing later.
      return serverFault(http::status::internal_server_error,
                         std::string("The call cannot be recorded: ") + error.what());
    }
  }
  return replyOf(call, std::move(reply.body), Source::kUpstream);
}

std::map<std::string, std::size_t> StandIn::paths() const {
  return replayed_ ? replayed_->paths() : std::map<std::string, std::size_t>();
}

void StandIn::finish() {
  if (!recorded_) return;
  try {
    recorded_->writeIndex();
  } catch (const std::exception& error) {
    std::cerr << "hcy-local-server: " << error.what() << '\n';
  }
}

}  // namespace hcy::server
