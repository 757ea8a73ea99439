// SPDX-License-Identifier: Apache-2.0
//
// Lines that several threads take and answer, and answers in the order of the lines.

#pragma once

#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "output/progress_bar.h"

namespace hcy::tools {

struct Line {
  std::uint64_t number = 0;  // in the file, from 1
  std::uint64_t index = 0;   // among those that are not empty, from 0
  std::string text;
};

// All of it by any thread.
class LineSource {
 public:
  // From a file, or from the standard input for "-". Throws BadInput.
  explicit LineSource(const std::string& file);
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;
  ~LineSource();

  // The next line that is not empty. Throws BadInput if it cannot be read.
  std::optional<Line> next();

  // How many lines there are, or 0 if that is not known before their end.
  std::uint64_t count() const { return count_; }

 private:
  std::string name_;
  std::FILE* stream_;
  std::uint64_t count_ = 0;
  std::mutex mutex_;  // guards what is below
  char* buffer_ = nullptr;
  std::size_t room_ = 0;
  std::uint64_t number_ = 0;
  std::uint64_t index_ = 0;
};

struct Answer {
  std::string printed;    // on the standard output
  std::string complaint;  // on standard error, of a failure
  int failure = 0;        // its exit status
};

// Of the answers that are printed.
struct AnswerCounts {
  std::uint64_t calls = 0, failed = 0;
  int firstFailure = 0;  // its exit status
};

// All of it by any thread.
class AnswerSink {
 public:
  // `ahead` answers are kept at the most that others before them are missing for.
  AnswerSink(std::uint64_t count, std::uint64_t ahead);

  // Waits until the answer of this line may be kept; false if there is no use in it any more.
  bool awaitRoom(std::uint64_t index);

  // Prints it, if all before it are printed, and those after it that were waiting.
  void put(std::uint64_t index, Answer answer);

  // Makes awaitRoom() return false; the first one is the reason.
  void fail(std::exception_ptr reason);

  // After the threads. Throws the reason if there is one.
  AnswerCounts finish();

 private:
  void printReady();

  const std::uint64_t ahead_;
  std::mutex mutex_;  // guards what is below
  std::condition_variable moved_;
  std::map<std::uint64_t, Answer> waiting_;
  AnswerCounts counts_;
  std::exception_ptr reason_;
  CallProgress progress_;
};

}  // namespace hcy::tools
