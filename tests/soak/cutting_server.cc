// SPDX-License-Identifier: Apache-2.0
//
// A server that keeps back the last byte of every reply. It is a process of its own: its threads
// take nothing of the one that is measured.

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>

#include "support/script_server.h"

int main() {
  using namespace hcy::test;
  static_cast<void>(std::signal(SIGTERM, [](int) { std::_Exit(EXIT_SUCCESS); }));
  const std::string whole = httpReply(200, "OK", "whole");
  const ScriptServer server(
      {Connection{readRequest(), send(whole.substr(0, whole.size() - 1)), close()}});
  std::cout << "listening on " << server.url("") << std::endl;
  // Who started it holds the other end.
  char byte = 0;
  while (::read(STDIN_FILENO, &byte, 1) > 0) {
  }
}
