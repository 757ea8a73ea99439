// SPDX-License-Identifier: Apache-2.0

#include "support/failing_memory.h"

#include <execinfo.h>
#include <link.h>
#include <sys/auxv.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <sstream>
#include <unordered_map>

#include "support/caller_names.h"

// The allocator that would serve the program without us: that of the sanitizer where there is one,
// else that of the C library. The linker puts our definitions before either.
extern "C" {
#define HCY_REAL_ALLOCATOR(result, name, sanitizerName, libraryName, ...) \
  result sanitizerName(__VA_ARGS__) __attribute__((weak));                \
  result libraryName(__VA_ARGS__);                                        \
  [[maybe_unused]] static auto name() {                                   \
    return sanitizerName != nullptr ? &sanitizerName : &libraryName;      \
  }
HCY_REAL_ALLOCATOR(void*, realMalloc, __interceptor_malloc, __libc_malloc, std::size_t)
HCY_REAL_ALLOCATOR(void*, realCalloc, __interceptor_calloc, __libc_calloc, std::size_t, std::size_t)
HCY_REAL_ALLOCATOR(void*, realRealloc, __interceptor_realloc, __libc_realloc, void*, std::size_t)
HCY_REAL_ALLOCATOR(void*, realMemalign, __interceptor_memalign, __libc_memalign, std::size_t,
                   std::size_t)
HCY_REAL_ALLOCATOR(void, realFree, __interceptor_free, __libc_free, void*)
#undef HCY_REAL_ALLOCATOR

// Of LeakSanitizer.
void __lsan_ignore_object(const void* block) __attribute__((weak));
}

// Allocations are served before a sanitizer has set itself up.
#if defined(__clang__)
#define HCY_UNSANITIZED __attribute__((no_sanitize("address", "thread", "undefined")))
#else
#define HCY_UNSANITIZED \
  __attribute__((no_sanitize_address, no_sanitize_thread, no_sanitize_undefined))
#endif

namespace {

using hcy::test::Exhaustion;

// --- The dynamic linker.

struct Range {
  std::uintptr_t begin = 0, end = 0;
};

// _dl_fixup() of glibc 2.36, which finds a function at its first call, ends the process when it
// gets no memory, and keeps what it got: it is served, and what it takes is not counted.
const Range dynamicLinker = [] {
  Range range{getauxval(AT_BASE), 0};
  dl_iterate_phdr(
      [](dl_phdr_info* object, std::size_t, void* found) {
        if (object->dlpi_addr != static_cast<Range*>(found)->begin) return 0;
        for (int i = 0; i < object->dlpi_phnum; ++i) {
          const auto& part = object->dlpi_phdr[i];
          auto& end = static_cast<Range*>(found)->end;
          end = std::max(end, object->dlpi_addr + part.p_vaddr + part.p_memsz);
        }
        return 1;
      },
      &range);
  return range;
}();

HCY_UNSANITIZED bool isDynamicLinker(const void* caller) {
  const auto address = reinterpret_cast<std::uintptr_t>(caller);
  return address >= dynamicLinker.begin && address < dynamicLinker.end;
}

// --- Allocations that fail.

constexpr std::size_t kMostCallers = 48;

struct Failing {
  bool armed = false;
  std::size_t working = 0;  // how many allocations still work before the first that fails
  Exhaustion exhaustion = Exhaustion::OneAllocation;
  bool failed = false;
  int callerCount = 0;
  std::array<void*, kMostCallers> callers{};
};
thread_local Failing failing;

HCY_UNSANITIZED bool fails(const void* caller) {
  if (!failing.armed || isDynamicLinker(caller)) return false;
  if (failing.working != 0) {
    --failing.working;
    return false;
  }
  failing.armed = false;  // whatever is asked for while we look around is served
  if (!failing.failed) {
    failing.callerCount = backtrace(failing.callers.data(), kMostCallers);
  }
  failing.failed = true;
  failing.armed = failing.exhaustion == Exhaustion::FromThenOn;
  errno = ENOMEM;
  return true;
}

// --- Blocks that are counted.

// What the notes themselves take is not to be noted.
template <class T>
struct UnnotedAllocator {
  using value_type = T;
  UnnotedAllocator() = default;
  template <class Other>
  UnnotedAllocator(const UnnotedAllocator<Other>& /*other*/) {}
  T* allocate(std::size_t n) { return static_cast<T*>(realMalloc()(n * sizeof(T))); }
  void deallocate(T* block, std::size_t /*n*/) { realFree()(block); }
  bool operator==(const UnnotedAllocator& /*other*/) const { return true; }
};

struct Block {
  std::size_t size;
  std::array<void*, 16> callers;
  int callerCount;
};

class Blocks {
 public:
  void note(void* address, std::size_t size) {
    Block block{size, {}, 0};
    if (takesCallers_) block.callerCount = backtrace(block.callers.data(), 16);
    const std::lock_guard lock(mutex_);
    blocks_[address] = block;
  }
  void forget(void* address) {
    const std::lock_guard lock(mutex_);
    blocks_.erase(address);
  }
  // A copy, since whoever looks at it may allocate and free.
  auto all() {
    const std::lock_guard lock(mutex_);
    return blocks_;
  }
  void clear() {
    const std::lock_guard lock(mutex_);
    blocks_.clear();
  }

 private:
  // Takes time: for whoever looks for a leak.
  const bool takesCallers_ = std::getenv("HCY_BLOCK_CALLERS") != nullptr;
  std::mutex mutex_;
  std::unordered_map<void*, Block, std::hash<void*>, std::equal_to<>,
                     UnnotedAllocator<std::pair<void* const, Block>>>
      blocks_;
};

// Never destroyed: blocks are freed until the very end.
Blocks* blocks = nullptr;
std::atomic<bool> areBlocksNoted = false;
thread_local bool notesBlocks = false;

// What is allocated while it lives is not noted: the names of functions are read once and kept.
class Unnoted {
 public:
  Unnoted() { notesBlocks = false; }
  Unnoted(const Unnoted&) = delete;
  Unnoted& operator=(const Unnoted&) = delete;
  ~Unnoted() { notesBlocks = notedBefore_; }

 private:
  const bool notedBefore_ = notesBlocks;
};

HCY_UNSANITIZED void* noted(void* address, std::size_t size, const void* caller) {
  if (address == nullptr) return address;
  if (isDynamicLinker(caller)) {
    // What it keeps is no leak, which LeakSanitizer cannot see behind us.
    if (__lsan_ignore_object != nullptr) __lsan_ignore_object(address);
  } else if (notesBlocks) {
    const Unnoted unnoted;
    blocks->note(address, size);
  }
  return address;
}

HCY_UNSANITIZED void forget(void* address) {
  if (address != nullptr && areBlocksNoted) blocks->forget(address);
}

}  // namespace

namespace hcy::test {

FailingAllocation::FailingAllocation(std::size_t working, Exhaustion exhaustion) {
  void* self[1];
  backtrace(self, 1);  // sets itself up at its first call
  failing = {true, working, exhaustion};
}

FailingAllocation::~FailingAllocation() { failing.armed = false; }

bool FailingAllocation::hasFailed() const { return failing.failed; }

std::vector<std::string> FailingAllocation::callers() {
  const Unnoted unnoted;
  std::vector<std::string> names;
  for (int i = 0; i < failing.callerCount; ++i) {
    names.push_back(functionAt(failing.callers[static_cast<std::size_t>(i)]));
  }
  return names;
}

BlockWatch::BlockWatch() {
  if (blocks == nullptr) blocks = new Blocks;
  blocks->clear();
  areBlocksNoted = true;
  notesBlocks = true;
}

BlockWatch::~BlockWatch() {
  notesBlocks = false;
  areBlocksNoted = false;
}

std::size_t BlockWatch::count() const { return blocks->all().size(); }

std::string BlockWatch::list() const {
  const Unnoted unnoted;
  std::ostringstream text;
  for (const auto& [address, block] : blocks->all()) {
    text << block.size << " bytes at " << address << '\n';
    for (int i = 0; i < block.callerCount; ++i) {
      text << "    " << functionAt(block.callers[static_cast<std::size_t>(i)]) << '\n';
    }
  }
  return text.str();
}

void BlockWatch::giveUp() {
  if (__lsan_ignore_object != nullptr) {
    for (const auto& [address, block] : blocks->all()) __lsan_ignore_object(address);
  }
  blocks->clear();
}

}  // namespace hcy::test

// --- What the program calls.

#define HCY_CALLER __builtin_return_address(0)
#pragma GCC visibility push(default)
extern "C" {

HCY_UNSANITIZED void* malloc(std::size_t size) noexcept {
  return fails(HCY_CALLER) ? nullptr : noted(realMalloc()(size), size, HCY_CALLER);
}

HCY_UNSANITIZED void* calloc(std::size_t count, std::size_t size) noexcept {
  return fails(HCY_CALLER) ? nullptr : noted(realCalloc()(count, size), count * size, HCY_CALLER);
}

HCY_UNSANITIZED void* realloc(void* block, std::size_t size) noexcept {
  if (fails(HCY_CALLER)) return nullptr;
  void* const grown = realRealloc()(block, size);
  if (grown == nullptr && size != 0) return nullptr;
  forget(block);
  return noted(grown, size, HCY_CALLER);
}

HCY_UNSANITIZED void* memalign(std::size_t alignment, std::size_t size) noexcept {
  return fails(HCY_CALLER) ? nullptr : noted(realMemalign()(alignment, size), size, HCY_CALLER);
}

HCY_UNSANITIZED void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return memalign(alignment, size);
}

HCY_UNSANITIZED int posix_memalign(void** place, std::size_t alignment, std::size_t size) noexcept {
  void* const block = memalign(alignment, size);
  if (block == nullptr) return ENOMEM;
  *place = block;
  return 0;
}

HCY_UNSANITIZED void free(void* block) noexcept {
  forget(block);
  realFree()(block);
}

}  // extern "C"

// A sanitizer has operators of its own, which do not call malloc.
HCY_UNSANITIZED void* operator new(std::size_t size) {
  void* const block = malloc(std::max<std::size_t>(size, 1));
  return block == nullptr ? throw std::bad_alloc() : block;
}
HCY_UNSANITIZED void* operator new(std::size_t size, std::align_val_t alignment) {
  void* const block = memalign(static_cast<std::size_t>(alignment), std::max<std::size_t>(size, 1));
  return block == nullptr ? throw std::bad_alloc() : block;
}
HCY_UNSANITIZED void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return malloc(std::max<std::size_t>(size, 1));
}
HCY_UNSANITIZED void* operator new(std::size_t size, std::align_val_t alignment,
                                   const std::nothrow_t& /*tag*/) noexcept {
  return memalign(static_cast<std::size_t>(alignment), std::max<std::size_t>(size, 1));
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return operator new(size, alignment);
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}
void* operator new[](std::size_t size, std::align_val_t alignment,
                     const std::nothrow_t& tag) noexcept {
  return operator new(size, alignment, tag);
}
void operator delete(void* block) noexcept { free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { free(block); }
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept { free(block); }
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  free(block);
}
void operator delete[](void* block) noexcept { free(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { free(block); }
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept { free(block); }
void operator delete[](void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  free(block);
}
#pragma GCC visibility pop
