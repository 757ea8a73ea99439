// SPDX-License-Identifier: Apache-2.0
//
// The operations of the library by kind.

#pragma once

#include "operations/operation.h"

namespace hcy::bench {

void addCreationAndDuplication(Operations& operations);
void addElementAccess(Operations& operations);
void addContainers(Operations& operations);
void addTexts(Operations& operations);
void addFieldChanges(Operations& operations);

}  // namespace hcy::bench
