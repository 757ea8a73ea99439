// SPDX-License-Identifier: Apache-2.0
//
// One connection: requests are read and answered in turn until a side ends it. A session keeps
// itself alive while it waits for something, so there is nothing to hold on to.

#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <cstdint>

namespace hcy::server {

// The socket's executor is a strand.
void startSession(boost::asio::ip::tcp::socket socket, std::uint64_t maxBody);
void startTlsSession(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& tls,
                     std::uint64_t maxBody);

}  // namespace hcy::server
