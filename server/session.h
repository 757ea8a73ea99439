// SPDX-License-Identifier: Apache-2.0
//
// One connection: requests are read and answered in turn until a side ends it. A session keeps
// itself alive while it waits for something, so there is nothing to hold on to.

#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>

#include "call_threads.h"
#include "connections.h"
#include "options.h"

namespace hcy::server {

// What sessions share; it outlives them.
struct SessionSurroundings {
  const Options& options;
  Connections& connections;
  CallThreads& callThreads;
};

// The socket's executor is a strand.
void startSession(boost::asio::ip::tcp::socket socket, const SessionSurroundings& surroundings);
void startTlsSession(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& tls,
                     const SessionSurroundings& surroundings);

}  // namespace hcy::server
