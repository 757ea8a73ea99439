// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "array/array_proxy_builder.h"
#include "hcy.client.VORTENError.pb.h"

namespace hcy {

// The body of a reply, a VORTEN_Result.
struct Reply {
  std::optional<client::VORTEN_Error> error;
  std::size_t outputCount = 0;         // all that there are
  std::vector<ReceivedArray> outputs;  // the first ones
};

// Reads a body as far as it can be read. Outputs beyond the wanted number are only counted. Each
// gets memory of its own; but if there is an owner of the body's memory, which must be writable, an
// output that is most of the body stays there.
Reply readReply(Bytes body, std::size_t wantedOutputs,
                const std::shared_ptr<void>& owner = nullptr);

}  // namespace hcy
