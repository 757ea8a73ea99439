// SPDX-License-Identifier: Apache-2.0

#include "server.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <optional>
#include <semaphore>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "call_threads.h"
#include "connections.h"
#include "function_table.h"
#include "message_memory.h"
#include "session.h"
#include "tls_context.h"

namespace hcy::server {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kAcceptPause{20};
constexpr std::chrono::seconds kCalculationTime{2};
// Each connection costs memory, too, however many descriptors there are.
constexpr std::size_t kMostConnections = 4096;
constexpr std::size_t kFewestConnections = 4;
// For connections that are being closed, and for what the system libraries open.
constexpr std::size_t kSpareDescriptors = 16;
// Those of our own contexts, of the socket that listens and of the standard streams.
constexpr std::size_t kOwnDescriptors = 16;
// For each of the threads that wait, and as many connections that are kept.
constexpr std::size_t kDescriptorsForOthers = 48;

// Pipes to commands, connections to another server, files of recorded calls.
std::size_t descriptorsForOthers(const Options& options) {
  const bool hasOthers = !options.upstream.url.empty() || !options.replayFolder.empty();
  return 2 * options.commands.functions.size() * options.commands.workers +
         (hasOthers ? kDescriptorsForOthers : 0);
}

std::size_t mostConnections(const Options& options) {
  rlimit files{};
  if (::getrlimit(RLIMIT_NOFILE, &files) != 0) return kFewestConnections;
  const std::size_t reserved = kOwnDescriptors + kSpareDescriptors + descriptorsForOthers(options);
  const std::size_t limit = files.rlim_cur;
  if (limit < reserved + kFewestConnections) return kFewestConnections;
  return std::min(limit - reserved, kMostConnections);
}

}  // namespace

class Server::Implementation {
 public:
  Implementation(Options options, std::vector<Function> functions)
      : options_(std::move(options)), service_(options_, std::move(functions)) {
    messageMemory().setLimit(messageMemoryLimitFor(options_.maxBody));
    if (options_.usesTls()) tls_.emplace(makeTlsContext(options_));
    listen();
    if (options_.ownsProcess) {
      signals_.emplace(control_, SIGINT, SIGTERM);
      signals_->async_wait([this](error_code, int) { control_.stop(); });
    }
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

  void run(const std::function<void()>& started) {
    accept();
    std::vector<asio::io_context*> contexts = callThreads_.contexts();
    contexts.insert(contexts.end(), std::max(2U, std::thread::hardware_concurrency()), &io_);
    std::vector<std::jthread> threads;
    threads.reserve(contexts.size());
    try {
      for (asio::io_context* context : contexts) {
        threads.emplace_back([this, context] { serve(*context); });
      }
    } catch (const std::system_error&) {
      for (asio::io_context* context : contexts) context->stop();
      throw;
    }
    started();
    // Until it is stopped, even if nothing else is to happen.
    const auto guard = asio::make_work_guard(control_);
    control_.run();
    service_.end();
    for (asio::io_context* context : contexts) context->stop();
    if (options_.ownsProcess) awaitEnds(threads.size());
  }

  void stop() { control_.stop(); }

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
    acceptor_.non_blocking(true);
  } catch (const boost::system::system_error& error) {
    throw std::runtime_error("cannot listen on " + options_.host + ":" +
                             std::to_string(options_.port) + ": " + error.what());
  }

  // Without a descriptor that is left, accepting fails even if there is nobody to accept. So that
  // is awaited first.
  void accept() {
    acceptor_.async_wait(tcp::acceptor::wait_read,
                         [this](error_code ec) { ec ? acceptLater() : acceptOne(); });
  }

  void acceptOne() {
    tcp::socket socket(asio::make_strand(io_));
    error_code ec;
    acceptor_.accept(socket, ec);
    // The client may have left already.
    if (ec == asio::error::would_block) return accept();
    if (!ec) start(std::move(socket));
    // Most errors are that there are too many open files.
    const bool hasRoom = !ec && !connections_.isFull();
    if (hasRoom || (connections_.closeIdlest() && !ec)) return accept();
    acceptLater();
  }

  void acceptLater() {
    acceptTimer_.expires_after(kAcceptPause);
    acceptTimer_.async_wait([this](error_code) { accept(); });
  }

  void start(tcp::socket socket) try {
    socket.set_option(tcp::no_delay(true));
    if (tls_) {
      startTlsSession(std::move(socket), *tls_, surroundings_);
    } else {
      startSession(std::move(socket), surroundings_);
    }
  } catch (const std::exception&) {
    // This connection is lost; the next one may not be.
  }

  void readInput() {
    input_->async_read_some(asio::buffer(inputBytes_), [this](error_code ec, std::size_t) {
      ec ? control_.stop() : readInput();
    });
  }

  void serve(asio::io_context& context) {
    while (!context.stopped()) {
      try {
        context.run();
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
  Connections connections_{mostConnections(options_)};
  asio::io_context io_;
  // Its tasks hold sessions, which end before io_ does.
  Service service_;
  FaultSchedule faults_{options_.faults, options_.seed};
  CallLog log_{options_.log};
  CallThreads callThreads_{mostConnections(options_) / 2, options_.functionThreads, service_,
                           faults_, log_};
  const SessionSurroundings surroundings_{options_, connections_, callThreads_};
  tcp::acceptor acceptor_{io_};
  asio::steady_timer acceptTimer_{io_};
  std::counting_semaphore<> ended_{0};
  // Signals and the end of the input are not to wait behind calculations.
  asio::io_context control_{1};
  std::optional<asio::signal_set> signals_;
  std::optional<asio::posix::stream_descriptor> input_;
  std::array<char, 256> inputBytes_{};
};

Server::Server(const Options& options, std::vector<Function> functions)
    : implementation_(std::make_unique<Implementation>(options, std::move(functions))) {}

Server::~Server() = default;

std::string Server::url() const { return implementation_->url(); }

void Server::run(const std::function<void()>& started) { implementation_->run(started); }

void Server::stop() { implementation_->stop(); }

}  // namespace hcy::server
