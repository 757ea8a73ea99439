// SPDX-License-Identifier: Apache-2.0

#include "array/array_content.h"

#include <cstdlib>
#include <new>

#include "memory/large_block.h"
#include "wire/element_storage.h"
#include "wire/read_array.h"

namespace hcy {
namespace {

using google::protobuf::Arena;

bool isMapped(std::size_t size) { return size >= kHugePage; }

void* allocateBlock(std::size_t size) {
  void* const block = isMapped(size) ? mapLargeBlock(size) : std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void freeBlock(void* block, std::size_t size) {
  if (isMapped(size)) {
    unmapLargeBlock(static_cast<char*>(block), size);
  } else {
    std::free(block);
  }
}

std::unique_ptr<Arena> arenaFor(std::size_t size) {
  if (size < ArrayContent::kLarge) return nullptr;
  google::protobuf::ArenaOptions options;
  options.max_block_size = kHugePage;
  options.block_alloc = allocateBlock;
  options.block_dealloc = freeBlock;
  return std::make_unique<Arena>(options);
}

}  // namespace

ArrayContent::ArrayContent(std::size_t size)
    : arena_(arenaFor(size)),
      message_(arena_ ? Arena::CreateMessage<VORTEN_Array>(arena_.get()) : &own_.emplace()) {}

ContentPtr copyOf(const ArrayContent& content) {
  ContentPtr copy(new ArrayContent);
  copy->message().CopyFrom(content.message());
  copy->arrays = content.arrays;
  copy->isReceived = content.isReceived;
  copy->isCommitted = content.isCommitted;
  if (content.isPartShown()) copy->showPart();
  return copy;
}

ContentPtr unpacked(const PackedArrays& arrays, std::size_t index) {
  ContentPtr content(new ArrayContent(arrays.array(index).size()));
  readPackedArray({content->message(), content->arrays}, arrays, index);
  content->isReceived = arrays.isReceived();
  return content;
}

ContentPtr emptyDouble() {
  ContentPtr content(new ArrayContent);
  makeEmptyDouble(content->message());
  return content;
}

}  // namespace hcy
