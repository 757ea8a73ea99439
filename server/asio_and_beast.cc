// SPDX-License-Identifier: Apache-2.0
//
// The bodies of Asio's and Beast's functions, for the whole program.

#include <boost/asio/impl/src.hpp>
#include <boost/asio/ssl/impl/src.hpp>
#include <boost/beast/src.hpp>
