// SPDX-License-Identifier: Apache-2.0

#include "support/failing_memory.h"

#include <new>
#include <optional>

namespace {

// How many allocations still work before the one that fails; none of them does without a value.
thread_local std::optional<std::size_t> working;
thread_local bool failed = false;

bool fails() {
  if (!working || (*working)-- != 0) return false;
  working.reset();
  failed = true;
  return true;
}

}  // namespace

namespace hcy::test {

FailingAllocation::FailingAllocation(std::size_t count) {
  failed = false;
  working = count;
}

FailingAllocation::~FailingAllocation() { working.reset(); }

bool FailingAllocation::hasFailed() const { return failed; }

}  // namespace hcy::test

// The linker sends every call of `f` to `__wrap_f`, and `__real_f` is `f` itself.
// NOLINTBEGIN: the names are the linker's.
extern "C" {

void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) { return fails() ? nullptr : __real_malloc(size); }

void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return fails() ? nullptr : __real_calloc(count, size);
}

void* __real_realloc(void* block, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size) {
  return fails() ? nullptr : __real_realloc(block, size);
}

// operator new and operator new[].
void* __real__Znwm(std::size_t size);
void* __wrap__Znwm(std::size_t size);
void* __wrap__Znwm(std::size_t size) {
  return fails() ? throw std::bad_alloc() : __real__Znwm(size);
}

void* __real__Znam(std::size_t size);
void* __wrap__Znam(std::size_t size);
void* __wrap__Znam(std::size_t size) {
  return fails() ? throw std::bad_alloc() : __real__Znam(size);
}

}  // extern "C"
// NOLINTEND
