// SPDX-License-Identifier: Apache-2.0
//
// A client may ask for much with few bytes, and never read it. So what replies are larger than
// their requests account for is bounded, for each of them and for all that wait to be read.

#pragma once

#include <cstddef>

#include "budget.h"

namespace hcy::server {

// The longest reply that a request of that size may have.
std::size_t longestReplyTo(std::size_t requestSize);

// The room for a reply, kept until it has been read. Throws a FunctionError if the reply is too
// long, and an Overload if there is no room now.
BudgetShare takeReplyRoom(std::size_t replySize, std::size_t requestSize);

}  // namespace hcy::server
