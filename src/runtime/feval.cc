// SPDX-License-Identifier: Apache-2.0

#include "runtime/feval.h"

#include <algorithm>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "array/array_handle.h"
#include "array/array_proxy_builder.h"
#include "hcy.client.VORTENParams.pb.h"
#include "runtime/client_context.h"
#include "runtime/reply_reader.h"
#include "wire/checked_size.h"

namespace hcy {
namespace {

using client::VORTEN_Params;

// The parameters of a call, over the very messages of its inputs. These are borrowed: they are
// taken out again before the parameters are destroyed.
class BorrowingParams {
 public:
  explicit BorrowingParams(std::span<const hcyArray* const> inputs) : inputs_(inputs) {}
  BorrowingParams(const BorrowingParams&) = delete;
  BorrowingParams& operator=(const BorrowingParams&) = delete;
  ~BorrowingParams() {
    while (!params_.rhs().empty()) params_.mutable_rhs()->UnsafeArenaReleaseLast();
    for (const hcyArray* input : inputs_) proxyOf(input).endReading();
  }

  const VORTEN_Params& borrow(std::int32_t nargout) {
    params_.set_nargout(nargout);
    for (const hcyArray* input : inputs_) proxyOf(input).beginReading();
    auto& rhs = *params_.mutable_rhs();
    rhs.Reserve(checkedSize(inputs_.size()));
    for (const hcyArray* input : inputs_) rhs.UnsafeArenaAddAllocated(&messageOf(input));
    return params_;
  }

 private:
  std::span<const hcyArray* const> inputs_;
  VORTEN_Params params_;
};

// The bytes of a request, in memory that comes from the context's spare block and goes back there.
class RequestBody {
 public:
  RequestBody(SpareBlock& spare, std::int32_t nargout, std::span<const hcyArray* const> inputs)
      : spare_(spare), block_(spare.take()) {
    BorrowingParams borrowing(inputs);
    const VORTEN_Params& params = borrowing.borrow(nargout);
    // The message library holds sizes in signed 32 bits.
    size_ = static_cast<std::size_t>(checkedSize(params.ByteSizeLong()));
    if (!block_.reserve(size_)) throw std::bad_alloc();
    params.SerializeWithCachedSizesToArray(reinterpret_cast<std::uint8_t*>(block_.data()));
  }
  RequestBody(const RequestBody&) = delete;
  RequestBody& operator=(const RequestBody&) = delete;
  ~RequestBody() { spare_.giveBack(std::move(block_)); }

  const char* data() const { return block_.data(); }
  std::size_t size() const { return size_; }

 private:
  SpareBlock& spare_;
  BodyBlock block_;
  std::size_t size_ = 0;
};

std::unique_ptr<Response> post(QXClient& client, const char* url, const RequestBody& body) {
  const std::unique_ptr<Request> request = client.createRequest(url);
  request->setBody(body.data(), body.size());
  return request->perform();
}

// What counts of the body.
Bytes bodyOf(const Response& response, std::uint32_t responseSizeLimit) {
  // The message library holds sizes in signed 32 bits.
  const auto size = static_cast<std::uint32_t>(checkedSize(response.bodySize()));
  return {reinterpret_cast<const std::uint8_t*>(response.bodyData()),
          std::min(size, responseSizeLimit)};
}

// Hands out the outputs, from the last to the first.
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
  Reply reply = readReply(bodyOf(*response, context.client->getConfig().getResponseSizeLimit()),
                          static_cast<std::size_t>(std::max(nargout, 0)));
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
