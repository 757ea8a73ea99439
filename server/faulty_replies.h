// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>

#include "fault_schedule.h"
#include "http_replies.h"

namespace hcy::server {

// The reply that a fault puts in the place of that of the function; nothing if the function is to
// be called.
std::optional<Reply> replyInstead(const ScheduledFault& scheduled, const HttpRequest& request);

// Gives the reply of the function what the fault does to it.
void disturb(Reply& reply, const ScheduledFault& scheduled);

}  // namespace hcy::server
