/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient.hpp
 * @brief The C++ API over hcyclient.h, with owning types, exceptions and typed spans.
 *
 * @code
 * const hcyclient::Library library;
 * const hcyclient::Config config(library);
 * hcyclient::Context context(config);
 * hcyclient::Array sum = context.call("http://127.0.0.1:8080/math/plus", 2.0, 3.0);
 * std::cout << sum.scalar() << '\n';
 * @endcode
 *
 * Header-only C++17, based only on the C functions: a program compiled with it depends only on the
 * C interface of the shared library, whatever compiler built the library. An Array is as large as a
 * pointer.
 *
 * @par Rules for the whole header
 * - **Owners.** Library, Config, Context and Array own their resource. They can be moved; only a
 *   Config can be copied, and Array::copy() copies an array. A Library must outlive all
 *   configurations and contexts. An object that has been moved from can be assigned to and
 *   destroyed; using it throws UsageError.
 * - **Failures.** Every exception is an Error or a class derived from it, except std::bad_alloc if
 *   memory is exhausted. Whatever is thrown, nothing leaks, and arguments are unchanged.
 * - **Incomplete replies.** A reply may hold fewer elements than the dimensions of its arrays say,
 *   because the response size limit cut it or the server broke its own rules. Missing elements are
 *   never filled in: IncompleteReply is thrown instead.
 * - **Threads.** Several threads may call const members of one array at once while no thread
 *   changes it. Use each configuration and each context on one thread at a time; a second call on a
 *   context that is in use throws UsageError.
 * - **Lists.** A list of values without a shape becomes a column: n-by-1. Values are copied in
 *   column-major order.
 */
#ifndef HCY_HCYCLIENT_HPP
#define HCY_HCYCLIENT_HPP

#if __cplusplus < 201703L
#error "hcyclient.hpp needs C++17; hcyclient.h is for C99 and C++11"
#endif

#include <hcy/hcyclient.h>

#include <hcy/cpp/array.hpp>
#include <hcy/cpp/array_elements.hpp>
#include <hcy/cpp/array_handle.hpp>
#include <hcy/cpp/compare.hpp>
#include <hcy/cpp/config.hpp>
#include <hcy/cpp/context.hpp>
#include <hcy/cpp/describe.hpp>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/function.hpp>
#include <hcy/cpp/input.hpp>
#include <hcy/cpp/instead.hpp>
#include <hcy/cpp/job.hpp>
#include <hcy/cpp/library.hpp>
#include <hcy/cpp/make.hpp>
#include <hcy/cpp/mdspan.hpp>
#include <hcy/cpp/outputs.hpp>
#include <hcy/cpp/pool.hpp>
#include <hcy/cpp/print.hpp>
#include <hcy/cpp/read.hpp>
#include <hcy/cpp/reason.hpp>
#include <hcy/cpp/retry.hpp>
#include <hcy/cpp/shape.hpp>
#include <hcy/cpp/slot.hpp>
#include <hcy/cpp/span.hpp>
#include <hcy/cpp/sparse.hpp>
#include <hcy/cpp/text.hpp>
#include <hcy/cpp/walk.hpp>

/** The C++ API of the library. */
namespace hcyclient {

/** Implementation details; not for callers. */
namespace detail {}

}  // namespace hcyclient

#endif  // HCY_HCYCLIENT_HPP
