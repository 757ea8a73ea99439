// SPDX-License-Identifier: Apache-2.0
//
// Whether the files that hcy relies on can be used, and who else can read or change them. The files
// of root are as good as those of the user; devices, such as a terminal, are not checked.

#pragma once

#include <string>

namespace hcy::tools {

// Throws BadInput if the opened file belongs to another user, or if others can read or change it.
void requirePrivate(int descriptor, const std::string& name);

// The same for a file that libcurl will open, and if there is no such file. It may have been
// replaced by then; a descriptor is safer.
void requirePrivateFile(const std::string& name);

// Throws BadInput with the name if there is no such file, if it is a directory, or if the user
// cannot read it. libcurl would not say which file it is.
void requireReadable(const std::string& name);

// Throws BadInput with the name if the file cannot be written, or created in its directory: results
// of a call must not be lost because of a wrong name.
void requireWritable(const std::string& name);

// Throws BadInput if the opened file belongs to another user, or if others can change it.
void requireUnalterable(int descriptor, const std::string& name);

}  // namespace hcy::tools
