// SPDX-License-Identifier: Apache-2.0
//
// One element of an array as JSON.

#pragma once

#include <string>

namespace hcy::tools {

// The shortest digits that give the same number again; NaN and infinities as strings.
template <class T>
void appendElement(std::string& out, T element);

}  // namespace hcy::tools
