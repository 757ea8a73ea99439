// SPDX-License-Identifier: Apache-2.0
//
// One element of an array as JSON.

#pragma once

#include <string>

namespace hcy::tools {

// The shortest digits that give the number again; what JSON has no number for as a text.
template <class T>
void appendElement(std::string& out, T element);

}  // namespace hcy::tools
