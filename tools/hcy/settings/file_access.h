// SPDX-License-Identifier: Apache-2.0
//
// Whether the files that hcy relies on can be used, and who else can read or change them. The files
// of root are as good as those of the user; devices, such as a terminal, are not checked.

#pragma once

#include <string>

namespace hcy::tools {

// Throws BadInput if the opened file belongs to another user, or if others can read or change it.
void requirePrivate(int descriptor, const std::string& name);

// The same check by name, for a file that only libcurl opens. A missing file is BadInput, too. The
// file can be replaced between the check and its use; a descriptor does not have this problem.
void requirePrivateFile(const std::string& name);

// Throws BadInput, which names the file, if it is missing, a directory, or not readable. libcurl
// would not name it.
void requireReadable(const std::string& name);

// Throws BadInput if the opened file belongs to another user, or if others can change it.
void requireUnalterable(int descriptor, const std::string& name);

}  // namespace hcy::tools
