/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file function.hpp
 * @brief A function of a server as an object. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_FUNCTION_HPP
#define HCY_CPP_FUNCTION_HPP

#include <array>
#include <cstddef>
#include <future>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/context.hpp>
#include <hcy/cpp/input.hpp>
#include <hcy/cpp/job.hpp>
#include <hcy/cpp/outputs.hpp>
#include <hcy/cpp/pool.hpp>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_runtime
 *  @{ */

/** A function of a server, which is called like a C++ function. It refers to its Context, which
 *  must outlive it and must not be moved.
 *
 *  @code
 *  auto solve = context.function("http://127.0.0.1:8080/linalg/solve");
 *  Array x = solve(A, b);
 *  @endcode */
class Function {
 public:
  /** A function at a URL; nothing is sent yet. */
  Function(Context& context, std::string_view url) : context_(&context), url_(url) {}

  /** The same as Context::call(). */
  template <class... Values>
  Array operator()(Values&&... inputs) const {
    return context_->call(url_, std::forward<Values>(inputs)...);
  }
  /** The same with inputs in braces. */
  Array operator()(std::initializer_list<Input> inputs) const {
    return context_->call(url_, inputs);
  }
  /** The same as Context::feval() with N outputs: `auto [s, u] = svd.feval<2>(a)`. */
  template <std::size_t N, class... Values>
  std::array<Array, N> feval(Values&&... inputs) const {
    return context_->template feval<N>(url_, std::forward<Values>(inputs)...);
  }
  /** The same with inputs in braces. */
  template <std::size_t N>
  std::array<Array, N> feval(std::initializer_list<Input> inputs) const {
    return context_->template feval<N>(url_, inputs);
  }
  /** The same as Context::feval(). */
  Outputs feval(std::initializer_list<Input> inputs = {}, int nargout = 1) const {
    return context_->feval(url_, inputs, nargout);
  }
  /** The same with a vector of inputs. */
  Outputs feval(const std::vector<Array>& inputs, int nargout = 1) const {
    return context_->feval(url_, inputs, nargout);
  }
  template <class First, class... More, detail::IfInput<First> = 0>
  Outputs feval(First&&, More&&...) const = delete; /**< Write feval({a, b}). */

  /** The URL of the function. */
  const std::string& url() const noexcept { return url_; }

 private:
  Context* context_;
  std::string url_;
};

/** A function of a server, which is called on a Pool and returns futures. It refers to its Pool,
 *  which must outlive it.
 *
 *  @code
 *  auto solve = pool.function("http://127.0.0.1:8080/linalg/solve");
 *  std::future<Array> x = solve(A, b);
 *  @endcode */
class PoolFunction {
 public:
  /** A function at a URL; nothing is sent yet. */
  PoolFunction(Pool& pool, std::string_view url) : pool_(&pool), url_(url) {}

  /** The same as Pool::call(). */
  template <class... Values>
  std::future<Array> operator()(Values&&... inputs) const {
    return pool_->call(url_, std::forward<Values>(inputs)...);
  }
  /** The same with inputs in braces. */
  std::future<Array> operator()(std::initializer_list<detail::QueuedInput> inputs) const {
    return pool_->call(url_, inputs);
  }
  /** The same as Pool::feval() with N outputs. */
  template <std::size_t N, class... Values>
  std::future<std::array<Array, N>> feval(Values&&... inputs) const {
    return pool_->template feval<N>(url_, std::forward<Values>(inputs)...);
  }
  /** The same as Pool::feval(). */
  std::future<std::vector<Array>> feval(std::initializer_list<detail::QueuedInput> inputs = {},
                                        int nargout = 1) const {
    return pool_->feval(url_, inputs, nargout);
  }
  /** The same as Pool::map(). */
  template <class Range>
  std::vector<Array> map(const Range& inputs) const {
    return pool_->map(url_, inputs);
  }

  /** The URL of the function. */
  const std::string& url() const noexcept { return url_; }

 private:
  Pool* pool_;
  std::string url_;
};

inline Function Context::function(std::string_view url) & { return {*this, url}; }
inline PoolFunction Pool::function(std::string_view url) & { return {*this, url}; }

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_FUNCTION_HPP
