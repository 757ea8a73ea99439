// SPDX-License-Identifier: Apache-2.0
//
// Arrays as the public header describes them, in plain containers: what the library is measured
// against.

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "hcy/hcyclient.h"

namespace hcy::fuzz {

using Sizes = std::vector<std::size_t>;

// The largest count that the library holds.
constexpr std::size_t largestCount = 2147483647;

// The product, or the largest size where it does not fit; 0 for no dimensions.
std::size_t productOf(const Sizes& dimensions);

struct Element;

struct Contents {
  std::vector<double> real, imaginary;          // of a sparse array, the stored values
  Sizes rows, columnStarts;                     // of a sparse array
  std::vector<std::shared_ptr<Element>> slots;  // of a container, element-major; null: never set
};

// An array, whoever has handles over it.
struct Element {
  hcyClassID classId = hcyDOUBLE_CLASS;
  bool isSparse = false;
  Sizes dimensions = {0, 0};
  std::vector<std::string> fields;
  Contents contents;
};

// A handle: for some classes over contents of its own, which commit() brings into the element.
class Model {
 public:
  Model(std::shared_ptr<Element> element, bool isComplex);
  // A handle over an element that came into being otherwise.
  explicit Model(std::shared_ptr<Element> element);

  const std::shared_ptr<Element>& element() const { return element_; }
  hcyClassID classId() const { return element_->classId; }
  bool isSparse() const { return element_->isSparse; }
  bool isCell() const { return classId() == hcyCELL_CLASS; }
  bool isStruct() const { return classId() == hcySTRUCT_CLASS; }
  bool isContainer() const { return isCell() || isStruct(); }
  bool isNumeric() const { return classId() <= hcyDOUBLE_CLASS; }
  bool isComplex() const { return isComplex_; }
  const Sizes& dimensions() const { return element_->dimensions; }
  std::size_t count() const { return productOf(dimensions()); }
  std::size_t slotsPerElement() const { return isStruct() ? element_->fields.size() : 1; }
  // Of a container.
  const std::vector<std::shared_ptr<Element>>& ownSlots() const { return own_.slots; }
  Contents& contents() { return hasOwnContents() ? own_ : element_->contents; }

  void commit();
  Model duplicate();

  // Whether the dimensions are more than the library holds.
  static bool isTooLarge(const Element& element, const Sizes& dimensions);
  // The dimensions are written even when they are too large; the contents follow only when not.
  void setDimensions(const Sizes& dimensions);
  void setNzmax(std::size_t nzmax);

  // -1 where there is none.
  int fieldNumber(const std::string& name) const;
  void addField(const std::string& name);
  void removeField(std::size_t field);

  // A handle over the element of a slot.
  Model slot(std::size_t index);
  void setSlot(std::size_t index, Model& value);

  // What becomes of the imaginary parts of an array that has none left is not said: the library is
  // asked.
  bool mayHaveLostImaginary() { return isComplex_ && contents().imaginary.empty(); }
  void setComplex(bool isComplex) { isComplex_ = isComplex; }

 private:
  bool hasOwnContents() const {
    return isContainer() || classId() == hcyCHAR_CLASS || classId() == hcyINT16_CLASS ||
           classId() == hcyUINT16_CLASS;
  }

  std::shared_ptr<Element> element_;
  Contents own_;
  bool isComplex_ = false;
};

// A new array, zero throughout; a sparse one has room for nzmax stored elements.
std::shared_ptr<Element> newElement(hcyClassID classId, const Sizes& dimensions, bool isComplex,
                                    const std::vector<std::string>& fields = {});
std::shared_ptr<Element> newSparseElement(hcyClassID classId, std::size_t m, std::size_t n,
                                          std::size_t nzmax, bool isComplex);

// How many arrays there are in a container, itself included, at all levels.
std::size_t weightOf(const Model& model);

}  // namespace hcy::fuzz
