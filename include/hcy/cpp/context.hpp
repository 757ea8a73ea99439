/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file context.hpp
 * @brief Calls. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_CONTEXT_HPP
#define HCY_CPP_CONTEXT_HPP

#include <hcy/hcyclient.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/config.hpp>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/input.hpp>
#include <hcy/cpp/outputs.hpp>
#include <hcy/cpp/text.hpp>
#include <hcy/cpp/whole.hpp>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {

namespace detail {

// An array of handles for a call; a few handles need no allocation.
template <class Handle>
class Handles {
 public:
  explicit Handles(std::size_t count) {
    if (count > few_.size()) many_.resize(count);
  }
  Handle* data() noexcept { return many_.empty() ? few_.data() : many_.data(); }

 private:
  std::array<Handle, 8> few_{};
  std::vector<Handle> many_;
};

// Whether a call is in progress. An object is moved only while there is none.
class BusyFlag {
 public:
  BusyFlag() = default;
  BusyFlag(BusyFlag&&) noexcept {}
  BusyFlag& operator=(BusyFlag&&) noexcept { return *this; }
  BusyFlag(const BusyFlag&) = delete;
  BusyFlag& operator=(const BusyFlag&) = delete;
  ~BusyFlag() = default;

  bool raise() noexcept { return !isRaised_.exchange(true, std::memory_order_acquire); }
  void lower() noexcept { isRaised_.store(false, std::memory_order_release); }

 private:
  std::atomic<bool> isRaised_ = false;
};

// libcurl would also read files and speak other protocols, and guess the protocol if the URL does
// not name one.
inline void requireHttp(std::string_view url) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    const auto isSame = [](char lower, char c) {
      return lower == (c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c);
    };
    if (url.size() >= scheme.size() &&
        std::equal(scheme.begin(), scheme.end(), url.begin(), isSame)) {
      return;
    }
  }
  throw UsageError("the URL does not begin with http:// or https://");
}

// Whether the one input is a list of arrays.
template <class... Values>
constexpr bool areArrays = sizeof...(Values) == 1 &&
                           (std::is_base_of_v<std::vector<Array>, std::decay_t<Values>> && ...);

}  // namespace detail

/** @addtogroup cpp_runtime
 *  @{ */

class Function;

/** One connection to a server, kept alive between calls. Use it on one thread at a time, and do not
 *  move or destroy it during a call. */
class Context {
 public:
  /** A context with a copy of the settings. Throws InitializationError if memory or a transfer
   *  handle cannot be allocated, UsageError if the Config has been moved from. */
  explicit Context(const Config& config)
      : runtime_(config.runtime()),
        responseSizeLimit_(runtime_->getResponseSizeLimit(config.get())),
        context_(create(config), {runtime_}) {}

  /**
   * Calls a function that returns one array: `Array x = context.call(url, a, 2.0, "text")`.
   *
   * @param url    full http or https URL of the function, as any kind of string.
   * @param inputs arrays, elements of containers (`cell[0]`), or values that an Array can be made
   *               from. A std::vector<Array> alone is the list of inputs.
   * @return the output.
   * @throws CallError if the call fails: HttpError, FunctionError or TransportError.
   * @throws IncompleteReply if an output is incomplete (elements of cells and structs are checked
   *         when they are read).
   * @throws UsageError if the call cannot be made: the URL does not begin with http:// or https://,
   *         an Array is empty, the Context has been moved from, or another thread is making a call
   *         on it.
   */
  template <class... Values>
  Array call(const CString& url, Values&&... inputs) {
    return callFor<1>(
        url, [](Received& received) { return received.take(0); }, std::forward<Values>(inputs)...);
  }
  /** The same with inputs in braces, which may include lists: `context.call(url, {{1.0, 2.0}, a})`.
   */
  Array call(const CString& url, std::initializer_list<Input> inputs) {
    Received received(1);
    evaluate(url, inputs.begin(), inputs.size(), received);
    return received.take(0);
  }

  /** Calls a function that returns N arrays: `auto [u, s, v] = context.feval<3>(url, a)`. Inputs
   *  and failures are the same as for call(). */
  template <std::size_t N, class... Values>
  std::array<Array, N> feval(const CString& url, Values&&... inputs) {
    return callFor<N>(
        url, [](Received& received) { return takeAll(received, std::make_index_sequence<N>()); },
        std::forward<Values>(inputs)...);
  }
  /** The same with inputs in braces. */
  template <std::size_t N>
  std::array<Array, N> feval(const CString& url, std::initializer_list<Input> inputs) {
    Received received(N);
    evaluate(url, inputs.begin(), inputs.size(), received);
    return takeAll(received, std::make_index_sequence<N>());
  }

  /**
   * Calls a function and returns its outputs: hcyClientRuntime::feval.
   *
   * @param url     full http or https URL of the function.
   * @param inputs  arrays, or values that become arrays: `{a, 2.0, "text", {1.0, 2.0}}`.
   * @param nargout number of outputs wanted.
   * @return nargout arrays.
   * @throws what call() throws; UsageError also if the number of outputs is negative.
   */
  Outputs feval(const CString& url, std::initializer_list<Input> inputs = {}, int nargout = 1) {
    return outputsOf(url, inputs.begin(), inputs.size(), nargout);
  }
  /** The same with a vector of inputs. */
  Outputs feval(const CString& url, const std::vector<Array>& inputs, int nargout = 1) {
    return outputsOf(url, inputs.data(), inputs.size(), nargout);
  }
  template <class First, class... More, detail::IfInput<First> = 0>
  Outputs feval(const CString&, First&&, More&&...) = delete; /**< Write feval(url, {a, b}). */

  /** The function at a URL, which can be called like a C++ function:
   *  `auto plus = context.function(url)`. */
  Function function(std::string_view url) &;
  Function function(std::string_view url) && = delete; /**< Keep the context. */

  /** The context in the C interface, which the Context still owns; null if moved from. */
  hcyClientContext* get() const noexcept { return context_.get(); }

 private:
  struct Destroyer {
    const hcyClientRuntime* runtime;
    void operator()(hcyClientContext* context) const noexcept { runtime->destroyContext(context); }
  };

  // The outputs of a call; destroys those that are not taken.
  struct Received : detail::Handles<hcyArray*> {
    explicit Received(std::size_t count) : Handles(count), count_(count) {}
    Received(const Received&) = delete;
    Received& operator=(const Received&) = delete;
    ~Received() {
      for (std::size_t i = 0; i < count_; ++i) hcyDestroyArray(data()[i]);
    }
    std::size_t size() const noexcept { return count_; }
    Array take(std::size_t i) noexcept { return Array::adopt(std::exchange(data()[i], nullptr)); }

   private:
    std::size_t count_;
  };

  // Keeps other threads out.
  class Turn {
   public:
    explicit Turn(detail::BusyFlag& flag) : flag_(flag) {
      if (!flag_.raise()) {
        throw UsageError("the Context is in use by another call: each thread needs its own");
      }
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { flag_.lower(); }

   private:
    detail::BusyFlag& flag_;
  };

  static hcyClientContext* create(const Config& config) {
    hcyClientContext* context = nullptr;
    if (config.runtime()->createContext(&context, config.get()) == 0) return context;
    if (context != nullptr) config.runtime()->destroyContext(context);
    throw InitializationError("memory or a transfer handle for a context cannot be allocated");
  }

  static const hcyArray* handleOf(const Input& input) { return input.get(); }
  static const hcyArray* handleOf(const Array& input) { return Input(input).get(); }

  template <std::size_t... I>
  static std::array<Array, sizeof...(I)> takeAll(Received& received, std::index_sequence<I...>) {
    static_cast<void>(received);  // if there are none to take
    return {received.take(I)...};
  }

  // Makes arrays of the values, makes the call, and takes N outputs.
  template <std::size_t N, class Take, class... Values>
  auto callFor(const CString& url, const Take& take, Values&&... values) {
    Received received(N);
    if constexpr (detail::areArrays<Values...>) {
      evaluate(url, values.data()..., (values.size(), ...), received);
    } else {
      detail::RequireInputs<Values...>();
      const std::initializer_list<Input> inputs = {Input(std::forward<Values>(values))...};
      evaluate(url, inputs.begin(), inputs.size(), received);
    }
    return take(received);
  }

  template <class Inputs>
  Outputs outputsOf(const CString& url, const Inputs* inputs, std::size_t nargin, int nargout) {
    if (nargout < 0) throw UsageError("the number of outputs is negative");
    const auto count = static_cast<std::size_t>(nargout);
    Received received(count);
    Outputs outputs;
    outputs.reserve(count);
    evaluate(url, inputs, nargin, received);
    for (std::size_t i = 0; i < count; ++i) outputs.push_back(received.take(i));
    return outputs;
  }

  template <class Inputs>
  void evaluate(const CString& url, const Inputs* inputs, std::size_t nargin, Received& received) {
    if (!context_) throw UsageError("the Context has been moved from");
    detail::requireHttp(url.c_str());
    if (nargin > detail::largestSize) throw UsageError("there are too many inputs");
    const Turn turn(busy_);
    detail::Handles<const hcyArray*> handles(nargin);
    for (std::size_t i = 0; i < nargin; ++i) handles.data()[i] = handleOf(inputs[i]);
    if (runtime_->feval(get(), url.c_str(), static_cast<std::int32_t>(received.size()),
                        received.data(), static_cast<std::int32_t>(nargin), handles.data()) != 0) {
      throwFailure(url.c_str());
    }
    for (std::size_t i = 0; i < received.size(); ++i) {
      if (!detail::isWhole(received.data()[i])) throwIncomplete(i, received.data()[i], url.c_str());
    }
  }

  [[noreturn]] void throwIncomplete(std::size_t number, const hcyArray* output,
                                    std::string_view url) const {
    throw IncompleteReply("output " + std::to_string(number) +
                              " (counted from 0) is incomplete: " + detail::lackOf(output) +
                              "; the response size limit (Config::setResponseSizeLimit, here " +
                              std::to_string(responseSizeLimit_) + " bytes) may have cut the reply",
                          url);
  }

  [[noreturn]] void throwFailure(std::string_view url) const {
    struct Record : hcyErrorInfo {
      const hcyClientRuntime* runtime;
      explicit Record(const hcyClientRuntime* table) : hcyErrorInfo{}, runtime(table) {}
      Record(const Record&) = delete;
      Record& operator=(const Record&) = delete;
      ~Record() { runtime->destroyLastErrorInfo(this); }
    } record(runtime_);
    runtime_->getLastErrorInfo(get(), &record);
    if (record.kind == HCY_HTTP_ERROR) {
      const std::string_view line = record.details.http.statusMessage;
      throw HttpError(record.details.http.statusCode,
                      std::string(line.substr(0, line.find_first_of("\r\n"))), url);
    }
    if (record.kind != HCY_VORTEN_ERROR) throw TransportError(record.details.generic.details, url);
    const auto& error = record.details.vorten;
    std::vector<StackFrame> stack;
    for (std::size_t i = 0; error.stack != nullptr && i < error.stackDepth; ++i) {
      stack.push_back({error.stack[i].file, error.stack[i].name, error.stack[i].line});
    }
    throw FunctionError(error.message, error.identifier, std::move(stack), url);
  }

  const hcyClientRuntime* runtime_;
  std::uint32_t responseSizeLimit_;
  detail::BusyFlag busy_;
  std::unique_ptr<hcyClientContext, Destroyer> context_;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_CONTEXT_HPP
