// SPDX-License-Identifier: Apache-2.0

#include "runtime/feval.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

#include "array/array_handle.h"
#include "array/array_proxy_builder.h"
#include "hcy.client.VORTENParams.pb.h"
#include "hcy.client.VORTENResult.pb.h"
#include "runtime/client_context.h"
#include "wire/checked_size.h"

namespace hcy {
namespace {

using client::VORTEN_Params;
using client::VORTEN_Result;

// The parameters of a call, over the very messages of its inputs. These are borrowed: they are
// taken out again before the parameters are destroyed.
class BorrowingParams {
 public:
  explicit BorrowingParams(std::span<const hcyArray* const> inputs) : inputs_(inputs) {}
  BorrowingParams(const BorrowingParams&) = delete;
  BorrowingParams& operator=(const BorrowingParams&) = delete;
  ~BorrowingParams() {
    while (!params_.rhs().empty()) params_.mutable_rhs()->UnsafeArenaReleaseLast();
    for (const hcyArray* input : inputs_) proxyOf(input).endSending();
  }

  const VORTEN_Params& borrow(std::int32_t nargout) {
    params_.set_nargout(nargout);
    for (const hcyArray* input : inputs_) proxyOf(input).beginSending();
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

// What could be read of the body, up to the limit; the checks of the call judge it. The message
// library would report a body over its own limit on standard error, so the body is cut here.
VORTEN_Result parsed(const Response& response, std::uint32_t responseSizeLimit) {
  const std::int32_t size = checkedSize(response.bodySize());
  const auto limit = static_cast<std::int32_t>(
      std::min<std::uint32_t>(responseSizeLimit, std::numeric_limits<std::int32_t>::max()));
  VORTEN_Result result;
  static_cast<void>(result.ParsePartialFromArray(response.bodyData(), std::min(size, limit)));
  return result;
}

// Hands out the entries, from the last to the first. Each entry is ours alone, so the array takes
// it over instead of copying it.
void storeOutputs(VORTEN_Result& result, std::int32_t nargout, hcyArray** outputs) {
  auto& lhs = *result.mutable_lhs();
  if (lhs.size() != nargout) {
    throw std::runtime_error("Number of outputs received from VORTEN, " +
                             std::to_string(lhs.size()) +
                             ", do not match the number of left hand side parameters, " +
                             std::to_string(nargout) + ", provided.");
  }
  for (std::int32_t i = nargout - 1; i >= 0; --i) {
    std::unique_ptr<VORTEN_Array> entry(lhs.ReleaseLast());
    outputs[i] = ArrayProxyBuilder::over(std::move(entry)).release();
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
  VORTEN_Result result = parsed(*response, context.client->getConfig().getResponseSizeLimit());
  if (result.has_error()) {
    context.setVortenError(std::move(*result.mutable_error()));
    return false;
  }
  storeOutputs(result, nargout, outputs);
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
