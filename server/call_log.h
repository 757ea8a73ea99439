// SPDX-License-Identifier: Apache-2.0
//
// A line for each call that was answered.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "http_replies.h"
#include "options.h"

namespace hcy::server {

// What is known of a call when it begins.
struct LoggedCall {
  std::chrono::system_clock::time_point time;
  std::chrono::steady_clock::time_point begin;
  std::string path;
  std::size_t requestSize = 0;
  // The body of a call, if its values are to be shown.
  std::optional<std::string> request;
};

// All functions may be called by several threads at once.
class CallLog {
 public:
  // Appends to the file; throws std::runtime_error if it cannot be opened.
  explicit CallLog(const LogOptions& options);

  // Nothing if there is no log.
  std::optional<LoggedCall> begin(const HttpRequest& request) const;
  // For a reply that is ready to be sent.
  void end(const LoggedCall& call, const Reply& reply);

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const {
      if (file != stderr) static_cast<void>(std::fclose(file));
    }
  };

  const LogOptions options_;
  std::mutex mutex_;
  std::unique_ptr<std::FILE, CloseFile> file_;
};

}  // namespace hcy::server
