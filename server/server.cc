// SPDX-License-Identifier: Apache-2.0

#include "server.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <semaphore>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "message_memory.h"
#include "session.h"
#include "tls_context.h"

namespace hcy::server {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kAcceptPause{100};
constexpr std::chrono::seconds kCalculationTime{2};

}  // namespace

class Server::Implementation {
 public:
  explicit Implementation(Options options) : options_(std::move(options)) {
    setMessageMemoryLimit(messageMemoryLimitFor(options_.maxBody));
    if (options_.usesTls()) tls_.emplace(makeTlsContext(options_));
    listen();
    signals_.async_wait([this](error_code, int) { control_.stop(); });
    if (options_.stopOnEof) {
      input_.emplace(control_, ::dup(STDIN_FILENO));
      readInput();
    }
  }

  std::string url() const {
    const bool ipv6 = options_.host.find(':') != std::string::npos;
    return (tls_ ? "https://" : "http://") + (ipv6 ? "[" + options_.host + "]" : options_.host) +
           ":" + std::to_string(acceptor_.local_endpoint().port());
  }

  void run() {
    accept();
    std::vector<std::jthread> threads;
    const unsigned count = std::max(2U, std::thread::hardware_concurrency());
    for (unsigned i = 0; i < count; ++i) threads.emplace_back([this] { serve(); });
    control_.run();
    io_.stop();
    awaitEnds(threads.size());
  }

 private:
  void listen() try {
    const auto found =
        tcp::resolver(io_).resolve(options_.host, std::to_string(options_.port),
                                   tcp::resolver::passive | tcp::resolver::numeric_service);
    const tcp::endpoint endpoint = found.begin()->endpoint();
    acceptor_.open(endpoint.protocol());
    acceptor_.set_option(tcp::acceptor::reuse_address(true));
    acceptor_.bind(endpoint);
    acceptor_.listen();
  } catch (const boost::system::system_error& error) {
    throw std::runtime_error("cannot listen on " + options_.host + ":" +
                             std::to_string(options_.port) + ": " + error.what());
  }

  void accept() {
    acceptor_.async_accept(asio::make_strand(io_), [this](error_code ec, tcp::socket socket) {
      if (ec) return acceptLater();
      start(std::move(socket));
      accept();
    });
  }

  // Most likely there are too many open files, and some will be closed.
  void acceptLater() {
    acceptTimer_.expires_after(kAcceptPause);
    acceptTimer_.async_wait([this](error_code) { accept(); });
  }

  void start(tcp::socket socket) try {
    socket.set_option(tcp::no_delay(true));
    if (tls_) {
      startTlsSession(std::move(socket), *tls_, options_.maxBody);
    } else {
      startSession(std::move(socket), options_.maxBody);
    }
  } catch (const std::exception&) {
    // This connection is lost; the next one may not be.
  }

  void readInput() {
    input_->async_read_some(asio::buffer(inputBytes_), [this](error_code ec, std::size_t) {
      ec ? control_.stop() : readInput();
    });
  }

  void serve() {
    while (!io_.stopped()) {
      try {
        io_.run();
      } catch (const std::exception&) {
        // Whatever went wrong took one connection with it.
      }
    }
    ended_.release();
  }

  // A calculation cannot be interrupted; one that takes long is abandoned with the process.
  void awaitEnds(std::size_t threads) {
    const auto deadline = steady_clock::now() + kCalculationTime;
    for (std::size_t i = 0; i < threads; ++i) {
      if (!ended_.try_acquire_until(deadline)) std::_Exit(EXIT_SUCCESS);
    }
  }

  const Options options_;
  std::optional<asio::ssl::context> tls_;
  asio::io_context io_;
  tcp::acceptor acceptor_{io_};
  asio::steady_timer acceptTimer_{io_};
  std::counting_semaphore<> ended_{0};
  // Signals and the end of the input are not to wait behind calculations.
  asio::io_context control_{1};
  asio::signal_set signals_{control_, SIGINT, SIGTERM};
  std::optional<asio::posix::stream_descriptor> input_;
  std::array<char, 256> inputBytes_{};
};

Server::Server(const Options& options)
    : implementation_(std::make_unique<Implementation>(options)) {}

Server::~Server() = default;

std::string Server::url() const { return implementation_->url(); }

void Server::run() { implementation_->run(); }

}  // namespace hcy::server
