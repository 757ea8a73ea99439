// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <cstddef>

#include "array/array_content.h"

namespace hcy {

// Memory for the elements of one container as they are taken out. The first ones are allocated one
// by one; a program that reads more mostly reads all, and these lie in blocks, each as large as
// all before. A block lives as long as its container and its elements. Any number of threads may
// take elements out at once.
class ContentBlocks {
 public:
  ContentBlocks() = default;
  ContentBlocks(const ContentBlocks&) = delete;
  ContentBlocks& operator=(const ContentBlocks&) = delete;
  ~ContentBlocks();

  // A new content.
  ContentPtr make();

  void swap(ContentBlocks& other) noexcept;

 private:
  static constexpr std::size_t kFirst = 256;

  void addBlock(ContentBlock* newest);

  std::atomic<std::size_t> single_ = 0;
  std::atomic<ContentBlock*> newest_ = nullptr;
};

}  // namespace hcy
