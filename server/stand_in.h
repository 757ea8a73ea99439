// SPDX-License-Identifier: Apache-2.0
//
// Answers in the place of another server: from recorded calls, by asking that server, or both; and
// records what it answers.

#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "http_replies.h"
#include "options.h"
#include "recordings.h"
#include "upstream.h"

namespace hcy::server {

// All functions may be called by several threads at once.
class StandIn {
 public:
  // Throws std::runtime_error if a folder or the upstream server is of no use.
  explicit StandIn(const Options& options);

  // Whether it stands in for a server at all.
  bool isActive() const { return replayed_ != nullptr || upstream_.has_value(); }

  // A recorded reply, or that there is none; nothing if the upstream server is to be asked.
  std::optional<Reply> answerAtOnce(const HttpRequest& request) const;
  // Blocks until the upstream server has answered.
  Reply ask(const HttpRequest& request) const;

  // Of each path that is recorded how many calls there are.
  std::map<std::string, std::size_t> paths() const;

  // For the end of the server.
  void finish();

 private:
  Reply passOn(const HttpRequest& request) const;

  const AnswerOrder order_;
  std::optional<Upstream> upstream_;
  // Both are the same if what is missing is recorded where is looked for it.
  std::shared_ptr<Recordings> replayed_;
  std::shared_ptr<Recordings> recorded_;
};

}  // namespace hcy::server
