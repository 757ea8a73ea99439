// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace hcy::test {

// The function that holds the address and the file that it is in, as "function in file". In the
// program itself and in shared libraries by their symbol tables.
std::string functionAt(void* address);

}  // namespace hcy::test
