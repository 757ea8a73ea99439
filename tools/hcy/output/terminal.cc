// SPDX-License-Identifier: Apache-2.0

#include "output/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "text/text.h"

namespace hcy::tools {

bool isTerminal(int descriptor) { return ::isatty(descriptor) == 1; }

std::size_t widthOf(int descriptor) {
  if (!isTerminal(descriptor)) return 0;
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

std::size_t heightOf(int descriptor) {
  if (!isTerminal(descriptor)) return 0;
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) return 24;
  return size.ws_row;
}

bool isStandardOutput(std::string_view file) { return file == "-" || file == "/dev/stdout"; }

void print(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
}

void printText(std::string_view text) {
  if (!isTerminal(STDOUT_FILENO)) return print(text);
  print(printableText(text));
}

}  // namespace hcy::tools
