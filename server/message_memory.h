// SPDX-License-Identifier: Apache-2.0
//
// Memory for the messages of one call. Two bytes of a request can stand for an array that takes
// hundreds, so what all calls together may take is bounded: at the bound an allocation throws
// std::bad_alloc, and the one call fails instead of the system ending the program.

#pragma once

#include <google/protobuf/arena.h>

#include <cstddef>
#include <cstdint>

namespace hcy::server {

// For all calls together; set before the first one.
void setMessageMemoryLimit(std::size_t bytes);

// Room for a few of the longest bodies, but never more than half of what the machine has.
std::size_t messageMemoryLimitFor(std::uint64_t maxBody);

// The options of an arena whose blocks count against the limit.
google::protobuf::ArenaOptions boundedArena();

}  // namespace hcy::server
