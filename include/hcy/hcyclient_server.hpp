/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient_server.hpp
 * @brief Serves functions of a C++ program, for tests and prototypes. hcyclient.hpp does not
 *        include this header.
 *
 * @code
 * hcyclient::Server server(library);
 * server.add("my/scale", [](const hcyclient::Server::Inputs& in) {
 *   return in.at(0).scalar() * in.at(1).scalar();
 * });
 * server.listen();
 * const auto product = context.feval(server.url("my/scale"), {2.0, 3.0});
 * @endcode
 *
 * Needs C++17 and libhcyclient-server: link hcyclient::server. The server is that of the program
 * hcy-local-server, but runs on threads of this process. The limits and timeouts of that program
 * apply, and setOptions() enables its TLS, its log and its faults on demand.
 */
#ifndef HCY_HCYCLIENT_SERVER_HPP
#define HCY_HCYCLIENT_SERVER_HPP

#include <hcy/hcyclient_server.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <hcy/hcyclient.hpp>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {

/**
 * Serves functions of this program at a URL.
 *
 * The server calls the functions on its own threads, as many at a time as setThreads() says. Use
 * all other members on one thread at a time. The Library must outlive the Server.
 */
class Server {
 public:
  /** The inputs of a function, as Context::feval() would return them. */
  using Inputs = std::vector<Array>;

  /** The outputs of a function: arrays, or values that become arrays, as in
   *  `Outputs{std::move(a), 2.0, "text"}`. Arrays are moved; `a.copy()` makes a copy. */
  class Outputs : public std::vector<Array> {
   public:
    /** No outputs. */
    Outputs() = default;
    /** Takes over the arrays. */
    Outputs(std::vector<Array>&& arrays) : std::vector<Array>(std::move(arrays)) {}
    /** Makes an array of each value. */
    template <class... Values, std::enable_if_t<(sizeof...(Values) > 0) &&
                                                    (std::is_convertible_v<Values&&, Array> && ...),
                                                int> = 0>
    Outputs(Values&&... values) {
      reserve(sizeof...(Values));
      (push_back(Array(std::forward<Values>(values))), ...);
    }
  };

  /** A server that does not listen yet. */
  explicit Server(const Library& /*library*/) {}
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /** The same as close(). */
  ~Server() = default;

  /**
   * Adds a function, or replaces the one with the same name.
   *
   * @param name     path of its URL, without a leading slash.
   * @param function is called with Inputs, or with Inputs and the number of outputs that the caller
   *                 wants (an int). It returns Outputs, a std::vector<Array>, one value that
   *                 becomes an array, or nothing. Extra outputs are dropped. If there are too few,
   *                 the call fails. An exception that it throws is raised in the caller: a
   *                 FunctionError unchanged; any other std::exception as an error with its what(),
   *                 the identifier `cpp:exception` and one stack frame, which names the function.
   * @throws UsageError if the server is already listening, or if the name is empty, begins with a
   *         slash, or contains an equals sign or a NUL.
   */
  template <class F>
  Server& add(const std::string& name, F function) {
    requireNotListening();
    if (name.empty() || name[0] == '/' || name.find('=') != std::string::npos ||
        name.find('\0') != std::string::npos) {
      throw UsageError("not a valid function name: " + name);
    }
    functions_[name] = [kept = std::move(function)](Inputs&& inputs, int nargout) mutable {
      if constexpr (std::is_invocable_v<F&, Inputs&&, int>) {
        return outputsOf([&] { return kept(std::move(inputs), nargout); });
      } else {
        return outputsOf([&] { return kept(std::move(inputs)); });
      }
    };
    return *this;
  }

  /** Sets how many functions may run at a time. The default is 1. Throws UsageError for 0, or if
   *  the server is already listening. */
  Server& setThreads(unsigned count) {
    requireNotListening();
    if (count == 0) throw UsageError("a Server needs at least one thread");
    threadCount_ = count;
    return *this;
  }

  /** Sets further options of hcy-local-server, such as {"--fault", "my/scale=503@2"}. Throws
   *  UsageError if the server is already listening. */
  Server& setOptions(std::vector<std::string> options) {
    requireNotListening();
    options_ = std::move(options);
    return *this;
  }

  /**
   * Listens on 127.0.0.1, unless options say otherwise, and answers calls from then on.
   *
   * @param port the port; 0 picks a free one.
   * @throws InitializationError if the server cannot listen, a thread cannot be started, an option
   *         is wrong (the standard error says which) or libhcyclient is of another version than
   *         libhcyclient-server; UsageError if the server is already listening. If it throws an
   *         InitializationError, the server does not listen.
   */
  void listen(std::uint16_t port = 0) {
    requireNotListening();
    const std::string portText = std::to_string(port);
    std::vector<const char*> options = {"--port", portText.c_str()};
    for (const std::string& option : options_) options.push_back(option.c_str());
    std::vector<hcyServedFunction> served;
    for (auto& function : functions_) {
      served.push_back({function.first.c_str(), answer, &function});
    }
    char* message = nullptr;
    server_.reset(hcyServerStart(served.data(), served.size(), threadCount_,
                                 static_cast<int>(options.size()), options.data(), &message));
    if (server_) return;
    const std::string reason = message != nullptr ? message : "not enough memory for a server";
    hcyFree(message);
    throw InitializationError(reason);
  }

  /** The URL of a function, or of the server if no name is given; empty unless the server is
   *  listening. */
  std::string url(const std::string& function = {}) const {
    if (!server_) return {};
    const std::string own = hcyServerUrl(server_.get());
    return function.empty() ? own : own + "/" + function;
  }

  /** Stops the server, and returns when no function is running any more. Calls in progress fail.
   *  Does nothing unless the server is listening. A served function must not call it: it would wait
   *  forever. */
  void close() noexcept { server_.reset(); }

 private:
  using Function = std::function<Outputs(Inputs&&, int)>;
  using NamedFunction = std::pair<const std::string, Function>;

  struct Stop {
    void operator()(hcyServer* server) const noexcept { hcyServerStop(server); }
  };

  template <class Call>
  static Outputs outputsOf(Call call) {
    if constexpr (std::is_void_v<decltype(call())>) {
      call();
      return {};
    } else {
      return Outputs(call());
    }
  }

  void requireNotListening() const {
    if (server_) throw UsageError("the Server is already listening");
  }

  static void answer(void* context, hcyServedCall* call) noexcept {
    auto& named = *static_cast<NamedFunction*>(context);
    try {
      Inputs inputs;
      inputs.reserve(call->nargin);
      for (std::size_t i = 0; i < call->nargin; ++i) {
        inputs.push_back(Array::adopt(std::exchange(call->inputs[i], nullptr)));
      }
      for (Array& output : named.second(std::move(inputs), call->nargout)) {
        if (!output) throw UsageError("an output is an empty Array");
        hcyServedOutput(call, output.release());
      }
    } catch (const FunctionError& error) {
      fail(call, error);
    } catch (const std::exception& error) {
      hcyServedError(call, "cpp:exception", error.what(), 0, nullptr);
    } catch (...) {
      hcyServedError(call, "cpp:exception",
                     "the function threw something that is not a std::exception", 0, nullptr);
    }
  }

  static void fail(hcyServedCall* call, const FunctionError& error) noexcept {
    std::unique_ptr<hcyErrorStackFrame[]> frames(new (std::nothrow)
                                                     hcyErrorStackFrame[error.stack().size() + 1]);
    std::size_t depth = 0;
    if (frames) {
      for (const StackFrame& frame : error.stack()) {
        hcyErrorStackFrame& made = frames[depth++];
        made.file = frame.file.c_str();
        made.name = frame.name.c_str();
        made.line = frame.line;
      }
    }
    hcyServedError(call, error.identifier().c_str(), error.what(), depth, frames.get());
  }

  std::map<std::string, Function> functions_;
  unsigned threadCount_ = 1;
  std::vector<std::string> options_;
  // Ends before the functions do.
  std::unique_ptr<hcyServer, Stop> server_;
};

}  // namespace hcyclient

#endif
