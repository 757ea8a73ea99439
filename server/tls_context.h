// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/asio/ssl/context.hpp>

#include "options.h"

namespace hcy::server {

// TLS 1.2 and 1.3 with the certificates that the options name; throws if they are of no use.
boost::asio::ssl::context makeTlsContext(const Options& options);

}  // namespace hcy::server
