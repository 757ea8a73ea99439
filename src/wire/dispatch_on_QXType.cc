// SPDX-License-Identifier: Apache-2.0

#include "wire/dispatch_on_QXType.h"

#include <boost/assert/source_location.hpp>
#include <boost/throw_exception.hpp>
#include <stdexcept>

namespace hcy {

void failUnservedQXType() {
  // The failure names the dispatch itself as its place, wherever the code of it lies.
  boost::throw_exception(std::invalid_argument("dispatch_on_QXType"),
                         boost::source_location("dispatch_on_QXType", 12, "dispatch_on_QXType", 1));
}

}  // namespace hcy
