// SPDX-License-Identifier: Apache-2.0

#include "array_model.h"

#include <algorithm>
#include <cstdint>

namespace hcy::fuzz {
namespace {

std::shared_ptr<Element> copyOf(const Element& element) {
  auto copy = std::make_shared<Element>(element);
  for (auto& slot : copy->contents.slots) slot = slot ? copyOf(*slot) : std::make_shared<Element>();
  return copy;
}

std::size_t slotCount(const Element& element, std::size_t elements) {
  return element.classId == hcySTRUCT_CLASS ? elements * element.fields.size() : elements;
}

bool isContainer(hcyClassID classId) {
  return classId == hcyCELL_CLASS || classId == hcySTRUCT_CLASS;
}

std::size_t weightOf(const std::vector<std::shared_ptr<Element>>& slots) {
  std::size_t weight = 1;
  for (const auto& slot : slots) weight += slot ? weightOf(slot->contents.slots) : 1;
  return weight;
}

void resizeValues(Contents& contents, std::size_t count) {
  contents.real.resize(count);
  if (!contents.imaginary.empty()) contents.imaginary.resize(count);
}

}  // namespace

std::size_t productOf(const Sizes& dimensions) {
  if (dimensions.empty() || std::ranges::count(dimensions, 0U) != 0) return 0;
  std::size_t product = 1;
  for (const std::size_t dimension : dimensions) {
    if (product > SIZE_MAX / dimension) return SIZE_MAX;
    product *= dimension;
  }
  return product;
}

Model::Model(std::shared_ptr<Element> element, bool isComplex)
    : element_(std::move(element)), isComplex_(isComplex) {
  if (hasOwnContents()) own_ = copyOf(*element_)->contents;
}

Model::Model(std::shared_ptr<Element> element)
    : Model(element, !element->contents.imaginary.empty()) {}

void Model::commit() {
  if (!hasOwnContents()) return;
  Element committed = *element_;
  committed.contents = own_;
  element_->contents = copyOf(committed)->contents;
}

Model Model::duplicate() {
  commit();
  return Model(copyOf(*element_));
}

bool Model::isTooLarge(const Element& element, const Sizes& dimensions) {
  const std::size_t count = productOf(dimensions);
  if (count > largestCount) return true;
  if (element.isSparse) return dimensions[1] >= largestCount;
  return slotCount(element, count) > largestCount;
}

void Model::setDimensions(const Sizes& dimensions) {
  element_->dimensions = dimensions;
  if (isTooLarge(*element_, dimensions)) return;
  if (isSparse()) {
    contents().columnStarts.resize(dimensions[1] + 1);
  } else if (isContainer()) {
    own_.slots.resize(slotCount(*element_, count()));
  } else {
    resizeValues(contents(), count());
  }
}

void Model::setNzmax(std::size_t nzmax) {
  if (!isSparse() || nzmax > count()) return;
  contents().rows.resize(std::max<std::size_t>(nzmax, 1));
  resizeValues(contents(), contents().rows.size());
}

int Model::fieldNumber(const std::string& name) const {
  const auto found = std::ranges::find(element_->fields, name);
  return found == element_->fields.end() ? -1 : static_cast<int>(found - element_->fields.begin());
}

void Model::addField(const std::string& name) {
  const std::size_t before = slotsPerElement();
  std::vector<std::shared_ptr<Element>> slots(count() * (before + 1));
  for (std::size_t i = 0; i < own_.slots.size(); ++i) {
    slots[i / before * (before + 1) + i % before] = own_.slots[i];
  }
  own_.slots = std::move(slots);
  element_->fields.push_back(name);
}

void Model::removeField(std::size_t field) {
  const std::size_t before = slotsPerElement();
  std::vector<std::shared_ptr<Element>> slots;
  for (std::size_t i = 0; i < own_.slots.size(); ++i) {
    if (i % before != field) slots.push_back(own_.slots[i]);
  }
  own_.slots = std::move(slots);
  element_->fields.erase(element_->fields.begin() + static_cast<std::ptrdiff_t>(field));
}

Model Model::slot(std::size_t index) {
  std::shared_ptr<Element>& slot = own_.slots[index];
  if (!slot) slot = std::make_shared<Element>();
  return Model(slot);
}

void Model::setSlot(std::size_t index, Model& value) {
  value.commit();
  own_.slots[index] = value.element_ == element_ ? copyOf(*element_) : value.element_;
}

std::shared_ptr<Element> newElement(hcyClassID classId, const Sizes& dimensions, bool isComplex,
                                    const std::vector<std::string>& fields) {
  auto element = std::make_shared<Element>();
  element->classId = classId;
  element->dimensions = dimensions;
  element->fields = fields;
  const std::size_t count = productOf(dimensions);
  if (isContainer(classId)) {
    element->contents.slots.resize(slotCount(*element, count));
  } else {
    element->contents.real.resize(count);
    if (isComplex) element->contents.imaginary.resize(count);
  }
  return element;
}

std::shared_ptr<Element> newSparseElement(hcyClassID classId, std::size_t m, std::size_t n,
                                          std::size_t nzmax, bool isComplex) {
  auto element = std::make_shared<Element>();
  element->classId = classId;
  element->isSparse = true;
  element->dimensions = {m, n};
  element->contents.rows.resize(nzmax);
  element->contents.columnStarts.resize(n + 1);
  element->contents.real.resize(nzmax);
  if (isComplex) element->contents.imaginary.resize(nzmax);
  return element;
}

std::size_t weightOf(const Model& model) { return weightOf(model.ownSlots()); }

}  // namespace hcy::fuzz
