// SPDX-License-Identifier: Apache-2.0

#include "nearest_call.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>
#include <tuple>
#include <vector>

#include "call_values.h"

namespace hcy::server {
namespace {

// Enough to find the one that was meant, and few enough to be compared while a client waits.
constexpr std::size_t kMostCompared = 500;
constexpr std::size_t kLargestCompared = std::size_t{1} << 20;
constexpr std::size_t kMostBytesCompared = std::size_t{8} << 20;
constexpr std::size_t kMostPathsListed = 20;

// How much two requests have in common; more is nearer.
struct Likeness {
  bool isNargoutEqual = false;
  bool isCountEqual = false;
  std::size_t equalInputs = 0;
  std::size_t equalCharacters = 0;  // of the first input that differs

  auto tied() const { return std::tie(equalInputs, isCountEqual, isNargoutEqual, equalCharacters); }
};

std::size_t commonLength(std::string_view a, std::string_view b) {
  return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first -
                                  a.begin());
}

Likeness likenessOf(const ShownRequest& a, const ShownRequest& b) {
  Likeness likeness{a.nargout == b.nargout, a.inputs.size() == b.inputs.size()};
  bool differs = false;
  for (std::size_t i = 0; i < std::min(a.inputs.size(), b.inputs.size()); ++i) {
    if (a.inputs[i] == b.inputs[i]) {
      ++likeness.equalInputs;
    } else if (!differs) {
      differs = true;
      likeness.equalCharacters = commonLength(a.inputs[i], b.inputs[i]);
    }
  }
  return likeness;
}

// What stands around a place of a long text.
std::string excerpt(std::string_view text, std::size_t place) {
  constexpr std::size_t kBefore = 20, kAfter = 40;
  const std::size_t begin = place > kBefore ? place - kBefore : 0;
  const std::size_t end = std::min(text.size(), place + kAfter);
  return (begin > 0 ? "..." : "") + std::string(text.substr(begin, end - begin)) +
         (end < text.size() ? "..." : "");
}

std::string differenceOf(const ShownRequest& recorded, const ShownRequest& sent) {
  std::string text;
  if (recorded.nargout != sent.nargout) {
    text += "  nargout: recorded " + std::to_string(recorded.nargout) + ", sent " +
            std::to_string(sent.nargout) + "\n";
  }
  if (recorded.inputs.size() != sent.inputs.size()) {
    text += "  inputs: recorded " + std::to_string(recorded.inputs.size()) + ", sent " +
            std::to_string(sent.inputs.size()) + "\n";
  }
  for (std::size_t i = 0; i < std::min(recorded.inputs.size(), sent.inputs.size()); ++i) {
    const std::string &before = recorded.inputs[i], &now = sent.inputs[i];
    if (before == now) continue;
    const std::size_t place = commonLength(before, now);
    text += "  input " + std::to_string(i + 1) + ": recorded " + excerpt(before, place) +
            "\n           sent     " + excerpt(now, place) + "\n";
    break;
  }
  return text.empty() ? "  only in their bytes\n" : text;
}

std::optional<ShownRequest> requestAsShown(const RecordedCall& call,
                                           const Recordings& recordings) try {
  const ByteBuffer body = requestOf(call, recordings.folder());
  return showRequest({body.data(), body.size()});
} catch (const std::exception&) {
  return std::nullopt;
}

std::string listOfPaths(const Recordings& recordings) {
  const auto paths = recordings.paths();
  if (paths.empty()) return "Nothing has been recorded.\n";
  std::string text = "There are recorded calls of:\n";
  std::size_t listed = 0;
  for (const auto& [path, count] : paths) {
    if (listed++ == kMostPathsListed) return text + "  and others\n";
    text += "  " + path + " (" + std::to_string(count) + ")\n";
  }
  return text;
}

}  // namespace

std::string explainMiss(const Recordings& recordings, std::string_view path,
                        std::string_view request) {
  const std::string beginning =
      "No answer is recorded for this call of " + std::string(path) + ".\n";
  const std::vector<RecordedCall> calls = recordings.callsOf(path);
  if (calls.empty()) return beginning + listOfPaths(recordings);
  const auto sent = request.size() <= kLargestCompared ? showRequest(request) : std::nullopt;
  if (!sent) {
    return beginning + "The request is too large, or too broken, to compare it with the " +
           std::to_string(calls.size()) + " recorded ones.\n";
  }
  std::size_t bytesLeft = kMostBytesCompared;
  const RecordedCall* nearest = nullptr;
  std::optional<ShownRequest> nearestRequest;
  Likeness most;
  for (std::size_t i = 0; i < std::min(calls.size(), kMostCompared); ++i) {
    if (calls[i].requestSize > std::min(kLargestCompared, bytesLeft)) continue;
    bytesLeft -= calls[i].requestSize;
    auto recorded = requestAsShown(calls[i], recordings);
    if (!recorded) continue;
    const Likeness likeness = likenessOf(*recorded, *sent);
    if (nearest != nullptr && likeness.tied() <= most.tied()) continue;
    most = likeness;
    nearest = &calls[i];
    nearestRequest = std::move(recorded);
  }
  if (nearest == nullptr) {
    return beginning + "None of the recorded requests can be compared with it.\n";
  }
  return beginning + "The nearest recorded request, " + nearest->file + ", differs in:\n" +
         differenceOf(*nearestRequest, *sent);
}

}  // namespace hcy::server
