// SPDX-License-Identifier: Apache-2.0

#include "bodies/codec.h"

#include <chrono>

#include "bodies/loopback.h"
#include "results/evaluation.h"

namespace hcy::tools {

EncodedRequest requestOf(const hcyclient::Library& library,
                         const std::vector<hcyclient::Array>& inputs, int nargout) {
  Loopback loopback{std::string()};
  const hcyclient::Context context{hcyclient::Config(library)};
  try {
    evaluate(*library.runtime(), context, loopback.url(), handlesOf(inputs), nargout);
  } catch (const hcyclient::CallError&) {
    // The reply has no outputs, so this is not a failure if the request arrived.
    EncodedRequest request = loopback.takeRequest();
    if (request.headers.empty()) throw;
    return request;
  }
  return loopback.takeRequest();
}

std::vector<hcyclient::Array> outputsOf(const hcyclient::Library& library, const std::string& reply,
                                        int count, std::uint32_t limit) {
  const Loopback loopback(reply);
  hcyclient::Config config(library);
  config.setTimeout(std::chrono::seconds(0)).setResponseSizeLimit(limit);
  const hcyclient::Context context(config);
  return evaluate(*library.runtime(), context, loopback.url(), {}, count);
}

}  // namespace hcy::tools
