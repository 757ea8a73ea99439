// SPDX-License-Identifier: Apache-2.0

#include "settings/file_access.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

constexpr mode_t kAnyAccess = S_IRWXG | S_IRWXO;
constexpr mode_t kWriting = S_IWGRP | S_IWOTH;

// `forbidden` is what others must not be able to do.
void require(const struct stat& state, const std::string& name, mode_t forbidden) {
  if (S_ISCHR(state.st_mode)) return;
  const std::string file = printable(name);
  if (state.st_uid != ::geteuid() && state.st_uid != 0) {
    throw BadInput(file + " belongs to another user");
  }
  if ((state.st_mode & forbidden) == 0) return;
  throw BadInput(forbidden == kWriting
                     ? file + " can be changed by other users; run chmod go-w " + file
                     : file + " is accessible to other users; run chmod 600 " + file);
}

void requireOpened(int descriptor, const std::string& name, mode_t forbidden) {
  struct stat state {};
  if (::fstat(descriptor, &state) != 0) refuseFile(name);
  require(state, name, forbidden);
}

}  // namespace

void requirePrivate(int descriptor, const std::string& name) {
  requireOpened(descriptor, name, kAnyAccess);
}

void requirePrivateFile(const std::string& name) {
  struct stat state {};
  if (::stat(name.c_str(), &state) != 0) refuseFile(name);
  require(state, name, kAnyAccess);
}

void requireReadable(const std::string& name) {
  struct stat state {};
  if (::stat(name.c_str(), &state) != 0 || ::access(name.c_str(), R_OK) != 0) refuseFile(name);
  if (!S_ISDIR(state.st_mode)) return;
  errno = EISDIR;
  refuseFile(name);
}

void requireUnalterable(int descriptor, const std::string& name) {
  requireOpened(descriptor, name, kWriting);
}

}  // namespace hcy::tools
