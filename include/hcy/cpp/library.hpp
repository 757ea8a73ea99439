/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file library.hpp
 * @brief Starts and ends the library. Included by hcyclient.hpp.
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

// Counts the Library objects of the process. Its symbol is visible, so that the dynamic linker
// gives all shared objects the same one, whatever version of this header they were compiled with.
// Its layout never changes.
struct HCY_API Libraries {
  std::mutex mutex;
  std::size_t count = 0;
  hcyClientRuntime* runtime = nullptr;
};
inline HCY_API Libraries libraries;

}  // namespace detail

/**
 * @defgroup cpp_runtime C++: client runtime
 * @brief Start the library, configure it, call functions.
 * @{
 */

/**
 * Keeps the library initialized, from the first Library of the process until the last one is
 * destroyed. Library objects may be made and destroyed on any threads at once.
 *
 * The program and the shared objects that it is linked with share one count of Library objects,
 * even if they are compiled with hidden symbols. A plug-in that dlopen() loads shares the count
 * only if the program exports its symbols (`-rdynamic`). Otherwise, destroying the plug-in's last
 * Library ends the library for the whole process, as hcyTerminate() does.
 */
class Library {
 public:
  /** Initializes the library unless another Library has. Throws InitializationError if it does not
   *  start, or other code has started it for an older version. */
  Library() : runtime_(begin()) {}

  /** The runtime table of the C interface. Throws UsageError if the Library has been moved from. */
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
