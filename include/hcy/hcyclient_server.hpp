/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient_server.hpp
 * @brief Serves functions of a C++ program on this machine, for tests and prototypes. Not in
 * hcyclient.hpp.
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
 * Header-only C++17 for POSIX systems, based on hcyclient.hpp. The program hcy-local-server handles
 * the connections, in a process that ends with this one. Its limits and timeouts apply, and
 * setOptions() enables its TLS, its log and its faults on demand. The functions run in this
 * process. Link the system's thread library in addition to this library.
 */
#ifndef HCY_HCYCLIENT_SERVER_HPP
#define HCY_HCYCLIENT_SERVER_HPP

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <functional>
#include <hcy/hcyclient.hpp>
#include <map>
#include <random>
#include <string>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

/** The environment of the process, which the server inherits (POSIX). */
extern char** environ;

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

  /** The outputs of a function: arrays, or values that become arrays, `Outputs{a, 2.0, "text"}`. */
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
  explicit Server(const Library& library) : library_(&library) {}
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /** The same as close(). */
  ~Server() { close(); }

  /**
   * Adds a function. It replaces a function of hcy-local-server of the same name.
   *
   * @param name     path of its URL, without a leading slash.
   * @param function is called with Inputs, or with Inputs and the number of outputs that the caller
   *                 wants (an int). It returns Outputs, a std::vector<Array>, one value that
   *                 becomes an array, or nothing. Extra outputs are dropped; too few fail the call.
   *                 An exception that it throws is raised in the caller: a FunctionError unchanged;
   *                 any other std::exception as an error with its what(), the identifier
   *                 `cpp:exception` and one stack frame, which names the function.
   * @throws UsageError if the server listens already, or the name is empty, begins with a slash or
   *         contains an equals sign.
   */
  template <class F>
  Server& add(const std::string& name, F function) {
    requireNotListening();
    if (name.empty() || name[0] == '/' || name.find('=') != std::string::npos) {
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

  /** How many functions may run at a time; 1 unless this is called. Throws UsageError for 0, or if
   *  the server listens already. */
  Server& setThreads(unsigned count) {
    requireNotListening();
    if (count == 0) throw UsageError("a Server needs at least one thread");
    threadCount_ = count;
    return *this;
  }

  /** Sets further options of hcy-local-server, such as {"--fault", "my/scale=503@2"}. Throws
   *  UsageError if the server listens already. */
  Server& setOptions(std::vector<std::string> options) {
    requireNotListening();
    options_ = std::move(options);
    return *this;
  }

  /** Sets the path of hcy-local-server. The default is the path in the environment variable
   *  HCY_LOCAL_SERVER, or else the program on the PATH. Throws UsageError if the server listens
   *  already. */
  Server& setProgram(std::string file) {
    requireNotListening();
    program_ = std::move(file);
    return *this;
  }

  /**
   * Listens on 127.0.0.1, unless options say otherwise, and answers calls from then on.
   *
   * @param port the port; 0 picks a free one.
   * @throws InitializationError if the program cannot be started or ends at once (its standard
   *         error says why), std::system_error if a pipe or thread cannot be created, UsageError if
   *         the server listens already. After the first two, the server does not listen.
   */
  void listen(std::uint16_t port = 0) {
    requireNotListening();
    isClosing_ = false;
    try {
      const std::string workerPath = "worker-" + randomName();
      start(arguments(port, workerPath));
      url_ = readUrl();
      const unsigned count = functions_.empty() ? 0 : threadCount_;
      for (unsigned i = 0; i < count; ++i) {
        threads_.emplace_back([this, url = url(workerPath)] { work(url); });
      }
    } catch (...) {
      close();
      throw;
    }
  }

  /** The URL of a function, or of the server if no name is given; empty unless the server listens.
   */
  std::string url(const std::string& function = {}) const {
    return url_.empty() || function.empty() ? url_ : url_ + "/" + function;
  }

  /** Stops the server, and returns when no function is running any more. Calls in progress fail.
   *  Does nothing unless the server listens. */
  void close() noexcept {
    isClosing_ = true;
    closeEnd(input_);
    closeEnd(output_);
    // Wakes the threads that wait for the next call.
    if (pid_ > 0) awaitEnd();
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
    url_.clear();
  }

 private:
  using Function = std::function<Outputs(Inputs&&, int)>;

  template <class Call>
  static Outputs outputsOf(Call call) {
    if constexpr (std::is_void_v<decltype(call())>) {
      call();
      return {};
    } else {
      return Outputs(call());
    }
  }

  static void closeEnd(int& descriptor) noexcept {
    if (descriptor >= 0) ::close(descriptor);
    descriptor = -1;
  }

  // Whoever knows the name can answer calls of the functions, so it cannot be guessed.
  static std::string randomName() {
    std::random_device random;
    std::string name;
    for (int i = 0; i < 24; ++i) name.push_back(static_cast<char>('a' + random() % 26));
    return name;
  }

  void requireNotListening() const {
    if (pid_ > 0) throw UsageError("the Server listens already");
  }

  std::vector<std::string> arguments(std::uint16_t port, const std::string& workerPath) const {
    const char* const named = std::getenv("HCY_LOCAL_SERVER");
    std::string program = program_;
    if (program.empty()) program = named != nullptr && *named != '\0' ? named : "hcy-local-server";
    std::vector<std::string> words = {program, "--port", std::to_string(port), "--stop-on-eof"};
    // Long enough to step through a function in a debugger.
    if (!functions_.empty()) {
      words.insert(words.end(), {"--worker-path", workerPath, "--function-timeout", "86400"});
    }
    for (const auto& function : functions_) {
      words.insert(words.end(), {"--function", function.first + "=@"});
    }
    words.insert(words.end(), options_.begin(), options_.end());
    return words;
  }

  void start(std::vector<std::string> words) {
    int input[2] = {-1, -1};
    int output[2] = {-1, -1};
    const bool arePipes = ::pipe(input) == 0 && ::pipe(output) == 0;
    const int failure = arePipes ? 0 : errno;
    input_ = input[1];
    output_ = output[0];
    int started = 0;
    if (arePipes) {
      for (const int end : {input[0], input[1], output[0], output[1]}) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
      }
      started = spawn(words, input[0], output[1]);
    }
    closeEnd(input[0]);
    closeEnd(output[1]);
    if (!arePipes) throw std::system_error(failure, std::system_category(), "pipe");
    if (started != 0) {
      throw InitializationError(words[0] +
                                " cannot be started: " + std::system_category().message(started));
    }
  }

  int spawn(std::vector<std::string>& words, int input, int output) {
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t pid = -1;
    const int failure = ::posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure == 0) pid_ = pid;
    return failure;
  }

  // "listening on http://127.0.0.1:40123"
  std::string readUrl() {
    std::string line;
    for (char c = '\0'; line.empty() || line.back() != '\n';) {
      const ssize_t count = ::read(output_, &c, 1);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) throw InitializationError("hcy-local-server did not start");
      line.push_back(c);
    }
    line.pop_back();
    return line.substr(line.rfind(' ') + 1);
  }

  void awaitEnd() noexcept {
    constexpr int tries = 1000;
    for (int i = 0; i < tries; ++i) {
      const pid_t ended = ::waitpid(pid_, nullptr, WNOHANG);
      if (ended == pid_ || (ended < 0 && errno != EINTR)) {
        pid_ = -1;
        return;
      }
      ::usleep(10'000);
    }
    ::kill(pid_, SIGKILL);
    while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) continue;
    pid_ = -1;
  }

  // Sends the outputs of a function, and gets the next call.
  void work(const std::string& url) {
    try {
      Config config(*library_);
      config.setTimeout(std::chrono::seconds(0)).setResponseSizeLimit(0xFFFFFFFF);
      Context context(config);
      std::vector<Array> answer = none();
      while (!isClosing_) answer = exchange(context, url, std::move(answer));
    } catch (const std::exception&) {
      // Not even a context or an empty answer can be allocated. Calls wait for other threads, or
      // until they time out.
    }
  }

  // What a worker sends if it has no answer.
  static std::vector<Array> none() {
    std::vector<Array> answer;
    answer.emplace_back(0.0);
    return answer;
  }

  std::vector<Array> exchange(Context& context, const std::string& url, std::vector<Array> answer) {
    try {
      return answerTo(context.feval(url, answer).at(0));
    } catch (const UsageError& error) {
      // An output is an empty Array. Nothing has been sent.
      if (answer.size() > 1) return failed(answer[0], "cpp:exception", error.what(), {});
      return none();
    } catch (const CallError&) {
      // The answer is lost; the server, or only this call, has ended.
      std::this_thread::sleep_for(std::chrono::milliseconds(isClosing_ ? 0 : 10));
      return none();
    } catch (const IncompleteReply&) {
      return none();
    }
  }

  std::vector<Array> answerTo(const Array& call) {
    if (call.size() == 0) return none();  // there was no call for a while
    const Array ticket = call[0];
    std::string name;
    try {
      name = call[1].toString();
      const int nargout = static_cast<int>(call[2].scalar());
      Inputs inputs;
      for (std::size_t i = 3; i < call.size(); ++i) inputs.push_back(call[i]);
      std::vector<Array> answer;
      answer.push_back(Array(ticket.scalar()));
      answer.emplace_back("outputs");
      for (Array& output : functions_.at(name)(std::move(inputs), nargout)) {
        answer.push_back(std::move(output));
      }
      return answer;
    } catch (const FunctionError& error) {
      return failed(ticket, error.identifier(), error.what(), error.stack());
    } catch (const std::exception& error) {
      return failed(ticket, "cpp:exception", error.what(), {{"", name, 0}});
    } catch (...) {
      return failed(ticket, "cpp:exception", "an exception that is not a std::exception",
                    {{"", name, 0}});
    }
  }

  static std::vector<Array> failed(const Array& ticket, const std::string& identifier,
                                   const std::string& message,
                                   const std::vector<StackFrame>& stack) {
    std::vector<Array> answer;
    answer.push_back(Array(ticket.scalar()));
    answer.emplace_back("error");
    answer.push_back(text(identifier));
    answer.push_back(text(message));
    Array frames = Array::cells({1, 3 * stack.size()});
    std::size_t i = 0;
    for (const StackFrame& frame : stack) {
      for (const Array& part :
           {text(frame.file), text(frame.name), Array(static_cast<double>(frame.line))}) {
        hcySetCell(frames.get(), i++, part.get());
      }
    }
    answer.push_back(std::move(frames));
    return answer;
  }

  // The message may be any bytes, but a char array is made only from valid UTF-8.
  static Array text(const std::string& bytes) {
    try {
      return Array(bytes);
    } catch (const UsageError&) {
      std::string ascii = bytes;
      for (char& c : ascii) {
        if (static_cast<unsigned char>(c) >= 0x80) c = '?';
      }
      return Array(ascii);
    }
  }

  const Library* library_;
  std::map<std::string, Function> functions_;
  unsigned threadCount_ = 1;
  std::vector<std::string> options_;
  std::string program_;
  pid_t pid_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::string url_;
  std::atomic<bool> isClosing_{false};
  std::vector<std::thread> threads_;
};

}  // namespace hcyclient

#endif
