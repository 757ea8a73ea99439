/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file reason.hpp
 * @brief Why a call failed, derived from the library's message. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_REASON_HPP
#define HCY_CPP_REASON_HPP

#include <cstddef>
#include <iterator>
#include <ostream>
#include <string_view>

namespace hcyclient {

/** @addtogroup cpp_errors
 *  @{ */

/** The kind of failure that a TransportError reports. */
enum class Reason {
  timeout,           /**< the call took longer than Config::setTimeout() allows */
  connectionRefused, /**< no connection to the server: nothing listens there, or a firewall blocks
                          it */
  nameNotResolved,   /**< the name of the host in the URL, or of the proxy, cannot be resolved */
  tls,               /**< no TLS connection: certificates, keys or protocol versions do not match */
  replyTooLarge,     /**< the reply is over the response size limit (the library reports the same
                          message if it cannot allocate memory for a reply) */
  incompleteReply,   /**< the connection ended before the reply did */
  wrongOutputCount,  /**< the function did not return as many outputs as the call asked for */
  classNotServed,    /**< an output is of a class that the library does not support */
  memory,            /**< memory is exhausted */
  other              /**< anything else: see what() */
};

/** The name of the enumerator, such as "timeout", for a log. */
inline std::string_view toString(Reason reason) noexcept {
  constexpr std::string_view names[] = {
      "timeout",         "connectionRefused", "nameNotResolved", "tls",    "replyTooLarge",
      "incompleteReply", "wrongOutputCount",  "classNotServed",  "memory", "other"};
  const auto i = static_cast<std::size_t>(reason);
  return i < std::size(names) ? names[i] : "other";
}
/** Writes toString() of the reason. */
inline std::ostream& operator<<(std::ostream& out, Reason reason) {
  return out << toString(reason);
}

/** @} */

namespace detail {

struct ReasonText {
  std::string_view start;
  Reason reason;
};

// The beginnings of the messages of the library itself, of libcurl 7.88 and of libcurl 8.x.
inline constexpr ReasonText reasonTexts[] = {
    {"Timeout was reached", Reason::timeout},
    {"Couldn't connect to server", Reason::connectionRefused},
    {"Could not connect to server", Reason::connectionRefused},
    {"Couldn't resolve host name", Reason::nameNotResolved},
    {"Could not resolve hostname", Reason::nameNotResolved},
    {"Couldn't resolve proxy name", Reason::nameNotResolved},
    {"Could not resolve proxy name", Reason::nameNotResolved},
    {"SSL ", Reason::tls},
    {"Problem with the local SSL certificate", Reason::tls},
    // "a bad argument", of a key, by libcurl 8.23. lintian takes the whole text for libcurl itself.
    {"A libcurl function was given", Reason::tls},
    {"Problem with the SSL CA cert", Reason::tls},
    {"Couldn't use specified SSL cipher", Reason::tls},
    {"Could not use specified SSL cipher", Reason::tls},
    {"Failed to load CRL file", Reason::tls},
    {"Failed to initialise SSL crypto engine", Reason::tls},
    {"Failed to initialize SSL crypto engine", Reason::tls},
    {"Issuer check against peer certificate failed", Reason::tls},
    {"Failed writing received data to disk/application", Reason::replyTooLarge},
    {"Transferred a partial file", Reason::incompleteReply},
    {"Server returned nothing", Reason::incompleteReply},
    {"Failure when receiving data from the peer", Reason::incompleteReply},
    {"Failed sending data to the peer", Reason::incompleteReply},
    {"Number of outputs received from VORTEN", Reason::wrongOutputCount},
    {"dispatch_on_QXType", Reason::classNotServed},
    {"std::bad_alloc", Reason::memory},
    {"Out of memory", Reason::memory}};

inline Reason reasonOf(std::string_view text) noexcept {
  for (const ReasonText& known : reasonTexts) {
    if (text.compare(0, known.start.size(), known.start) == 0) return known.reason;
  }
  return Reason::other;
}

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_REASON_HPP
