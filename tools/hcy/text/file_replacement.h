// SPDX-License-Identifier: Apache-2.0
//
// Files that are replaced as a whole or not at all.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace hcy::tools {

// Writes the new contents of a file beside it. The file itself changes in commit(), which cannot
// leave half of it; without commit(), it stays as it was. A new file gets the permissions of any
// created file, and an existing one keeps its own. What is not a regular file (a pipe, a device) is
// written in commit().
class FileReplacement {
 public:
  // `contents` must live until commit(). Throws std::system_error with the name of the file.
  FileReplacement(const std::string& file, std::string_view contents);
  FileReplacement(FileReplacement&& other) noexcept;
  FileReplacement& operator=(FileReplacement&&) = delete;
  ~FileReplacement();

  // Throws std::system_error with the name of the file.
  void commit();

 private:
  void writeBeside(std::optional<mode_t> mode);

  std::string file_;
  std::string target_;  // the file that is replaced: file_, or what it links to
  std::string_view contents_;
  std::string beside_;  // the name of the new file, until it is renamed; empty if there is none
};

// Throws BadInput, which names the file, if it cannot be written or created. Called before the
// function is evaluated, so that a wrong name loses no results.
void requireWritable(const std::string& file);

// Creates the file or replaces it at once; throws std::system_error with its name.
void writeFile(const std::string& file, std::string_view contents);

}  // namespace hcy::tools
