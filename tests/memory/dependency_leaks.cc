// SPDX-License-Identifier: Apache-2.0

#include "memory/dependency_leaks.h"

#include <google/protobuf/stubs/common.h>

#include <string>

#include "support/failing_memory.h"

namespace hcy::abi {
namespace {

struct Leak {
  const char* function;  // running when the allocation failed
  const char* reason;
};

// Of libprotobuf 3.21.12.
constexpr Leak leaks[] = {
    {"google::protobuf::internal::RepeatedPtrFieldBase::MergeFromInnerLoop<",
     "counts the elements that it copies when all have been copied; those before the one that "
     "fails are never destroyed"},
    {"google::protobuf::internal::RepeatedPtrFieldBase::AddOutOfLineHelper(",
     "forgets the element to be added when the list cannot grow for it"},
};

}  // namespace

bool isLeakOfDependency() {
  if (GOOGLE_PROTOBUF_VERSION != 3021012) return false;
  for (const std::string& caller : test::FailingAllocation::callers()) {
    for (const Leak& leak : leaks) {
      if (caller.find(leak.function) != std::string::npos) return true;
    }
  }
  return false;
}

}  // namespace hcy::abi
