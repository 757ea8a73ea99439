// SPDX-License-Identifier: Apache-2.0

#include "call_log.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <exception>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "call_values.h"

namespace hcy::server {
namespace {

using Json = nlohmann::ordered_json;

// Larger bodies take too long to read.
constexpr std::size_t kLargestShown = std::size_t{16} << 20;

// "2026-11-22T03:10:15.123Z"
std::string timeText(std::chrono::system_clock::time_point time) {
  const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time);
  const auto whole = std::chrono::floor<std::chrono::seconds>(milliseconds);
  const std::time_t seconds = std::chrono::system_clock::to_time_t(whole);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  char text[32];
  const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  char fraction[8];
  static_cast<void>(std::snprintf(fraction, sizeof fraction, ".%03dZ",
                                  static_cast<int>((milliseconds - whole).count())));
  return std::string(text, size) + fraction;
}

const char* nameOf(Source source) {
  switch (source) {
    case Source::kCommand:
      return "command";
    case Source::kRecorded:
      return "recorded";
    case Source::kUpstream:
      return "upstream";
    case Source::kServer:
      break;
  }
  return "server";
}

bool isSent(const Reply& reply) {
  return reply.delivery.way != Delivery::Way::kReset &&
         reply.delivery.way != Delivery::Way::kClosed;
}

// How many bytes of the body a fault leaves.
std::uint64_t sentBytes(const Reply& reply) {
  if (!isSent(reply)) return 0;
  const std::uint64_t size = reply.message.body().size();
  const bool isCut = reply.delivery.way == Delivery::Way::kTruncated;
  return isCut ? std::min(reply.delivery.bytes, size) : size;
}

// The values of one call, each cut to a width.
struct Values {
  std::optional<ShownRequest> request;
  std::optional<ShownReply> reply;
};

void cut(std::vector<std::string>& texts, std::size_t width) {
  for (std::string& text : texts) text = cutText(text, width);
}

Values valuesOf(const LoggedCall& call, const Reply& reply, std::size_t width) {
  Values values;
  if (call.request) values.request = showRequest(*call.request);
  if (values.request) cut(values.request->inputs, width);
  const ByteBuffer& body = reply.message.body();
  if (call.request && sentBytes(reply) == body.size() && reply.message.result_int() == 200 &&
      body.size() <= kLargestShown) {
    values.reply = showReply({body.data(), body.size()});
  }
  if (!values.reply) return values;
  cut(values.reply->outputs, width);
  if (values.reply->error) values.reply->error = cutText(*values.reply->error, width);
  return values;
}

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
  return "(" + all + ")";
}

std::string textLine(const LoggedCall& call, const Reply& reply, double milliseconds,
                     const Values& values) {
  char numbers[128];
  const std::string status = isSent(reply) ? std::to_string(reply.message.result_int()) : "-";
  static_cast<void>(std::snprintf(numbers, sizeof numbers, " %s %.3f ms %zu B in %llu B out ",
                                  status.c_str(), milliseconds, call.requestSize,
                                  static_cast<unsigned long long>(sentBytes(reply))));
  std::string line =
      timeText(call.time) + " " + cutText(call.path, 0) + numbers + nameOf(reply.source);
  if (!reply.fault.empty()) line += " [" + cutText(reply.fault, 0) + "]";
  if (values.request) {
    line += " " + joined(values.request->inputs) + " nargout " +
            std::to_string(values.request->nargout);
  }
  if (values.reply) {
    line += " -> " + (values.reply->error ? *values.reply->error : joined(values.reply->outputs));
  }
  return line + "\n";
}

std::string jsonLine(const LoggedCall& call, const Reply& reply, double milliseconds,
                     const Values& values) {
  Json json = {{"time", timeText(call.time)}, {"path", call.path}};
  json["status"] = isSent(reply) ? Json(reply.message.result_int()) : Json();
  json["milliseconds"] = std::round(milliseconds * 1000) / 1000;
  json["requestBytes"] = call.requestSize;
  json["replyBytes"] = sentBytes(reply);
  json["source"] = nameOf(reply.source);
  if (!reply.fault.empty()) json["fault"] = reply.fault;
  if (values.request) {
    json["nargout"] = values.request->nargout;
    json["inputs"] = values.request->inputs;
  }
  if (values.reply && values.reply->error) {
    json["error"] = *values.reply->error;
  } else if (values.reply) {
    json["outputs"] = values.reply->outputs;
  }
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::FILE* opened(const std::string& name) {
  if (name == "-") return stderr;
  std::FILE* const file = std::fopen(name.c_str(), "ae");
  if (file == nullptr) throw std::runtime_error("--log: " + name + ": " + std::strerror(errno));
  return file;
}

}  // namespace

CallLog::CallLog(const LogOptions& options) : options_(options) {
  if (options.file) file_.reset(opened(*options.file));
}

std::optional<LoggedCall> CallLog::begin(const HttpRequest& request) const {
  if (!file_) return std::nullopt;
  LoggedCall call{std::chrono::system_clock::now(),
                  std::chrono::steady_clock::now(),
                  std::string(pathOf(request).empty() ? "-" : pathOf(request)),
                  request.body().size(),
                  {}};
  if (options_.showsValues && isCall(request) && call.requestSize <= kLargestShown) {
    call.request.emplace();
    if (call.requestSize > 0) call.request->assign(request.body().data(), call.requestSize);
  }
  return call;
}

void CallLog::end(const LoggedCall& call, const Reply& reply) try {
  const std::chrono::duration<double, std::milli> time =
      std::chrono::steady_clock::now() - call.begin;
  Values values;
  if (options_.showsValues) values = valuesOf(call, reply, options_.width);
  const std::string line = options_.isJson ? jsonLine(call, reply, time.count(), values)
                                           : textLine(call, reply, time.count(), values);
  const std::lock_guard lock(mutex_);
  // A log that cannot be written stops no call.
  static_cast<void>(std::fwrite(line.data(), 1, line.size(), file_.get()));
  static_cast<void>(std::fflush(file_.get()));
} catch (const std::exception&) {
  // A line that there is no memory for is missing; the call is not.
}

}  // namespace hcy::server
