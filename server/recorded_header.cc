// SPDX-License-Identifier: Apache-2.0

#include "recorded_header.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace hcy::server {
namespace {

RecordedCall fromHeaderLine(std::string_view line) {
  const auto json = nlohmann::json::parse(line);
  if (json.at("format") != 1) throw std::runtime_error("it has a format of a later version");
  RecordedCall call;
  call.path = json.at("path").get<std::string>();
  call.digest = json.at("sha256").get<std::string>();
  call.requestSize = json.at("requestBytes").get<std::uint64_t>();
  call.status = json.at("status").get<unsigned>();
  call.reason = json.at("reason").get<std::string>();
  call.replySize = json.at("replyBytes").get<std::uint64_t>();
  call.milliseconds = json.at("milliseconds").get<double>();
  call.headerSize = line.size();
  const auto add = [&call](const char* name, const std::string& value) {
    if (!value.empty()) call.fields.push_back({name, value});
  };
  add("Content-Type", json.at("contentType").get<std::string>());
  // In recordings of earlier versions, which kept no other fields.
  add("Retry-After", json.value("retryAfter", std::string()));
  for (const auto& field : json.value("header", nlohmann::json::array())) {
    call.fields.push_back({field.at(0).get<std::string>(), field.at(1).get<std::string>()});
  }
  return call;
}

void requireSense(const RecordedCall& call) {
  if (call.status < 200 || call.status > 999) throw std::runtime_error("it has no HTTP status");
  if (call.reason.find_first_of("\r\n") != std::string::npos) {
    throw std::runtime_error("it has a line end inside the reason");
  }
  for (const HeaderField& field : call.fields) {
    if (!isValid(field) || isForOneHop(field.name)) {
      throw std::runtime_error("it has a header field that cannot be replayed: " + field.name);
    }
  }
}

}  // namespace

std::string_view valueOf(const HeaderFields& fields, std::string_view name) {
  const auto found = std::ranges::find_if(
      fields, [name](const HeaderField& field) { return areNamesEqual(field.name, name); });
  return found == fields.end() ? std::string_view() : found->value;
}

std::string headerLineOf(const RecordedCall& call) {
  auto header = nlohmann::ordered_json::array();
  for (const HeaderField& field : call.fields) {
    if (areNamesEqual(field.name, "Content-Type")) continue;
    header.push_back({field.name, field.value});
  }
  nlohmann::ordered_json json = {
      {"format", 1},
      {"path", call.path},
      {"sha256", call.digest},
      {"requestBytes", call.requestSize},
      {"status", call.status},
      {"reason", call.reason},
      {"contentType", valueOf(call.fields, "Content-Type")},
      {"replyBytes", call.replySize},
      {"milliseconds", std::round(call.milliseconds * 1000) / 1000},
  };
  if (!header.empty()) json["header"] = header;
  // What a server sends need not be UTF-8.
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

RecordedCall recordedCallFrom(std::string_view beginning) try {
  const std::size_t lineEnd = beginning.find('\n');
  if (lineEnd == std::string_view::npos) throw std::runtime_error("it has no first line");
  RecordedCall call = fromHeaderLine(beginning.substr(0, lineEnd + 1));
  requireSense(call);
  return call;
} catch (const nlohmann::json::exception&) {
  throw std::runtime_error("is not a recorded call: its first line does not describe one");
} catch (const std::runtime_error& error) {
  throw std::runtime_error(std::string("is not a recorded call: ") + error.what());
}

}  // namespace hcy::server
