/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file outputs.hpp
 * @brief The outputs of a call. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_OUTPUTS_HPP
#define HCY_CPP_OUTPUTS_HPP

#include <cstddef>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/error.hpp>
#include <string>
#include <utility>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_runtime
 *  @{ */

/**
 * The outputs of a call: a vector of arrays that checks every index.
 *
 * Accessing an element of a temporary (`context.feval(url)[0]`) moves it out, so that nothing can
 * refer to outputs that no longer exist: `context.feval(url)[0].span<double>()` does not compile.
 */
class Outputs : public std::vector<Array> {
 public:
  Outputs() = default;

  /** Output i; throws UsageError if the call returned fewer outputs. */
  Array& at(std::size_t i) & { return vector::operator[](checked(i)); }
  /** The read-only overload. */
  const Array& at(std::size_t i) const& { return vector::operator[](checked(i)); }
  /** Moves output i out of a temporary. */
  Array at(std::size_t i) && { return std::move(at(i)); }
  /** The outputs do not outlive the expression. */
  Array at(std::size_t i) const&& = delete;

  Array& operator[](std::size_t i) & { return at(i); }            /**< Same as at(). */
  const Array& operator[](std::size_t i) const& { return at(i); } /**< Same as at(). */
  Array operator[](std::size_t i) && { return std::move(at(i)); } /**< Same as at(). */
  Array operator[](std::size_t i) const&& = delete;               /**< Same as at(). */
  Array& front() & { return at(0); }                              /**< Same as at(0). */
  const Array& front() const& { return at(0); }                   /**< Same as at(0). */
  Array front() && { return std::move(at(0)); }                   /**< Same as at(0). */
  Array front() const&& = delete;                                 /**< Same as at(0). */
  Array& back() & { return at(size() - 1); }                      /**< Same as at(size() - 1). */
  const Array& back() const& { return at(size() - 1); }           /**< Same as at(size() - 1). */
  Array back() && { return std::move(at(size() - 1)); }           /**< Same as at(size() - 1). */
  Array back() const&& = delete;                                  /**< Same as at(size() - 1). */

 private:
  std::size_t checked(std::size_t i) const {
    if (i < size()) return i;
    throw UsageError("output " + std::to_string(i) + " does not exist: the call returned " +
                     std::to_string(size()));
  }
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_OUTPUTS_HPP
