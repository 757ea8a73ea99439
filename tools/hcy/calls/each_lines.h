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

#include "calls/interrupt_watch.h"
#include "output/progress_bar.h"

namespace hcy::tools {

struct Line {
  std::uint64_t number = 0;  // in the file, from 1
  std::uint64_t index = 0;   // among those that are not empty, from 0
  std::string text;
};

// All functions can be called by any thread.
class LineSource {
 public:
  // From a file, or from the standard input for "-". Throws BadInput.
  explicit LineSource(const std::string& file);
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;
  ~LineSource();

  // The next line that is not empty. Throws BadInput if it cannot be read.
  std::optional<Line> next();

  // The number of lines that are not empty, or 0 if it is not known before the end.
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

// How far answers may be ahead of the next one to be printed.
struct Lead {
  std::uint64_t answers;  // their number
  std::size_t bytes;      // if they are larger in all, no call is begun but that for the next one
};

// All functions can be called by any thread. If the interrupt key ends the process, the number of
// calls is shown in place of the progress bar.
class AnswerSink {
 public:
  // Must be created before the threads.
  AnswerSink(std::uint64_t count, Lead most);

  // Waits until there is room for the answer to this line; false if the program is to stop.
  bool awaitRoom(std::uint64_t index);

  // Prints the answer if all before it are printed, and then those that waited for it.
  void put(std::uint64_t index, Answer answer);

  // Makes awaitRoom() return false. Only the first reason counts.
  void fail(std::exception_ptr reason);

  // To be called after the threads have ended. Throws the reason if there is one.
  AnswerCounts finish();

 private:
  void printReady();
  void showInterrupted();

  const Lead most_;
  std::mutex mutex_;  // guards what is below
  std::condition_variable moved_;
  std::map<std::uint64_t, Answer> waiting_;
  std::size_t waitingBytes_ = 0;
  AnswerCounts counts_;
  std::exception_ptr reason_;
  CallProgress progress_;
  InterruptWatch watch_{[this] { showInterrupted(); }};
};

}  // namespace hcy::tools
