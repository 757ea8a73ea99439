// SPDX-License-Identifier: Apache-2.0
#include "script_server.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "script_stage.h"

namespace hcy::test {
namespace {

std::vector<Connection> atLeastOne(std::vector<Connection> scripts) {
  if (scripts.empty()) throw std::invalid_argument("ScriptServer: no script");
  return scripts;
}

bool concernsOneClient(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR || error == ECONNABORTED;
}

// Runs the script to its end, to the first step that fails or to the server's stop.
void run(const Connection& script, Stage& stage) {
  std::size_t position = 0;
  try {
    for (; position < script.steps.size(); ++position) script.steps[position].run(stage);
    if (stage.channel.isOpen()) stage.channel.close();
  } catch (const Stopped&) {
  } catch (const std::exception& failure) {
    stage.journal.addProblem("connection " + std::to_string(stage.connection) + ", step " +
                             std::to_string(position) + " (" + script.steps[position].name +
                             "): " + failure.what());
  }
}

}  // namespace

ScriptServer::ScriptServer(std::vector<Connection> scripts, AfterScripts afterScripts)
    : scripts_(atLeastOne(std::move(scripts))),
      afterScripts_(afterScripts),
      listener_(listenOn(port_.number(), SOMAXCONN)),
      acceptor_([this] { acceptAll(); }) {}

// The members join: first the acceptor, then the connections, which it can add to no more.
ScriptServer::~ScriptServer() { stop_.raise(); }

void ScriptServer::acceptAll() {
  try {
    while (listener_.isOpen()) acceptNext();
  } catch (const Stopped&) {
  } catch (const std::exception& failure) {
    journal_.addProblem(std::string("accepting: ") + failure.what());
  }
}

// The listener goes before the last script begins: once that has said anything, nobody listens.
void ScriptServer::acceptNext() {
  stop_.wait(listener_.get(), POLLIN);
  FileDescriptor socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (socket.isOpen()) {
    const std::size_t connection = journal_.addConnection();
    const bool more = connection + 1 < scripts_.size();
    if (!more && afterScripts_ == AfterScripts::refuse) listener_.close();
    connectionThreads_.emplace_back([this, connection, accepted = std::move(socket)]() mutable {
      serve(std::move(accepted), connection);
    });
  } else if (!concernsOneClient(errno)) {
    throw std::system_error(errno, std::generic_category(), "accept");
  }
}

void ScriptServer::serve(FileDescriptor socket, std::size_t connection) {
  {
    Stage stage{Channel(std::move(socket), stop_), journal_, connection, std::nullopt};
    run(scripts_[std::min(connection, scripts_.size() - 1)], stage);
  }
  journal_.addEnded();
}

}  // namespace hcy::test
