// SPDX-License-Identifier: Apache-2.0

#include "reply_room.h"

#include <algorithm>
#include <limits>
#include <string>

#include "function_error.h"
#include "overload.h"

namespace hcy::server {
namespace {

constexpr std::size_t kLongestMessage = std::numeric_limits<int>::max();
// What a reply may have without being counted: so much, and some times the size of its request.
constexpr std::size_t kAlways = std::size_t{64} << 10;
constexpr std::size_t kTimesRequest = 4;
// What may be counted for one reply, and for all.
constexpr std::size_t kMostForOne = std::size_t{64} << 20;
constexpr std::size_t kMostForAll = std::size_t{128} << 20;

std::size_t uncounted(std::size_t requestSize) { return kAlways + kTimesRequest * requestSize; }

}  // namespace

std::size_t longestReplyTo(std::size_t requestSize) {
  return std::min(kLongestMessage, uncounted(requestSize) + kMostForOne);
}

BudgetShare takeReplyRoom(std::size_t replySize, std::size_t requestSize) {
  static Budget rooms(kMostForAll);
  const std::size_t longest = longestReplyTo(requestSize);
  if (replySize > longest) {
    throw FunctionError(kResultSize, "The outputs take more than " + std::to_string(longest) +
                                         " bytes, the most for a request of this size.");
  }
  BudgetShare room(rooms);
  const std::size_t free = uncounted(requestSize);
  if (replySize > free && !room.growTo(replySize - free)) {
    throw Overload("Too many replies wait for their clients to read them.");
  }
  return room;
}

}  // namespace hcy::server
