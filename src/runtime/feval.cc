// SPDX-License-Identifier: Apache-2.0

#include "runtime/feval.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

#include "array/array_proxy_builder.h"
#include "array/array_to_send.h"
#include "hcy.client.VORTENParams.pb.h"
#include "runtime/client_context.h"
#include "runtime/reply_reader.h"
#include "wire/checked_size.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy {
namespace {

// The parameters of a call, a VORTEN_Params, in wire form. The inputs are only read.
class WrittenParams {
 public:
  WrittenParams(std::int32_t nargout, std::span<const hcyArray* const> inputs) {
    client::VORTEN_Params params;
    params.set_nargout(nargout);
    nargout_ = params.SerializeAsString();
    const SentInputs sent(inputs);
    size_ = nargout_.size();
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      const std::size_t size = inputs_.emplace_back(sent.input(i)).size();
      size_ += sizeof kInputTag + varintSize(size) + size;
    }
  }

  std::size_t size() const { return size_; }

  void write(std::uint8_t* out) const {
    out = std::copy(nargout_.begin(), nargout_.end(), out);
    for (const SentArray& input : inputs_) {
      *out++ = kInputTag;
      out = writeVarint(input.size(), out);
      out = input.write(out);
    }
  }

 private:
  static constexpr std::uint8_t kInputTag =
      lengthDelimitedTag(client::VORTEN_Params::kRhsFieldNumber);

  std::string nargout_;
  std::deque<SentArray> inputs_;
  std::size_t size_ = 0;
};

// The bytes of a request, in memory that comes from the context's spare block and goes back there.
class RequestBody {
 public:
  RequestBody(SpareBlock& spare, std::int32_t nargout, std::span<const hcyArray* const> inputs)
      : spare_(spare), block_(spare.take()) {
    const WrittenParams params(nargout, inputs);
    // The message library of the server holds sizes in signed 32 bits.
    size_ = static_cast<std::size_t>(checkedSize(params.size()));
    if (!block_.reserve(size_)) throw std::bad_alloc();
    params.write(reinterpret_cast<std::uint8_t*>(block_.data()));
  }
  RequestBody(const RequestBody&) = delete;
  RequestBody& operator=(const RequestBody&) = delete;
  ~RequestBody() { spare_.giveBack(std::move(block_)); }

  BodyBlock& memory() { return block_; }
  const char* data() const { return block_.data(); }
  std::size_t size() const { return size_; }

 private:
  SpareBlock& spare_;
  BodyBlock block_;
  std::size_t size_ = 0;
};

std::unique_ptr<Response> post(QXClient& client, const char* url, RequestBody&& body) {
  const std::unique_ptr<Request> request = client.createRequest(url);
  request->setBody(body.data(), body.size());
  request->lendMemory(body.memory());
  return request->perform();
}

// What counts of the body.
Bytes bodyOf(const Response& response, std::uint32_t responseSizeLimit) {
  // The message library holds sizes in signed 32 bits.
  const auto size = static_cast<std::uint32_t>(checkedSize(response.bodySize()));
  return {reinterpret_cast<const std::uint8_t*>(response.bodyData()),
          std::min(size, responseSizeLimit)};
}

// Stores the outputs for the caller, from the last to the first.
void storeOutputs(Reply& reply, std::int32_t nargout, hcyArray** outputs) {
  if (std::cmp_not_equal(reply.outputCount, nargout)) {
    throw std::runtime_error("Number of outputs received from VORTEN, " +
                             std::to_string(reply.outputCount) +
                             ", do not match the number of left hand side parameters, " +
                             std::to_string(nargout) + ", provided.");
  }
  for (std::size_t i = reply.outputs.size(); i-- > 0;) {
    outputs[i] = ArrayProxyBuilder::over(std::move(reply.outputs[i])).release();
  }
}

bool evaluate(hcyClientContext& context, const char* url, std::int32_t nargout, hcyArray** outputs,
              std::span<const hcyArray* const> inputs) {
  if (!context.client) throw std::logic_error("The context has no client.");
  const std::unique_ptr<Response> response =
      post(*context.client, url, RequestBody(context.spareRequest, nargout, inputs));
  if (response->statusCode() != 200) {
    context.setHttpError(*response);
    return false;
  }
  const Bytes body = bodyOf(*response, context.client->getConfig().getResponseSizeLimit());
  Reply reply =
      readReply(body, static_cast<std::size_t>(std::max(nargout, 0)), response->takeBody());
  if (reply.error) {
    context.setVortenError(std::move(*reply.error));
    return false;
  }
  storeOutputs(reply, nargout, outputs);
  return true;
}

}  // namespace

int feval(hcyClientContext* context, const char* url, std::int32_t nargout, hcyArray** outputs,
          std::int32_t nargin, const hcyArray* const* inputs) {
  const std::size_t count = inputs != nullptr && nargin > 0 ? static_cast<std::size_t>(nargin) : 0;
  try {
    return evaluate(*context, url, nargout, outputs, std::span(inputs, count)) ? 0 : 1;
  } catch (const std::exception& exception) {
    context->setGenericError(exception);
    return 1;
  }
}

}  // namespace hcy
