// SPDX-License-Identifier: Apache-2.0
//
// A sequence of calls of array functions, read from bytes and carried out on the library and on the
// model side by side.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "array_model.h"
#include "handle.h"
#include "require.h"

namespace hcy::fuzz {

// Whether the call throws what a size over the limit does.
template <class Call>
bool overflows(Call call) {
  try {
    call();
    return false;
  } catch (const std::bad_cast& failure) {
    HCY_REQUIRE(failure.what() == std::string("bad numeric conversion: positive overflow"));
    return true;
  }
}

class ArrayProgram {
 public:
  explicit ArrayProgram(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  // Ends the program where the library does otherwise than the model.
  void run();

 private:
  struct Pair {
    Handle array;
    Model model;
  };

  // A field by its name or its number. The name is null where there is no field of that number.
  struct Field {
    bool isByNumber = false;
    int number = 0;
    const char* name = nullptr;
  };

  // Zero where the bytes have ended.
  std::uint8_t next();
  std::size_t below(std::size_t count) { return next() % count; }
  bool coin() { return below(2) != 0; }
  Sizes smallDimensions();
  std::size_t size();                    // small, or of those that no array has
  std::size_t index(std::size_t count);  // one that there is, or one that there is not
  const char* name();
  Field field(const Model& model);
  Pair& any() { return pairs_[below(pairs_.size())]; }

  void step();
  void add(hcyArray* array, Model model);
  void createNumeric();
  void createPlain();
  void createText();
  void createStruct();
  void createSparse();
  void createTooLarge();
  void changeDimension();
  void changeDimensions();
  void changeNzmax();
  void write();
  void writeIndices();
  void getElement();
  void setElement();
  void getField();
  void setField();
  void addField();
  void removeField();
  void duplicate();
  void destroy();
  void subscript();
  void compareAll();

  // After a change of shape: the other handles over the element are of no use, and the contents
  // follow when they are committed.
  void settle(Pair& pair);
  // Back to a size that the storage has, where the dimensions say another.
  void repair(Pair& pair);
  bool mayStore(const Pair& container, const Pair& value) const;
  bool holds(const Model& model, const Element* element, int levels) const;
  std::optional<std::size_t> slotOf(const Model& model, std::size_t element,
                                    const char* field) const;

  std::span<const std::uint8_t> bytes_;
  std::vector<Pair> pairs_;
};

}  // namespace hcy::fuzz
