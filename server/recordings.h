// SPDX-License-Identifier: Apache-2.0
//
// A folder of recorded calls: found again by what was asked, added to by recording.

#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "byte_buffer.h"
#include "recorded_call.h"
#include "recording_lock.h"

namespace hcy::server {

// Which of several answers to one request is given.
enum class AnswerOrder {
  kRecorded,  // one after the other; the last one again and again
  kLast,
};

// The call lives as long as the recordings.
struct Answer {
  const RecordedCall& call;
  ByteBuffer reply;
};

// All functions may be called by several threads at once.
class Recordings {
 public:
  // Reads what the folder holds; makes it if `isMade`. Throws std::runtime_error.
  Recordings(std::filesystem::path folder, bool isMade);
  ~Recordings();
  Recordings(const Recordings&) = delete;
  Recordings& operator=(const Recordings&) = delete;

  // Nothing if there is none. Throws std::bad_alloc, and std::runtime_error if the file is gone.
  std::optional<Answer> find(std::string_view path, std::string_view request, AnswerOrder order);

  // Keeps the call in a file of its own. What `call` says of file, digest and sizes is not looked
  // at. Throws std::runtime_error.
  void add(RecordedCall call, std::string_view request, std::string_view reply);

  // Brings the index up to date.
  void writeIndex();

  // Of each path how many calls there are.
  std::map<std::string, std::size_t> paths() const;
  // A copy of what is recorded of a path, in order.
  std::vector<RecordedCall> callsOf(std::string_view path) const;
  const std::filesystem::path& folder() const { return folder_; }

 private:
  struct Kept {
    RecordedCall call;
    // Of a small one; those that are not kept are read from the file.
    std::optional<std::string> reply;
  };
  struct Answers {
    std::vector<std::size_t> calls;
    std::size_t next = 0;
  };

  std::vector<std::string> unknownFiles() const;
  void take(const std::string& file);
  void takeFromOthers();
  void keep(RecordedCall call, std::optional<std::string> reply);
  void writeIndexInTurn();

  const std::filesystem::path folder_;
  // Of recordings that are added to.
  std::optional<RecordingLock> lock_;
  mutable std::mutex mutex_;
  // None is ever moved or removed.
  std::deque<Kept> calls_;
  std::unordered_set<std::string> files_;
  // By path and digest.
  std::unordered_map<std::string, Answers> answers_;
  std::size_t keptBytes_ = 0;
  std::size_t lastNumber_ = 0;
  bool isIndexOld_ = false;
  std::chrono::steady_clock::time_point indexTime_;
};

}  // namespace hcy::server
