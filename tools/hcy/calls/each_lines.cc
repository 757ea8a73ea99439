// SPDX-License-Identifier: Apache-2.0

#include "calls/each_lines.h"

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <thread>
#include <utility>

#include "output/terminal.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// Counts the lines of a regular file, which can be read twice.
std::uint64_t linesOf(std::FILE* stream) {
  struct stat state {};
  if (::fstat(::fileno(stream), &state) != 0 || !S_ISREG(state.st_mode)) return 0;
  std::uint64_t count = 0;
  bool hasLine = false;
  for (int c = std::getc(stream); c != EOF; c = std::getc(stream)) {
    if (c == '\n') {
      count += hasLine ? 1U : 0U;
      hasLine = false;
    } else if (c != ' ' && c != '\t' && c != '\r') {
      hasLine = true;
    }
  }
  std::rewind(stream);
  return count + (hasLine ? 1U : 0U);
}

std::size_t sizeOf(const Answer& answer) { return answer.printed.size() + answer.complaint.size(); }

}  // namespace

LineSource::LineSource(const std::string& file)
    : name_(file == "-" ? "standard input" : file),
      stream_(file == "-" ? stdin : std::fopen(expandedHome(file).c_str(), "rb")) {
  if (stream_ == nullptr) refuseFile(name_);
  if (stream_ != stdin) count_ = linesOf(stream_);
}

LineSource::~LineSource() {
  std::free(buffer_);
  if (stream_ != stdin) static_cast<void>(std::fclose(stream_));
}

std::optional<Line> LineSource::next() {
  const std::lock_guard lock(mutex_);
  for (;;) {
    errno = 0;
    const ssize_t length = ::getline(&buffer_, &room_, stream_);
    if (length < 0) {
      if (std::ferror(stream_) != 0) refuseFile(name_);
      return std::nullopt;
    }
    ++number_;
    std::string_view text(buffer_, static_cast<std::size_t>(length));
    if (isBlank(text)) continue;
    if (text.ends_with('\n')) text.remove_suffix(1);
    return Line{number_, index_++, std::string(text)};
  }
}

AnswerSink::AnswerSink(std::uint64_t count, Lead most) : most_(most), progress_(count) {}

bool AnswerSink::awaitRoom(std::uint64_t index) {
  std::unique_lock lock(mutex_);
  moved_.wait(lock, [&] {
    const std::uint64_t lead = index - counts_.calls;
    return reason_ || lead == 0 || (lead < most_.answers && waitingBytes_ <= most_.bytes);
  });
  return !reason_;
}

void AnswerSink::put(std::uint64_t index, Answer answer) {
  const std::lock_guard lock(mutex_);
  waitingBytes_ += sizeOf(answer);
  waiting_.emplace(index, std::move(answer));
  if (index != counts_.calls || reason_) return;
  try {
    printReady();
  } catch (...) {
    reason_ = std::current_exception();
  }
  moved_.notify_all();
}

void AnswerSink::printReady() {
  std::string text;
  std::string complaints;
  for (auto next = waiting_.begin(); next != waiting_.end() && next->first == counts_.calls;
       next = waiting_.erase(next), ++counts_.calls) {
    text += next->second.printed;
    complaints += next->second.complaint;
    waitingBytes_ -= sizeOf(next->second);
    if (next->second.failure == 0) continue;
    ++counts_.failed;
    if (counts_.firstFailure == 0) counts_.firstFailure = next->second.failure;
  }
  printText(text);
  if (!complaints.empty()) {
    progress_.clear();
    std::cerr << complaints;
  }
  progress_.show(counts_.calls);
}

void AnswerSink::showInterrupted() {
  // A thread can hold the lock for long if nobody reads what it prints.
  std::unique_lock lock(mutex_, std::defer_lock);
  for (int i = 0; i < 100 && !lock.try_lock(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  if (!lock.owns_lock()) return;
  progress_.clear();
  std::cerr << "hcy: interrupted after " << counts_.calls
            << (counts_.calls == 1 ? " call" : " calls");
  if (counts_.failed > 0) std::cerr << ", " << counts_.failed << " of which failed";
  std::cerr << std::endl;
  // Nothing else is printed before the end.
  static_cast<void>(lock.release());
}

void AnswerSink::fail(std::exception_ptr reason) {
  const std::lock_guard lock(mutex_);
  if (!reason_) reason_ = std::move(reason);
  moved_.notify_all();
}

AnswerCounts AnswerSink::finish() {
  progress_.clear();
  if (reason_) std::rethrow_exception(reason_);
  return counts_;
}

}  // namespace hcy::tools
