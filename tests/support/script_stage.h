// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>

#include "script_channel.h"
#include "script_journal.h"
#include "script_request.h"

namespace hcy::test {

// What the steps of one connection share while they run.
struct Stage {
  Channel channel;
  Journal& journal;
  std::size_t connection;
  std::optional<RawRequest> awaitingBody;  // the last request of which only the head was read
  std::size_t awaitingBodyAt = 0;          // its position in the journal
};

}  // namespace hcy::test
