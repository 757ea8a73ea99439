// SPDX-License-Identifier: Apache-2.0

#include "bodies/codec.h"

#include <chrono>
#include <limits>

#include "bodies/loopback.h"
#include "calls/evaluation.h"

namespace hcy::tools {

std::string requestBody(const hcyclient::Library& library,
                        const std::vector<hcyclient::Array>& inputs, int nargout) {
  Loopback loopback{std::string()};
  const hcyclient::Context context{hcyclient::Config(library)};
  try {
    evaluate(*library.runtime(), context, loopback.url(), handlesOf(inputs), nargout);
  } catch (const hcyclient::CallError&) {
    // The reply has no outputs. An empty body is one for no inputs and no outputs alone.
    std::string body = loopback.takeBody();
    if (body.empty() && !inputs.empty()) throw;
    return body;
  }
  return loopback.takeBody();
}

std::vector<hcyclient::Array> outputsOf(const hcyclient::Library& library, const std::string& reply,
                                        int count) {
  const Loopback loopback(reply);
  hcyclient::Config config(library);
  config.setTimeout(std::chrono::seconds(0))
      .setResponseSizeLimit(std::numeric_limits<std::uint32_t>::max());
  const hcyclient::Context context(config);
  return evaluate(*library.runtime(), context, loopback.url(), {}, count);
}

}  // namespace hcy::tools
