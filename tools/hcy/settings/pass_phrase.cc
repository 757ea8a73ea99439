// SPDX-License-Identifier: Apache-2.0

#include "settings/pass_phrase.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "text/descriptor.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

Descriptor opened(const char* file, int flags) {
  return Descriptor(::open(file, flags | O_CLOEXEC));
}

// Reads the next byte; false at the end or on failure, with errno 0 at the end.
bool readByte(const Descriptor& from, char& byte) {
  ssize_t count = 0;
  errno = 0;
  do {
    count = ::read(from.get(), &byte, 1);
  } while (count < 0 && errno == EINTR);
  return count == 1;
}

void append(Secret& secret, char byte) {
  if (byte == '\0') throw BadInput("the pass phrase contains a NUL character");
  if (!secret.append(byte)) {
    throw BadInput("the pass phrase is longer than " + std::to_string(Secret::kLongest) + " bytes");
  }
}

// Turns off echo, and signals of the keyboard, which would leave the terminal without echo.
class SilentTerminal {
 public:
  explicit SilentTerminal(const Descriptor& terminal) : terminal_(terminal) {
    isSet_ = ::tcgetattr(terminal_.get(), &before_) == 0;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG | ICANON);
    silent.c_cc[VMIN] = 1;
    silent.c_cc[VTIME] = 0;
    isSet_ = isSet_ && ::tcsetattr(terminal_.get(), TCSAFLUSH, &silent) == 0;
    if (!isSet_)
      throw BadInput("cannot ask for the pass phrase: the terminal cannot hide what is typed");
  }
  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;
  ~SilentTerminal() { ::tcsetattr(terminal_.get(), TCSAFLUSH, &before_); }

  char interruptKey() const { return static_cast<char>(before_.c_cc[VINTR]); }
  char eraseKey() const { return static_cast<char>(before_.c_cc[VERASE]); }
  char killKey() const { return static_cast<char>(before_.c_cc[VKILL]); }
  char endKey() const { return static_cast<char>(before_.c_cc[VEOF]); }

 private:
  const Descriptor& terminal_;
  termios before_{};
  bool isSet_ = false;
};

// Holds back the signals that end the program, which would leave the terminal without echo. Those
// that came take effect when it is destroyed.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t held{};
    sigemptyset(&held);
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
      struct sigaction action {};
      const bool isKnown = ::sigaction(number, nullptr, &action) == 0;
      if (isKnown && action.sa_handler != SIG_IGN) sigaddset(&held, number);
    }
    pthread_sigmask(SIG_BLOCK, &held, &before_);
    descriptor_ = ::signalfd(-1, &held, SFD_CLOEXEC);
  }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;
  ~HeldSignals() {
    if (descriptor_ >= 0) ::close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

  // Waits until one has come or the terminal can be read; returns whether it can.
  bool awaitTerminal(const Descriptor& terminal) const {
    std::array<pollfd, 2> watched = {{{terminal.get(), POLLIN, 0}, {descriptor_, POLLIN, 0}}};
    while (::poll(watched.data(), watched.size(), -1) < 0) {
      if (errno != EINTR) return false;
    }
    return watched[1].revents == 0;
  }

 private:
  sigset_t before_{};
  int descriptor_ = -1;
};

void write(const Descriptor& terminal, std::string_view text) {
  // If the question cannot be shown, the answer cannot be read either.
  static_cast<void>(!::write(terminal.get(), text.data(), text.size()));
}

enum class Ended { kByLine, kByInterrupt, kByNothing };

Ended readLine(const Descriptor& terminal, const HeldSignals& signals, const SilentTerminal& silent,
               Secret& secret) {
  for (char byte = 0; signals.awaitTerminal(terminal) && readByte(terminal, byte);) {
    if (byte == '\n' || byte == '\r') return Ended::kByLine;
    if (byte == silent.interruptKey()) return Ended::kByInterrupt;
    if (byte == silent.endKey()) break;
    if (byte == silent.eraseKey() || byte == '\b') {
      secret.removeLast();
    } else if (byte == silent.killKey()) {
      secret.clear();
    } else {
      append(secret, byte);
    }
  }
  return Ended::kByNothing;
}

}  // namespace

Secret passPhraseOfFile(const std::string& file, const FileCheck& check) {
  const Descriptor from = opened(file.c_str(), O_RDONLY);
  if (!from.isOpen()) refuseFile(file);
  if (check) check(from.get(), file);
  Secret secret;
  char byte = 0;
  errno = 0;
  while (readByte(from, byte) && byte != '\n') append(secret, byte);
  if (errno != 0) refuseFile(file);
  if (secret.text().ends_with('\r')) secret.removeLast();
  if (secret.text().empty())
    throw BadInput(printable(file) + ": the first line, which must be the pass phrase, is empty");
  return secret;
}

bool mayPrompt() {
  const char* const forbidden = std::getenv("HCY_NO_PROMPT");
  return forbidden == nullptr || *forbidden == '\0';
}

Secret passPhraseOfTerminal() {
  if (!mayPrompt()) throw BadInput("cannot ask for the pass phrase: HCY_NO_PROMPT is set");
  const Descriptor terminal = opened("/dev/tty", O_RDWR | O_NOCTTY);
  if (!terminal.isOpen()) throw BadInput("cannot ask for the pass phrase: there is no terminal");
  Secret secret;
  Ended ended{};
  {
    const HeldSignals signals;
    const SilentTerminal silent(terminal);
    write(terminal, "Pass phrase of the private key: ");
    ended = readLine(terminal, signals, silent, secret);
    write(terminal, "\n");
  }
  if (ended == Ended::kByInterrupt) static_cast<void>(std::raise(SIGINT));
  if (ended != Ended::kByLine || secret.text().empty()) throw BadInput("no pass phrase was given");
  return secret;
}

}  // namespace hcy::tools
