// SPDX-License-Identifier: Apache-2.0

#include "runtime/reply_reader.h"

#include <google/protobuf/io/coded_stream.h>

#include <algorithm>
#include <utility>

#include "hcy.client.VORTENResult.pb.h"
#include "wire/protobuf_version.h"
#include "wire/read_message.h"
#include "wire/wire_fields.h"

namespace hcy {
namespace {

using client::VORTEN_Error;
using client::VORTEN_Result;
using google::protobuf::io::CodedInputStream;

constexpr std::uint32_t kOutput = lengthDelimitedTag(VORTEN_Result::kLhsFieldNumber);
constexpr std::uint32_t kError = lengthDelimitedTag(VORTEN_Result::kErrorFieldNumber);

class ReplyReader {
 public:
  ReplyReader(Bytes body, std::size_t wantedOutputs, std::shared_ptr<void> owner)
      : body_(body),
        input_(body.data(), static_cast<int>(body.size())),
        wantedOutputs_(wantedOutputs),
        owner_(std::move(owner)) {}

  Reply read() {
    while (readField()) {
    }
    return std::move(reply_);
  }

 private:
  bool readField() {
    switch (const std::uint32_t tag = input_.ReadTag()) {
      case 0:
        return false;
      case kOutput:
        return readMessage([this](Bytes bytes) { return readOutput(bytes); });
      case kError:
        return readMessage([this](Bytes bytes) { return readError(bytes); });
      default:
        return skipField(input_, tag);
    }
  }

  // Of a message that is longer than the body, the beginning; one without a length is empty.
  template <class Read>
  bool readMessage(Read read) {
    int length = 0;
    const bool hasLength = input_.ReadVarintSizeAsInt(&length);
    if (!hasLength) length = 0;
    const Bytes rest = body_.subspan(static_cast<std::size_t>(input_.CurrentPosition()));
    return read(rest.first(std::min(rest.size(), static_cast<std::size_t>(length)))) && hasLength &&
           input_.Skip(length);
  }

  bool readError(Bytes bytes) {
    if (!reply_.error) reply_.error.emplace();
    return mergePart(*reply_.error, bytes);
  }

  bool readOutput(Bytes bytes) {
    ++reply_.outputCount;
    if (reply_.outputs.size() == wantedOutputs_) {
      ReceivedArray unwanted;
      return readReceived(unwanted, bytes);
    }
    const bool isMost = bytes.size() >= body_.size() / 4 * 3;
    return readReceived(reply_.outputs.emplace_back(), bytes, isMost ? owner_ : nullptr);
  }

  Bytes body_;
  CodedInputStream input_;
  std::size_t wantedOutputs_;
  std::shared_ptr<void> owner_;
  Reply reply_;
};

}  // namespace

Reply readReply(Bytes body, std::size_t wantedOutputs, const std::shared_ptr<void>& owner) {
  return ReplyReader(body, wantedOutputs, owner).read();
}

}  // namespace hcy
