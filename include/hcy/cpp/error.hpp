/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file error.hpp
 * @brief The exceptions of the C++ API. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_ERROR_HPP
#define HCY_CPP_ERROR_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <hcy/cpp/reason.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hcyclient {

namespace detail {

// The URL without a name and password before the host, which must not end up in a log.
inline std::string withoutUserInformation(std::string_view url) {
  const std::size_t scheme = url.find("://");
  const std::size_t host = scheme == std::string_view::npos ? 0 : scheme + 3;
  const std::size_t end = std::min(url.find_first_of("/?#", host), url.size());
  const std::size_t at = url.substr(host, end - host).rfind('@');
  std::string text(url.substr(0, host));
  return text.append(url.substr(at == std::string_view::npos ? host : host + at + 1));
}

}  // namespace detail

/**
 * @defgroup cpp_errors C++: errors
 * @brief The exceptions of the C++ API.
 * @{
 */

/** The base of all exceptions that this header throws. */
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** The library could not be started, or a configuration or context could not be created. */
class InitializationError : public Error {
 public:
  using Error::Error;
};

/** The program used the API wrongly: an array is of another class or has no such index or field; a
 *  value cannot be passed to the library (a string that is not valid UTF-8, a NUL inside a URL or
 *  name, a size over 2147483647, a URL that is not http or https); or an object has been moved from
 *  or is in use by another thread. */
class UsageError : public Error {
 public:
  using Error::Error;
};

/** An array of a reply is incomplete: fewer elements arrived than its dimensions say, its
 *  dimensions did not arrive, or its column starts and row indices do not describe a sparse array
 *  of its dimensions. what() says which array, and how many elements it should have. The usual
 *  reason is that the response size limit cut the reply: see Config::setResponseSizeLimit().
 *
 *  A call throws it for an incomplete output. An array that was adopted, and an element of a cell
 *  or struct array, are checked when they are read. */
class IncompleteReply : public Error {
 public:
  /** An exception with this message; user information is removed from the URL. */
  explicit IncompleteReply(const std::string& message, std::string_view url = {})
      : Error(message),
        url_(std::make_shared<const std::string>(detail::withoutUserInformation(url))) {}

  /** The URL of the call, as CallError::url(); empty if the exception was thrown when an array was
   *  read. */
  const std::string& url() const noexcept { return *url_; }

 private:
  std::shared_ptr<const std::string> url_;
};

/** A call failed: the base of the three kinds of failure. The context can be used again. */
class CallError : public Error {
 public:
  /** An exception with this message; user information is removed from the URL. */
  explicit CallError(const std::string& message, std::string_view url = {})
      : Error(message),
        url_(std::make_shared<const std::string>(detail::withoutUserInformation(url))) {}

  /** The URL of the call, without a name and password before the host. Valid as long as this
   *  exception or a copy of it. */
  const std::string& url() const noexcept { return *url_; }
  /** The URL and what(), for a log: `http://host:8080/f: HTTP status 404 Not Found`. */
  std::string describe() const { return url() + ": " + what(); }
  /** Whether the function did not run, so that the same call can be made again: an HttpError with
   *  status 503, or a TransportError with Reason::connectionRefused. Retry repeats these calls and
   *  no others. */
  bool isRetryable() const noexcept;

 private:
  // Shared, so that copying the exception cannot fail.
  std::shared_ptr<const std::string> url_;
};

/** The server answered with an HTTP status other than 200. */
class HttpError : public CallError {
 public:
  /** An exception with this status and reason. */
  HttpError(std::uint32_t status, const std::string& reason, std::string_view url = {})
      : CallError("HTTP status " + std::to_string(status) + (reason.empty() ? "" : " ") + reason,
                  url),
        status_(status),
        reason_(std::make_shared<const std::string>(reason)) {}

  /** The HTTP status. */
  std::uint32_t status() const noexcept { return status_; }
  /** The reason phrase after the status, without its line end; may be empty. */
  const std::string& reason() const noexcept { return *reason_; }
  /** Whether the server was overloaded and did not run the function: status 503. The same call may
   *  succeed later. */
  bool isRetryable() const noexcept { return status_ == 503; }

 private:
  std::uint32_t status_;
  std::shared_ptr<const std::string> reason_;
};

/** One stack frame of an error that a function raised. */
struct StackFrame {
  std::string file;      /**< file that defines the function */
  std::string name;      /**< name of the function */
  std::int32_t line = 0; /**< line in the file; 0 if it is not known */
};

/** The function ran on the server and raised an error; what() is its message. */
class FunctionError : public CallError {
 public:
  /** An exception with this message, identifier and stack. */
  FunctionError(const std::string& message, std::string identifier, std::vector<StackFrame> stack,
                std::string_view url = {})
      : CallError(message, url),
        details_(
            std::make_shared<const Details>(Details{std::move(identifier), std::move(stack)})) {}

  /** The identifier of the error, such as `halcyon:argument:size`. */
  const std::string& identifier() const noexcept { return details_->identifier; }
  /** The stack, in the server's order. */
  const std::vector<StackFrame>& stack() const noexcept { return details_->stack; }

 private:
  // Shared, so that copying the exception cannot fail.
  struct Details {
    std::string identifier;
    std::vector<StackFrame> stack;
  };
  std::shared_ptr<const Details> details_;
};

/** The call failed for another reason. what() is the library's own message, and reason() says what
 *  kind of failure it is. */
class TransportError : public CallError {
 public:
  /** An exception with the library's message. */
  explicit TransportError(const std::string& message, std::string_view url = {})
      : CallError(message, url), reason_(detail::reasonOf(message)) {}

  /** What went wrong, for programs to check; what() is for people to read. */
  Reason reason() const noexcept { return reason_; }
  /** Whether no connection was made, so that the function did not run. The same call may succeed
   *  later. */
  bool isRetryable() const noexcept { return reason_ == Reason::connectionRefused; }

 private:
  Reason reason_;
};

// Not virtual: an exception may come from code that an older header was compiled into.
inline bool CallError::isRetryable() const noexcept {
  if (const auto* const http = dynamic_cast<const HttpError*>(this)) return http->isRetryable();
  const auto* const transport = dynamic_cast<const TransportError*>(this);
  return transport != nullptr && transport->isRetryable();
}

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_ERROR_HPP
