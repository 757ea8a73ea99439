// SPDX-License-Identifier: Apache-2.0
//
// Cells and fields.

#include "array_comparison.h"
#include "array_program.h"
#include "require.h"

namespace hcy::fuzz {
namespace {

constexpr int mostLevels = 8;
constexpr std::size_t mostWeight = 300;

}  // namespace

// Whether the element is among the contents of the handle, or of a handle over one of these.
bool ArrayProgram::holds(const Model& model, const Element* element, int levels) const {
  for (const auto& slot : model.ownSlots()) {
    if (!slot) continue;
    if (slot.get() == element || levels == 0) return true;
    for (const Pair& pair : pairs_) {
      if (pair.model.element() == slot && holds(pair.model, element, levels - 1)) return true;
    }
  }
  return false;
}

// An array is not stored into itself, but directly; and nothing grows without end.
bool ArrayProgram::mayStore(const Pair& container, const Pair& value) const {
  const Element* const element = container.model.element().get();
  const bool isItself = value.model.element().get() == element;
  return weightOf(container.model) + weightOf(value.model) <= mostWeight &&
         (isItself ? &container == &value : !holds(value.model, element, mostLevels));
}

void ArrayProgram::getElement() {
  Pair& pair = any();
  const std::size_t i = index(pair.model.isContainer() ? pair.model.count() : 0);
  Handle element(hcyGetCell(pair.array.get(), i));
  const bool isThere = pair.model.isCell() && i < pair.model.count();
  HCY_REQUIRE((element != nullptr) == isThere);
  if (isThere) add(element.release(), pair.model.slot(i));
}

void ArrayProgram::setElement() {
  Pair& pair = any();
  Pair& value = any();
  const std::size_t i = index(pair.model.isContainer() ? pair.model.count() : 0);
  if (!mayStore(pair, value)) return;
  hcySetCell(pair.array.get(), i, value.array.get());
  if (pair.model.isCell() && i < pair.model.count()) pair.model.setSlot(i, value.model);
  requireSame(pair.array.get(), pair.model);
}

// The slot of the field in the element; none where the functions of fields refuse.
std::optional<std::size_t> ArrayProgram::slotOf(const Model& model, std::size_t element,
                                                const char* field) const {
  const int number = field == nullptr || !model.isStruct() ? -1 : model.fieldNumber(field);
  if (number < 0 || element >= model.count()) return std::nullopt;
  return element * model.slotsPerElement() + static_cast<std::size_t>(number);
}

ArrayProgram::Field ArrayProgram::field(const Model& model) {
  Field field;
  field.isByNumber = coin();
  field.number = static_cast<int>(below(6)) - 1;
  if (!field.isByNumber) {
    field.name = coin() ? name() : nullptr;
  } else if (field.number >= 0 &&
             static_cast<std::size_t>(field.number) < model.element()->fields.size()) {
    field.name = model.element()->fields[static_cast<std::size_t>(field.number)].c_str();
  }
  return field;
}

void ArrayProgram::getField() {
  Pair& pair = any();
  const Field which = field(pair.model);
  const std::size_t i = index(pair.model.isContainer() ? pair.model.count() : 0);
  Handle element(which.isByNumber ? hcyGetFieldByNumber(pair.array.get(), i, which.number)
                                  : hcyGetField(pair.array.get(), i, which.name));
  const auto slot = slotOf(pair.model, i, which.name);
  HCY_REQUIRE((element != nullptr) == slot.has_value());
  if (slot) add(element.release(), pair.model.slot(*slot));
}

void ArrayProgram::setField() {
  Pair& pair = any();
  Pair& value = any();
  const Field which = field(pair.model);
  const std::size_t i = index(pair.model.isContainer() ? pair.model.count() : 0);
  if (!mayStore(pair, value)) return;
  if (which.isByNumber) {
    hcySetFieldByNumber(pair.array.get(), i, which.number, value.array.get());
  } else {
    hcySetField(pair.array.get(), i, which.name, value.array.get());
  }
  const auto slot = slotOf(pair.model, i, which.name);
  if (slot) pair.model.setSlot(*slot, value.model);
  requireSame(pair.array.get(), pair.model);
}

void ArrayProgram::addField() {
  Pair& pair = any();
  const char* const added = coin() ? name() : nullptr;
  const int number = hcyAddField(pair.array.get(), added);
  if (added == nullptr || !pair.model.isStruct()) {
    HCY_REQUIRE(number == -1);
  } else if (pair.model.fieldNumber(added) < 0) {
    pair.model.addField(added);
    HCY_REQUIRE(number == pair.model.fieldNumber(added));
    return settle(pair);
  } else {
    HCY_REQUIRE(number == pair.model.fieldNumber(added));
  }
  requireSame(pair.array.get(), pair.model);
}

void ArrayProgram::removeField() {
  Pair& pair = any();
  const int number = static_cast<int>(below(6)) - 1;
  hcyRemoveField(pair.array.get(), number);
  if (number >= 0 && static_cast<std::size_t>(number) < pair.model.element()->fields.size()) {
    pair.model.removeField(static_cast<std::size_t>(number));
    return settle(pair);
  }
  requireSame(pair.array.get(), pair.model);
}

}  // namespace hcy::fuzz
