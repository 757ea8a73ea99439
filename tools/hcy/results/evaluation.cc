// SPDX-License-Identifier: Apache-2.0

#include "results/evaluation.h"

#include <curl/curl.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace hcy::tools {
namespace {

using hcyclient::Array;

// The last failure of a context.
class Failure {
 public:
  Failure(const hcyClientRuntime& runtime, const hcyclient::Context& context) : runtime_(runtime) {
    runtime_.getLastErrorInfo(context.get(), &info_);
  }
  Failure(const Failure&) = delete;
  Failure& operator=(const Failure&) = delete;
  ~Failure() { runtime_.destroyLastErrorInfo(&info_); }

  [[noreturn]] void raise() const {
    if (info_.kind == HCY_HTTP_ERROR) {
      const std::string_view line = info_.details.http.statusMessage;
      throw hcyclient::HttpError(info_.details.http.statusCode,
                                 std::string(line.substr(0, line.find_first_of("\r\n"))));
    }
    if (info_.kind != HCY_VORTEN_ERROR) {
      throw hcyclient::TransportError(info_.details.generic.details);
    }
    const auto& error = info_.details.vorten;
    std::vector<hcyclient::StackFrame> stack;
    for (std::size_t i = 0; error.stack != nullptr && i < error.stackDepth; ++i) {
      stack.push_back({error.stack[i].file, error.stack[i].name, error.stack[i].line});
    }
    throw hcyclient::FunctionError(error.message, error.identifier, std::move(stack));
  }

 private:
  const hcyClientRuntime& runtime_;
  hcyErrorInfo info_{};
};

}  // namespace

std::vector<Array> evaluate(const hcyClientRuntime& runtime, const hcyclient::Context& context,
                            const std::string& url, const std::vector<const hcyArray*>& inputs,
                            int nargout) {
  std::vector<hcyArray*> handles(static_cast<std::size_t>(nargout));
  std::vector<Array> outputs(handles.size());
  const int failed = runtime.feval(context.get(), url.c_str(), nargout, handles.data(),
                                   static_cast<std::int32_t>(inputs.size()), inputs.data());
  for (std::size_t i = 0; i < handles.size(); ++i) outputs[i] = Array::adopt(handles[i]);
  if (failed != 0) Failure(runtime, context).raise();
  return outputs;
}

std::vector<Array> evaluateWithin(double seconds, const hcyClientRuntime& runtime,
                                  const hcyclient::Context& context, const std::string& url,
                                  const std::vector<const hcyArray*>& inputs, int nargout) {
  const auto start = std::chrono::steady_clock::now();
  std::vector<Array> outputs = evaluate(runtime, context, url, inputs, nargout);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  if (seconds > 0 && taken.count() > seconds) {
    throw hcyclient::TransportError(curl_easy_strerror(CURLE_OPERATION_TIMEDOUT));
  }
  return outputs;
}

double fractionalLimit(std::optional<double> timeout) {
  return timeout && *timeout != std::trunc(*timeout) ? *timeout : 0;
}

std::vector<const hcyArray*> handlesOf(const std::vector<Array>& arrays) {
  std::vector<const hcyArray*> handles;
  handles.reserve(arrays.size());
  for (const Array& array : arrays) handles.push_back(array.get());
  return handles;
}

}  // namespace hcy::tools
