// SPDX-License-Identifier: Apache-2.0
//
// Files in which hcy-local-server records calls.

#pragma once

#include <string>
#include <string_view>

#include "settings/options.h"

namespace hcy::tools {

// Whether these bytes are such a file rather than a body.
bool isRecordedCall(std::string_view bytes);

// What hcy show prints of the file: path, status, request and reply, or one of the bodies alone.
// Throws as arraysOfBody() and jsonOfBody().
std::string textOfRecordedCall(const std::string& bytes, Body body, bool showsSchema);

}  // namespace hcy::tools
