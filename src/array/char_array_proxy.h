// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>
#include <vector>

#include "array/array_proxy.h"

namespace hcy {

// A char array: UTF-16 code units in a buffer of its own.
class VORTENCharArrayProxy : public VORTENArrayProxy {
 public:
  VORTENCharArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                       std::uint64_t count);
  explicit VORTENCharArrayProxy(std::shared_ptr<VORTEN_Array> message);

  void resize(std::int32_t count) override;
  std::size_t getElementSize() const override { return sizeof(char16_t); }
  void* getData() override;
  double getScalar() override;
  void commit() override;

  std::u16string_view codeUnits() const { return {codeUnits_.data(), codeUnits_.size()}; }

 private:
  std::vector<char16_t> codeUnits_;
};

}  // namespace hcy
