/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file job.hpp
 * @brief Calls that wait for a thread of a Pool, with their inputs. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_JOB_HPP
#define HCY_CPP_JOB_HPP

#include <exception>
#include <future>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/context.hpp>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/input.hpp>
#include <hcy/cpp/slot.hpp>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_errors
 *  @{ */

/** The call was dropped before it began, because Pool::abandon() was called. */
class CallAbandoned : public Error {
 public:
  using Error::Error;
};

/** @} */

namespace detail {

// A call that waits for a thread, and the promise of its result.
class Job {
 public:
  Job() = default;
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;
  virtual ~Job() = default;
  virtual void run(Context& context) noexcept = 0;
  virtual void abandon() noexcept = 0;
};

template <class Work>
class JobOf : public Job {
 public:
  using Result = std::invoke_result_t<Work&, Context&>;

  explicit JobOf(Work work) : work_(std::move(work)) {}
  std::future<Result> future() { return promise_.get_future(); }
  void run(Context& context) noexcept override {
    try {
      promise_.set_value(work_(context));
    } catch (...) {
      promise_.set_exception(std::current_exception());
    }
  }
  void abandon() noexcept override {
    promise_.set_exception(
        std::make_exception_ptr(CallAbandoned("the Pool was abandoned before the call began")));
  }

 private:
  Work work_;
  std::promise<Result> promise_;
};

// An array for the queue: an lvalue is copied, since the caller keeps it, and so is a Slot, whose
// array the container shares.
template <class T>
Array kept(T&& value) {
  RequireInputs<T>();
  if constexpr (std::is_same_v<T, Array&> || std::is_same_v<T, const Array&>) {
    return value.copy();
  } else if constexpr (std::is_same_v<std::decay_t<T>, Slot>) {
    return std::forward<T>(value).copy();
  } else {
    return Array(std::forward<T>(value));
  }
}

// An element of a list of inputs in braces. Its Array is mutable because the elements of such a
// list are const, but the Pool must move the Array to its queue.
class QueuedInput {
 public:
  template <class T, IfInput<T> = 0>
  QueuedInput(T&& value) : array_(kept(std::forward<T>(value))) {}
  template <class T, IfValue<T> = 0>
  QueuedInput(std::initializer_list<T> values) : array_(values) {}
  QueuedInput(const QueuedInput&) = delete;
  QueuedInput& operator=(const QueuedInput&) = delete;
  ~QueuedInput() = default;

  Array take() const noexcept { return std::move(array_); }

 private:
  mutable Array array_;
};

inline std::vector<Array> queued(std::initializer_list<QueuedInput> inputs) {
  std::vector<Array> arrays;
  arrays.reserve(inputs.size());
  for (const QueuedInput& input : inputs) arrays.push_back(input.take());
  return arrays;
}

// The arrays of a list that the caller keeps (copied) or gives away (moved).
inline std::vector<Array> queued(std::vector<Array>&& inputs) { return std::move(inputs); }
inline std::vector<Array> queued(const std::vector<Array>& inputs) {
  std::vector<Array> copies;
  copies.reserve(inputs.size());
  for (const Array& input : inputs) copies.push_back(input.copy());
  return copies;
}

// The inputs of a call: one list of arrays, or any values.
template <class... Values>
std::vector<Array> queuedValues(Values&&... values) {
  if constexpr (areArrays<Values...>) {
    return queued(std::forward<Values>(values)...);
  } else {
    std::vector<Array> arrays;
    arrays.reserve(sizeof...(Values));
    (arrays.push_back(kept(std::forward<Values>(values))), ...);
    return arrays;
  }
}

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_JOB_HPP
