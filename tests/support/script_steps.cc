// SPDX-License-Identifier: Apache-2.0
#include "script_steps.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "script_stage.h"

namespace hcy::test {
namespace {

constexpr std::size_t kBlockSize = 65536;

RawRequest receiveHead(Stage& stage) {
  return {receiveRequestHead(stage.channel), {}, stage.connection};
}

void receiveWhole(Stage& stage) {
  RawRequest request = receiveHead(stage);
  request.body = receiveRequestBody(stage.channel, request);
  stage.journal.addRequest(std::move(request));
}

// Whole repetitions of the pattern, so that blocks follow one another without a seam.
std::string blockOf(const std::string& pattern) {
  if (pattern.empty()) throw std::invalid_argument("sendRepeated: the pattern is empty");
  std::string block = pattern;
  while (block.size() < kBlockSize) block += pattern;
  return block;
}

}  // namespace

Step readRequest() { return {"readRequest", receiveWhole}; }

Step readRequestHead() {
  return {"readRequestHead", [](Stage& stage) {
            stage.awaitingBody = receiveHead(stage);
            stage.awaitingBodyAt = stage.journal.addRequest(*stage.awaitingBody);
          }};
}

Step readRequestBody() {
  return {"readRequestBody", [](Stage& stage) {
            if (!stage.awaitingBody) throw ScriptFailure("no head was read before");
            stage.journal.setBody(stage.awaitingBodyAt,
                                  receiveRequestBody(stage.channel, *stage.awaitingBody));
            stage.awaitingBody.reset();
          }};
}

Step send(std::string bytes) {
  return {"send", [bytes = std::move(bytes)](Stage& stage) { stage.channel.send(bytes); }};
}

Step drip(std::string bytes, std::size_t pieceSize, std::chrono::milliseconds interval) {
  if (pieceSize == 0) throw std::invalid_argument("drip: the pieces are empty");
  return {"drip", [bytes = std::move(bytes), pieceSize, interval](Stage& stage) {
            stage.channel.drip(bytes, pieceSize, interval);
          }};
}

Step sendRepeated(const std::string& pattern, std::size_t total) {
  return {"sendRepeated", [block = blockOf(pattern), total](Stage& stage) {
            for (std::size_t left = total; left > 0; left -= std::min(left, block.size())) {
              stage.channel.send(std::string_view(block).substr(0, left));
            }
          }};
}

Step replyToEach(std::string bytes) {
  return {"replyToEach", [bytes = std::move(bytes)](Stage& stage) {
            while (!stage.channel.atEnd()) {
              receiveWhole(stage);
              stage.channel.send(bytes);
            }
          }};
}

Step stall() {
  return {"stall", [](Stage& stage) { stage.channel.stall(); }};
}

Step waitForClose() {
  return {"waitForClose", [](Stage& stage) { stage.channel.discardUntilClosed(); }};
}

Step halfClose() {
  return {"halfClose", [](Stage& stage) { stage.channel.halfClose(); }};
}

Step close() {
  return {"close", [](Stage& stage) { stage.channel.close(); }};
}

Step reset() {
  return {"reset", [](Stage& stage) { stage.channel.reset(); }};
}

std::string httpReply(int status, std::string_view reason, std::string_view body,
                      const std::vector<std::string>& extraHeaders) {
  std::string reply = "HTTP/1.1 " + std::to_string(status) + " ";
  reply.append(reason).append("\r\nContent-Length: ").append(std::to_string(body.size()));
  for (const std::string& header : extraHeaders) reply.append("\r\n").append(header);
  return reply.append("\r\n\r\n").append(body);
}

}  // namespace hcy::test
