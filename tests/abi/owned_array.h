// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "support/abi.h"

namespace hcy::abi {

// A handle that a test owns; destroyed with it.
class Array {
 public:
  // Takes over what a function of the library returned, null included.
  Array(hcyArray* handle) : handle_(handle) {}

  operator hcyArray*() const { return handle_.get(); }

  // Destroys the handle now.
  void destroy() { handle_.reset(); }

 private:
  struct Destroyer {
    void operator()(hcyArray* handle) const { hcyDestroyArray(handle); }
  };

  std::unique_ptr<hcyArray, Destroyer> handle_;
};

// A text that the library allocated.
struct TextFreer {
  void operator()(char* text) const { hcyFree(text); }
};
using Text = std::unique_ptr<char, TextFreer>;

}  // namespace hcy::abi
