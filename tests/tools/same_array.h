// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcy::test {

// Where the arrays differ (class, shape, complexity, a bit of an element), or the empty text. Room
// of a sparse array that nothing is stored in does not count.
std::string differenceOf(const hcyclient::Array& a, const hcyclient::Array& b);

}  // namespace hcy::test
