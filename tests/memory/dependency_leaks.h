// SPDX-License-Identifier: Apache-2.0
//
// What other people's libraries lose when an allocation of theirs fails.

#pragma once

namespace hcy::abi {

// Whether the last allocation that failed is one after which a library that we depend on is known
// to lose memory.
bool isLeakOfDependency();

}  // namespace hcy::abi
