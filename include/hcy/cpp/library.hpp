/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file library.hpp
 * @brief Start and end of the library. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_LIBRARY_HPP
#define HCY_CPP_LIBRARY_HPP

#include <hcy/hcyclient.h>

#include <cstddef>
#include <hcy/cpp/error.hpp>
#include <memory>
#include <mutex>

namespace hcyclient {

namespace detail {

// The Library objects of the process. Visible, so that the dynamic linker gives all shared objects
// the same one, whatever version of this header they were compiled with: its layout never changes.
struct HCY_API Libraries {
  std::mutex mutex;
  std::size_t count = 0;
  hcyClientRuntime* runtime = nullptr;
};
inline HCY_API Libraries libraries;

}  // namespace detail

/**
 * @defgroup cpp_runtime C++: client runtime
 * @brief Start, configure, call.
 * @{
 */

/**
 * Keeps the library initialised: from the first Library of the process to the end of the last one.
 * They may be made and destroyed on any threads at once.
 *
 * The program and the shared objects that it is linked with count together, even if they are
 * compiled with hidden symbols. A plug-in that dlopen() loads counts together with the program only
 * if the program exports its symbols (`-rdynamic`); otherwise the end of the plug-in's last Library
 * ends the library for all, as hcyTerminate() does.
 */
class Library {
 public:
  /** Initialises the library unless another Library has; throws InitializationError when it does
   *  not start, or has been started for an older version by other code. */
  Library() : runtime_(begin()) {}

  /** The table of the C interface. Throws UsageError when the Library has been moved from. */
  const hcyClientRuntime* runtime() const {
    if (!runtime_) throw UsageError("the Library has been moved from");
    return runtime_.get();
  }

 private:
  static hcyClientRuntime* begin() {
    detail::Libraries& libraries = detail::libraries;
    const std::lock_guard<std::mutex> lock(libraries.mutex);
    if (libraries.count == 0) {
      hcyClientRuntime* const runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
      if (runtime == nullptr) throw InitializationError(hcyGetInitializationErrorMessage());
      if (runtime->setPeerVerification == nullptr) {
        throw InitializationError("the library has been started for interface version 1.0");
      }
      libraries.runtime = runtime;
    }
    ++libraries.count;
    return libraries.runtime;
  }

  struct Terminator {
    void operator()(hcyClientRuntime*) const noexcept {
      const std::lock_guard<std::mutex> lock(detail::libraries.mutex);
      if (--detail::libraries.count == 0) hcyTerminate();
    }
  };

  std::unique_ptr<hcyClientRuntime, Terminator> runtime_;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_LIBRARY_HPP
