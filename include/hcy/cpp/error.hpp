/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file error.hpp
 * @brief What the C++ API throws. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_ERROR_HPP
#define HCY_CPP_ERROR_HPP

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace hcyclient {

/**
 * @defgroup cpp_errors C++: errors
 * @brief What the C++ API throws.
 * @{
 */

/** The base of all exceptions that this header throws. */
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** The library, a configuration or a context could not be started. */
class InitializationError : public Error {
 public:
  using Error::Error;
};

/** An array was asked for what it is not or does not hold (another class, an index or field that
 *  is not there), a value cannot be handed to the library (text that is not UTF-8, a NUL inside a
 *  URL or name, a size over 2147483647, a URL that is not http or https), or an object was used
 *  that has been moved from or is in use by another thread. */
class UsageError : public Error {
 public:
  using Error::Error;
};

/** An array of a reply is incomplete: fewer elements arrived than its dimensions say, its
 *  dimensions did not arrive, or its column starts and row indices do not describe a sparse array
 *  of its dimensions. what() says which array, and how many elements its dimensions name. The usual
 *  reason is that the response size limit cut the reply: see Config::setResponseSizeLimit().
 *
 *  Context::feval() throws it for an incomplete output. An array that was adopted, and an element
 *  of a cell or struct array, are checked when they are read. */
class IncompleteReply : public Error {
 public:
  using Error::Error;
};

/** A call failed: the base of the three kinds of failure. The context can be used for more. */
class CallError : public Error {
 public:
  using Error::Error;
};

/** The server answered with an HTTP status other than 200. */
class HttpError : public CallError {
 public:
  /** Takes over status and reason. */
  HttpError(std::uint32_t status, const std::string& reason)
      : CallError("HTTP status " + std::to_string(status) + (reason.empty() ? "" : " ") + reason),
        status_(status),
        reason_(std::make_shared<const std::string>(reason)) {}

  /** The HTTP status. */
  std::uint32_t status() const noexcept { return status_; }
  /** The reason phrase behind the status, without its line end; may be empty. */
  const std::string& reason() const noexcept { return *reason_; }

 private:
  std::uint32_t status_;
  std::shared_ptr<const std::string> reason_;
};

/** One frame of the stack of an error that a function raised. */
struct StackFrame {
  std::string file;      /**< file of the function */
  std::string name;      /**< name of the function */
  std::int32_t line = 0; /**< line in the file; 0 when it is not known */
};

/** The function ran on the server and raised an error; what() is its message. */
class FunctionError : public CallError {
 public:
  /** Takes over the account of the error. */
  FunctionError(const std::string& message, std::string identifier, std::vector<StackFrame> stack)
      : CallError(message),
        details_(
            std::make_shared<const Details>(Details{std::move(identifier), std::move(stack)})) {}

  /** The identifier of the error, such as `halcyon:argument:size`. */
  const std::string& identifier() const noexcept { return details_->identifier; }
  /** The stack in the server's order, the innermost function first. */
  const std::vector<StackFrame>& stack() const noexcept { return details_->stack; }

 private:
  // Shared, so that copying the exception cannot fail.
  struct Details {
    std::string identifier;
    std::vector<StackFrame> stack;
  };
  std::shared_ptr<const Details> details_;
};

/** The call failed otherwise; what() says how: transport, time-out, size limit, memory, or a
 *  number of outputs that differs. */
class TransportError : public CallError {
 public:
  using CallError::CallError;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_ERROR_HPP
