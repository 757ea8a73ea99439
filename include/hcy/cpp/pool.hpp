/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file pool.hpp
 * @brief Calls on several threads. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_POOL_HPP
#define HCY_CPP_POOL_HPP

#include <algorithm>
#include <array>
#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <deque>
#include <future>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/config.hpp>
#include <hcy/cpp/context.hpp>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/input.hpp>
#include <hcy/cpp/job.hpp>
#include <hcy/cpp/retry.hpp>
#include <hcy/cpp/sequence.hpp>
#include <hcy/cpp/shape.hpp>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_runtime
 *  @{ */

class PoolFunction;

/** Options of a Pool. */
struct PoolOptions {
  std::size_t queue = 0; /**< calls that may wait for a thread; 0 for twice the number of threads */
  Retry retry = {};      /**< whether a call that the server did not accept is repeated */
};

/**
 * Makes calls on several threads, each with its own Context.
 *
 * @code
 * hcyclient::Pool pool(config, 8);
 * std::future<hcyclient::Array> sum = pool.call(url, 2.0, 3.0);
 * std::vector<hcyclient::Array> all = pool.map(url, std::vector<double>{1, 2, 3});
 * @endcode
 *
 * A call waits in a queue until a thread is free. If the queue is full, call() and feval() block
 * until there is room. Several threads may call all members at once. The Pool's threads block
 * SIGPIPE. The Library must outlive the Pool.
 */
class Pool {
  // Waits for all calls, because they use objects that the caller owns.
  struct Results {
    Results() = default;
    Results(const Results&) = delete;
    Results& operator=(const Results&) = delete;
    ~Results() {
      for (const std::future<Array>& future : futures) {
        if (future.valid()) future.wait();
      }
    }
    std::vector<std::future<Array>> futures;
  };

  template <class Work>
  auto submit(Work work) {
    auto job = std::make_unique<detail::JobOf<Work>>(std::move(work));
    auto future = job->future();
    std::unique_lock<std::mutex> lock(mutex_);
    hasRoom_.wait(lock, [this] { return isStopping_ || jobs_.size() < room_; });
    if (isStopping_) throw UsageError("the Pool has been stopped");
    jobs_.push_back(std::move(job));
    lock.unlock();
    hasWork_.notify_one();
    return future;
  }

  template <class Call>
  auto attempt(const Call& call) {
    return retry_.run(call, [this](std::chrono::milliseconds pause) {
      std::unique_lock<std::mutex> lock(mutex_);
      return !isAbandoned_.wait_for(lock, pause, [this] { return dropsJobs_; });
    });
  }

  std::future<Array> submitCall(std::string_view url, std::vector<Array> inputs) {
    return submit([this, url = std::string(url), inputs = std::move(inputs)](Context& context) {
      return attempt([&] { return context.call(url, inputs); });
    });
  }

  template <std::size_t N>
  std::future<std::array<Array, N>> submitFeval(std::string_view url, std::vector<Array> inputs) {
    return submit([this, url = std::string(url), inputs = std::move(inputs)](Context& context) {
      return attempt([&] { return context.feval<N>(url, inputs); });
    });
  }

 public:
  /** Starts the threads. Throws UsageError if `threads` is 0, InitializationError or
   *  std::system_error if a context or a thread cannot be created. */
  explicit Pool(const Config& config, Size threads, const PoolOptions& options = {})
      : Pool(threads, options) {
    if (threads == 0) throw UsageError("a Pool needs at least one thread");
    contexts_.reserve(threads);
    for (std::size_t i = 0; i < threads; ++i) contexts_.emplace_back(config);
    threads_.reserve(threads);
    for (Context& context : contexts_) threads_.emplace_back([this, &context] { work(context); });
  }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  /** The same as stop(): waits for all calls. */
  ~Pool() { stop(); }

  /** Makes a call for any number of outputs.
   *
   * @param url     full URL of the function.
   * @param inputs  the arrays, which are moved in.
   * @param nargout number of outputs wanted.
   * @return a future of nargout arrays, which throws what Context::feval() throws, or
   *         CallAbandoned. Its destructor does not wait.
   * @throws UsageError if the Pool has been stopped.
   */
  std::future<std::vector<Array>> feval(std::string_view url, std::vector<Array>&& inputs,
                                        int nargout = 1) {
    return submit([this, url = std::string(url), inputs = std::move(inputs),
                   nargout](Context& context) -> std::vector<Array> {
      return attempt([&] { return context.feval(url, inputs, nargout); });
    });
  }
  /** The same with copies of the inputs. */
  std::future<std::vector<Array>> feval(std::string_view url, const std::vector<Array>& inputs,
                                        int nargout = 1) {
    return feval(url, detail::queued(inputs), nargout);
  }
  /** The same with inputs in braces: `pool.feval(url, {a, 2.0, {1.0, 2.0}}, 2)`. An Array is moved
   *  in if it is an rvalue, and copied otherwise. */
  std::future<std::vector<Array>> feval(std::string_view url,
                                        std::initializer_list<detail::QueuedInput> inputs = {},
                                        int nargout = 1) {
    return feval(url, detail::queued(inputs), nargout);
  }
  template <class First, class... More, detail::IfInput<First> = 0>
  void feval(std::string_view, First&&, More&&...) = delete; /**< Write feval(url, {a, b}). */

  /** Makes a call for N outputs: `pool.feval<3>(url, a)` returns a
   *  `std::future<std::array<Array, 3>>`. Otherwise the same as call(). */
  template <std::size_t N, class... Values>
  std::future<std::array<Array, N>> feval(std::string_view url, Values&&... values) {
    return submitFeval<N>(url, detail::queuedValues(std::forward<Values>(values)...));
  }
  /** The same with inputs in braces. */
  template <std::size_t N>
  std::future<std::array<Array, N>> feval(std::string_view url,
                                          std::initializer_list<detail::QueuedInput> inputs) {
    return submitFeval<N>(url, detail::queued(inputs));
  }

  /** Makes a call for one output. Inputs are the same as for Context::call(). An Array, or a
   *  std::vector<Array> alone, is moved in if it is an rvalue. An lvalue is copied, and so is an
   *  element of a container that is not const (`cell[0]`). In other respects, the call is the same
   * as feval(). */
  template <class... Values>
  std::future<Array> call(std::string_view url, Values&&... values) {
    return submitCall(url, detail::queuedValues(std::forward<Values>(values)...));
  }
  /** The same with inputs in braces, which may include lists: `pool.call(url, {{1.0, 2.0}, a})`. */
  std::future<Array> call(std::string_view url, std::initializer_list<detail::QueuedInput> inputs) {
    return submitCall(url, detail::queued(inputs));
  }

  /** Calls a function once for each element of a range, with the element as its only input, and
   *  returns the outputs in the same order. If calls fail, throws the exception of the first one in
   *  the order of the range, after all calls have ended. Do not call it from code that runs in the
   *  Pool itself. */
  template <class Range>
  std::vector<Array> map(std::string_view url, const Range& inputs) {
    // Elements that the range makes while it is iterated over must live until their calls end.
    using Element = decltype(*std::begin(inputs));
    std::deque<std::decay_t<Element>> made;
    Results results;
    const auto start = [&](const auto& input) {
      results.futures.push_back(submit([this, url, &input](Context& context) {
        return attempt([&] { return context.call(url, input); });
      }));
    };
    for (auto&& input : inputs) {
      if constexpr (detail::isMultiPass<Range> && std::is_lvalue_reference_v<Element>) {
        start(input);
      } else {
        start(made.emplace_back(std::forward<decltype(input)>(input)));
      }
    }
    std::vector<Array> outputs;
    outputs.reserve(results.futures.size());
    for (std::future<Array>& result : results.futures) outputs.push_back(result.get());
    return outputs;
  }

  /** The same with the elements of an initializer list: `pool.map(url, {1.0, 2.0})`. */
  template <class T>
  std::vector<Array> map(std::string_view url, std::initializer_list<T> inputs) {
    return map<std::initializer_list<T>>(url, inputs);
  }

  /** The function at a URL, which can be called on the Pool like a C++ function:
   *  `auto plus = pool.function(url)`. */
  PoolFunction function(std::string_view url) &;
  PoolFunction function(std::string_view url) && = delete; /**< Keep the Pool. */

  /** Waits for all calls, including those still in the queue, and ends the threads. Further calls
   *  throw UsageError. */
  void stop() noexcept { finish(false); }
  /** Drops the calls that are still in the queue (their futures throw CallAbandoned), waits for the
   *  calls in progress, and ends the threads. Further calls throw UsageError. */
  void abandon() noexcept { finish(true); }

 private:
  // From here on, the destructor ends the threads if one of them cannot be created.
  Pool(Size threads, const PoolOptions& options)
      : retry_(options.retry), room_(options.queue > 0 ? options.queue : 2 * threads) {}

  void work(Context& context) {
    // Otherwise a server that closes a connection during a write would end the process.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    while (const std::unique_ptr<detail::Job> job = next()) job->run(context);
  }

  // Returns null if there is nothing left to do.
  std::unique_ptr<detail::Job> next() {
    std::unique_lock<std::mutex> lock(mutex_);
    hasWork_.wait(lock, [this] { return isStopping_ || !jobs_.empty(); });
    if (jobs_.empty()) return nullptr;
    std::unique_ptr<detail::Job> job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    hasRoom_.notify_one();
    return job;
  }

  void finish(bool dropJobs) noexcept {
    std::deque<std::unique_ptr<detail::Job>> dropped;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      isStopping_ = true;
      if (dropJobs) {
        dropsJobs_ = true;
        dropped.swap(jobs_);
      }
    }
    hasWork_.notify_all();
    hasRoom_.notify_all();
    isAbandoned_.notify_all();
    for (const std::unique_ptr<detail::Job>& job : dropped) job->abandon();
    // One thread joins the others; any other thread that stops the Pool waits for it.
    const std::lock_guard<std::mutex> lock(joining_);
    for (std::thread& thread : threads_) {
      if (thread.joinable()) thread.join();
    }
  }

  const Retry retry_;
  const std::size_t room_;
  std::vector<Context> contexts_;
  std::vector<std::thread> threads_;
  std::mutex mutex_;
  std::mutex joining_;
  std::condition_variable hasWork_;
  std::condition_variable hasRoom_;
  std::condition_variable isAbandoned_;
  std::deque<std::unique_ptr<detail::Job>> jobs_;
  bool isStopping_ = false;
  bool dropsJobs_ = false;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_POOL_HPP
