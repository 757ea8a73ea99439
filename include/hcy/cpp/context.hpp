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
#include <hcy/cpp/whole.hpp>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hcyclient {

namespace detail {

// Handles side by side, as a call takes and gives them; a few need no memory.
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

// Whether somebody is at work. Whoever moves an object moves it while nobody is.
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

// libcurl would also read files and speak other protocols, and guess where the URL names none.
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

}  // namespace detail

/** @addtogroup cpp_runtime
 *  @{ */

/** One connection to a server, kept alive between calls; used by one thread at a time. It is not to
 *  be moved or destroyed during a call. */
class Context {
 public:
  /** A context with a copy of the settings; throws InitializationError when memory or a transfer
   *  handle cannot be had, UsageError when the Config has been moved from. */
  explicit Context(const Config& config)
      : runtime_(config.runtime()),
        responseSizeLimit_(runtime_->getResponseSizeLimit(config.get())),
        context_(create(config), {runtime_}) {}

  /**
   * Evaluates a function on a server and returns its outputs: hcyClientRuntime::feval.
   *
   * @param url     full URL of the function: http or https.
   * @param inputs  arrays, or values that become arrays: `{a, 2.0, "text", {1.0, 2.0}}`.
   * @param nargout number of outputs wanted.
   * @return nargout arrays.
   * @throws HttpError, FunctionError or TransportError when the call fails, IncompleteReply when an
   *         output did not arrive as a whole (the elements of cells and structs are looked at when
   *         they are read), UsageError when the call cannot be made: the URL is of another scheme
   * or none, the number of outputs is negative, an Array is empty, the Context has been moved from,
   * or another thread is calling on it.
   */
  Outputs feval(const std::string& url, std::initializer_list<Input> inputs = {}, int nargout = 1) {
    return call(url, inputs.begin(), inputs.size(), nargout);
  }
  /** The same with inputs that are arrays already. */
  Outputs feval(const std::string& url, const std::vector<Array>& inputs, int nargout = 1) {
    return call(url, inputs.data(), inputs.size(), nargout);
  }

  /** The context in the C interface, which stays owned here; null if moved from. */
  hcyClientContext* get() const noexcept { return context_.get(); }

 private:
  struct Destroyer {
    const hcyClientRuntime* runtime;
    void operator()(hcyClientContext* context) const noexcept { runtime->destroyContext(context); }
  };

  // What a call stores, to be destroyed unless it is taken.
  struct Received : detail::Handles<hcyArray*> {
    explicit Received(std::size_t count) : Handles(count), count_(count) {}
    Received(const Received&) = delete;
    Received& operator=(const Received&) = delete;
    ~Received() {
      for (std::size_t i = 0; i < count_; ++i) hcyDestroyArray(data()[i]);
    }
    Array take(std::size_t i) noexcept { return Array::adopt(std::exchange(data()[i], nullptr)); }

   private:
    std::size_t count_;
  };

  // Keeps other threads out.
  class Turn {
   public:
    explicit Turn(detail::BusyFlag& flag) : flag_(flag) {
      if (!flag_.raise()) {
        throw UsageError("the Context is in use by another call: each thread needs one of its own");
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
    throw InitializationError("memory or a transfer handle for a context cannot be had");
  }

  static const hcyArray* handleOf(const Input& input) { return input.get(); }
  static const hcyArray* handleOf(const Array& input) { return Input(input).get(); }

  template <class Inputs>
  Outputs call(const std::string& url, const Inputs* inputs, std::size_t nargin, int nargout) {
    if (!context_) throw UsageError("the Context has been moved from");
    detail::requireHttp(url);
    if (nargout < 0) throw UsageError("the number of outputs is negative");
    if (nargin > detail::largestSize) throw UsageError("there are too many inputs");
    const Turn turn(busy_);
    detail::Handles<const hcyArray*> handles(nargin);
    for (std::size_t i = 0; i < nargin; ++i) handles.data()[i] = handleOf(inputs[i]);
    const auto count = static_cast<std::size_t>(nargout);
    Received received(count);
    Outputs outputs;
    outputs.reserve(count);
    if (runtime_->feval(get(), detail::cText(url), nargout, received.data(),
                        static_cast<std::int32_t>(nargin), handles.data()) != 0) {
      throwFailure();
    }
    for (std::size_t i = 0; i < count; ++i) {
      if (!detail::isWhole(received.data()[i])) throwIncomplete(i, received.data()[i]);
      outputs.push_back(received.take(i));
    }
    return outputs;
  }

  [[noreturn]] void throwIncomplete(std::size_t number, const hcyArray* output) const {
    throw IncompleteReply("output " + std::to_string(number) +
                          " (counted from 0) is incomplete: " + detail::lackOf(output) +
                          "; the response size limit (Config::setResponseSizeLimit, here " +
                          std::to_string(responseSizeLimit_) + " bytes) may have cut the reply");
  }

  [[noreturn]] void throwFailure() const {
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
                      std::string(line.substr(0, line.find_first_of("\r\n"))));
    }
    if (record.kind != HCY_VORTEN_ERROR) throw TransportError(record.details.generic.details);
    const auto& error = record.details.vorten;
    std::vector<StackFrame> stack;
    for (std::size_t i = 0; error.stack != nullptr && i < error.stackDepth; ++i) {
      stack.push_back({error.stack[i].file, error.stack[i].name, error.stack[i].line});
    }
    throw FunctionError(error.message, error.identifier, std::move(stack));
  }

  const hcyClientRuntime* runtime_;
  std::uint32_t responseSizeLimit_;
  detail::BusyFlag busy_;
  std::unique_ptr<hcyClientContext, Destroyer> context_;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_CONTEXT_HPP
