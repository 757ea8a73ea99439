// SPDX-License-Identifier: Apache-2.0

#include "recordings.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "digest.h"

namespace hcy::server {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

// Replies that are kept in memory: small ones, as long as all are not too much.
constexpr std::size_t kLargestKept = std::size_t{16} << 10;
constexpr std::size_t kMostKept = std::size_t{128} << 20;
constexpr std::chrono::seconds kIndexPause{1};

std::string keyOf(std::string_view path, std::string_view digest) {
  return std::string(digest).append(path);
}

// "000017-math-plus-1a2b3c4d.hcycall"
std::string fileNameOf(std::size_t number, const RecordedCall& call) {
  constexpr std::size_t kLongest = 80;
  constexpr std::string_view kept =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.";
  std::string path = call.path.substr(call.path.starts_with('/') ? 1 : 0, kLongest);
  for (char& c : path) {
    if (kept.find(c) == std::string_view::npos) c = '-';
  }
  char digits[24];
  static_cast<void>(std::snprintf(digits, sizeof digits, "%06zu", number));
  return std::string(digits) + "-" + path + "-" + call.digest.substr(0, 8) +
         std::string(kRecordedCallEnding);
}

std::size_t numberOf(const std::string& file) {
  std::size_t number = 0;
  std::from_chars(file.data(), file.data() + file.size(), number);
  return number;
}

std::string textOf(const ByteBuffer& bytes) { return {bytes.data(), bytes.size()}; }

}  // namespace

Recordings::Recordings(fs::path folder, bool isMade) : folder_(std::move(folder)) {
  if (isMade) {
    std::error_code failed;
    fs::create_directories(folder_, failed);
    if (failed) throw std::runtime_error(folder_.string() + ": " + failed.message());
    // Line ends in the bodies are not to be changed by a version control.
    const fs::path attributes = folder_ / ".gitattributes";
    if (!fs::exists(attributes)) writeWholeFile(attributes, {"*.hcycall -text\n"});
  }
  load();
}

Recordings::~Recordings() {
  try {
    writeIndex();
  } catch (const std::exception& error) {
    std::cerr << "hcy-local-server: " << error.what() << '\n';
  }
}

void Recordings::load() {
  std::vector<fs::path> files;
  try {
    for (const auto& entry : fs::directory_iterator(folder_)) {
      if (entry.path().extension() == kRecordedCallEnding) files.push_back(entry.path());
    }
  } catch (const fs::filesystem_error& error) {
    throw std::runtime_error(folder_.string() + ": " + error.code().message());
  }
  std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
    const std::string first = a.filename().string(), second = b.filename().string();
    return std::pair(numberOf(first), first) < std::pair(numberOf(second), second);
  });
  for (const fs::path& file : files) {
    RecordedCall call = readRecordedCall(file);
    lastNumber_ = std::max(lastNumber_, numberOf(call.file));
    std::optional<std::string> reply;
    if (call.replySize <= kLargestKept && keptBytes_ < kMostKept) {
      reply = textOf(replyOf(call, folder_));
    }
    keep(std::move(call), std::move(reply));
  }
}

void Recordings::keep(RecordedCall call, std::optional<std::string> reply) {
  answers_[keyOf(call.path, call.digest)].calls.push_back(calls_.size());
  if (reply) keptBytes_ += reply->size();
  calls_.push_back({std::move(call), std::move(reply)});
}

std::optional<Answer> Recordings::find(std::string_view path, std::string_view request,
                                       AnswerOrder order) {
  const std::string key = keyOf(path, sha256(request));
  std::unique_lock lock(mutex_);
  const auto found = answers_.find(key);
  if (found == answers_.end()) return std::nullopt;
  Answers& answers = found->second;
  const bool isLast = answers.next + 1 >= answers.calls.size();
  const std::size_t index = order == AnswerOrder::kLast ? answers.calls.back()
                            : isLast                    ? answers.calls.back()
                                                        : answers.calls[answers.next++];
  const Kept& kept = calls_[index];
  RecordedCall call = kept.call;
  if (kept.reply) return Answer{std::move(call), ByteBuffer(*kept.reply)};
  lock.unlock();
  ByteBuffer reply = replyOf(call, folder_);
  return Answer{std::move(call), std::move(reply)};
}

void Recordings::add(RecordedCall call, std::string_view request, std::string_view reply) {
  call.digest = sha256(request);
  call.requestSize = request.size();
  call.replySize = reply.size();
  const std::string header = headerLineOf(call);
  call.headerSize = header.size();
  // Calls that come at the same time are recorded one after the other.
  const std::lock_guard lock(mutex_);
  call.file = fileNameOf(lastNumber_ + 1, call);
  writeWholeFile(folder_ / call.file, {header, request, reply});
  ++lastNumber_;
  std::optional<std::string> kept;
  if (reply.size() <= kLargestKept && keptBytes_ < kMostKept) kept = std::string(reply);
  keep(std::move(call), std::move(kept));
  isIndexOld_ = true;
  if (steady_clock::now() - indexTime_ >= kIndexPause) writeIndexLocked();
}

void Recordings::writeIndex() {
  const std::lock_guard lock(mutex_);
  if (isIndexOld_) writeIndexLocked();
}

void Recordings::writeIndexLocked() {
  std::string text = "{\"calls\":[";
  for (std::size_t i = 0; i < calls_.size(); ++i) {
    const RecordedCall& call = calls_[i].call;
    const nlohmann::ordered_json json = {
        {"file", call.file},     {"path", call.path},
        {"sha256", call.digest}, {"requestBytes", call.requestSize},
        {"status", call.status}, {"replyBytes", call.replySize},
    };
    text += i == 0 ? "\n" : ",\n";
    text += json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  }
  writeWholeFile(folder_ / "index.json", {text, "\n]}\n"});
  isIndexOld_ = false;
  indexTime_ = steady_clock::now();
}

std::map<std::string, std::size_t> Recordings::paths() const {
  const std::lock_guard lock(mutex_);
  std::map<std::string, std::size_t> counts;
  for (const Kept& kept : calls_) ++counts[kept.call.path];
  return counts;
}

std::vector<RecordedCall> Recordings::callsOf(std::string_view path) const {
  const std::lock_guard lock(mutex_);
  std::vector<RecordedCall> calls;
  for (const Kept& kept : calls_) {
    if (kept.call.path == path) calls.push_back(kept.call);
  }
  return calls;
}

}  // namespace hcy::server
