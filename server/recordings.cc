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

bool comesBefore(const std::string& one, const std::string& other) {
  return std::pair(numberOf(one), std::string_view(one)) <
         std::pair(numberOf(other), std::string_view(other));
}

void writeIfMissing(const fs::path& file, std::string_view text) {
  if (!fs::exists(file)) writeWholeFile(file, {text});
}

std::string textOf(const ByteBuffer& bytes) { return {bytes.data(), bytes.size()}; }

}  // namespace

Recordings::Recordings(fs::path folder, bool isMade) : folder_(std::move(folder)) {
  if (isMade) {
    std::error_code failed;
    fs::create_directories(folder_, failed);
    if (failed) throw std::runtime_error(folder_.string() + ": " + failed.message());
    lock_.emplace(folder_);
    const RecordingLock::Turn turn(*lock_);
    // Line ends in the bodies are not to be changed by a version control.
    writeIfMissing(folder_ / ".gitattributes", "*.hcycall -text\n");
    writeIfMissing(folder_ / ".gitignore", ".lock\n*.part\n");
  }
  for (const std::string& file : unknownFiles()) take(file);
}

Recordings::~Recordings() {
  try {
    writeIndex();
  } catch (const std::exception& error) {
    std::cerr << "hcy-local-server: " << error.what() << '\n';
  }
}

std::vector<std::string> Recordings::unknownFiles() const {
  std::vector<std::string> files;
  try {
    for (const auto& entry : fs::directory_iterator(folder_)) {
      std::string name = entry.path().filename().string();
      if (name.ends_with(kRecordedCallEnding) && !files_.contains(name)) {
        files.push_back(std::move(name));
      }
    }
  } catch (const fs::filesystem_error& error) {
    throw std::runtime_error(folder_.string() + ": " + error.code().message());
  }
  std::ranges::sort(files, comesBefore);
  return files;
}

void Recordings::take(const std::string& file) {
  RecordedCall call = readRecordedCall(folder_ / file);
  std::optional<std::string> reply;
  if (call.replySize <= kLargestKept && keptBytes_ < kMostKept) {
    reply = textOf(replyOf(call, folder_));
  }
  keep(std::move(call), std::move(reply));
}

// What another server records in this folder meanwhile.
void Recordings::takeFromOthers() {
  for (const std::string& file : unknownFiles()) {
    try {
      take(file);
    } catch (const std::runtime_error&) {
      // The next server that reads the folder will say so.
    }
  }
}

void Recordings::keep(RecordedCall call, std::optional<std::string> reply) {
  answers_[keyOf(call.path, call.digest)].calls.push_back(calls_.size());
  files_.insert(call.file);
  lastNumber_ = std::max(lastNumber_, numberOf(call.file));
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
  lock.unlock();
  return Answer{kept.call, kept.reply ? ByteBuffer(*kept.reply) : replyOf(kept.call, folder_)};
}

void Recordings::add(RecordedCall call, std::string_view request, std::string_view reply) {
  call.digest = sha256(request);
  call.requestSize = request.size();
  call.replySize = reply.size();
  call.fields = withoutSecrets(call.fields);
  const std::string header = headerLineOf(call);
  call.headerSize = header.size();
  // Calls that come at the same time are recorded one after the other.
  const std::lock_guard lock(mutex_);
  RecordingLock::Turn turn(*lock_);
  std::size_t number = std::max(lastNumber_, turn.lastNumber());
  do {
    call.file = fileNameOf(++number, call);
  } while (fs::exists(folder_ / call.file));
  turn.setLastNumber(number);
  writeWholeFile(folder_ / call.file, {header, request, reply});
  std::optional<std::string> kept;
  if (reply.size() <= kLargestKept && keptBytes_ < kMostKept) kept = std::string(reply);
  keep(std::move(call), std::move(kept));
  isIndexOld_ = true;
  if (steady_clock::now() - indexTime_ >= kIndexPause) writeIndexInTurn();
}

void Recordings::writeIndex() {
  const std::lock_guard lock(mutex_);
  if (!isIndexOld_) return;
  const RecordingLock::Turn turn(*lock_);
  writeIndexInTurn();
}

void Recordings::writeIndexInTurn() {
  takeFromOthers();
  std::vector<const RecordedCall*> calls;
  for (const Kept& kept : calls_) calls.push_back(&kept.call);
  std::ranges::sort(calls, comesBefore, &RecordedCall::file);
  std::string text = "{\"calls\":[";
  for (const RecordedCall* const one : calls) {
    const RecordedCall& call = *one;
    const nlohmann::ordered_json json = {
        {"file", call.file},     {"path", call.path},
        {"sha256", call.digest}, {"requestBytes", call.requestSize},
        {"status", call.status}, {"replyBytes", call.replySize},
    };
    text += one == calls.front() ? "\n" : ",\n";
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
