// SPDX-License-Identifier: Apache-2.0
//
// What goes between the server and a worker, as work_queue.h tells. Arrays are not looked into.

#pragma once

#include <cstdint>
#include <string_view>

#include "byte_buffer.h"
#include "request_fields.h"

namespace hcy::server {

// Which call a worker answers; 0 for none. Throws FunctionError.
std::uint64_t ticketIn(const RequestFields& work);

// What a worker has computed: the VORTEN_Result of the call that it answers. Throws FunctionError.
ByteBuffer resultIn(const RequestFields& work, int nargout);

// A call for a worker, as a VORTEN_Result with one output.
ByteBuffer messageOfCall(std::uint64_t ticket, std::string_view function,
                         const RequestFields& call);
// That there is no call.
ByteBuffer messageOfNoCall();

}  // namespace hcy::server
