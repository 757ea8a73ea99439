// SPDX-License-Identifier: Apache-2.0

#include "array_program.h"

#include <algorithm>
#include <array>

#include "abi/class_facts.h"
#include "array_comparison.h"
#include "require.h"

namespace hcy::fuzz {
namespace {

constexpr std::size_t mostArrays = 6;
constexpr std::size_t mostSteps = 200;

// Sizes that no array has, and the largest that one may have.
constexpr std::array<std::size_t, 6> strangeSizes = {largestCount,         largestCount + 1,
                                                     std::size_t{1} << 32, std::size_t{1} << 63,
                                                     SIZE_MAX - 1,         SIZE_MAX};

// What is allowed, and too much to be tried over and over.
bool takesMuchMemory(const Model& model, const Sizes& dimensions) {
  constexpr std::size_t much = 1000;
  return model.isSparse() ? dimensions[1] > much : productOf(dimensions) > much;
}

}  // namespace

void ArrayProgram::run() {
  for (std::size_t i = 0; i < mostSteps && !bytes_.empty(); ++i) step();
  compareAll();
}

void ArrayProgram::step() {
  using Step = void (ArrayProgram::*)();
  constexpr std::array<Step, 6> makers = {
      &ArrayProgram::createNumeric, &ArrayProgram::createPlain,  &ArrayProgram::createText,
      &ArrayProgram::createStruct,  &ArrayProgram::createSparse, &ArrayProgram::createTooLarge};
  constexpr std::array<Step, 14> others = {
      &ArrayProgram::changeDimension, &ArrayProgram::changeDimensions, &ArrayProgram::changeNzmax,
      &ArrayProgram::write,           &ArrayProgram::writeIndices,     &ArrayProgram::getElement,
      &ArrayProgram::setElement,      &ArrayProgram::getField,         &ArrayProgram::setField,
      &ArrayProgram::addField,        &ArrayProgram::removeField,      &ArrayProgram::duplicate,
      &ArrayProgram::destroy,         &ArrayProgram::compareAll};
  const std::size_t which = below(makers.size() + others.size() + 1);
  if (pairs_.empty() || which < makers.size()) {
    (this->*makers[which % makers.size()])();
  } else if (which - makers.size() < others.size()) {
    (this->*others[which - makers.size()])();
  } else {
    subscript();
  }
}

std::uint8_t ArrayProgram::next() {
  if (bytes_.empty()) return 0;
  const std::uint8_t byte = bytes_.front();
  bytes_ = bytes_.subspan(1);
  return byte;
}

std::size_t ArrayProgram::size() {
  const std::size_t which = below(16);
  return which < strangeSizes.size() ? strangeSizes[which] : which - strangeSizes.size();
}

std::size_t ArrayProgram::index(std::size_t count) {
  const std::size_t which = below(count + 2);
  return which == count + 1 ? SIZE_MAX : which;
}

const char* ArrayProgram::name() {
  constexpr std::array<const char*, 5> names = {"a", "b", "c", "",
                                                "a name that is too long to lie in its object"};
  return names[below(names.size())];
}

// What (ndim, dims) means to a creation, and to hcySetDimensions() but for no dimensions at all.
Sizes ArrayProgram::smallDimensions() {
  Sizes dimensions(below(5));
  for (std::size_t& dimension : dimensions) dimension = below(4);
  return dimensions;
}

void ArrayProgram::add(hcyArray* array, Model model) {
  HCY_REQUIRE(array != nullptr);
  pairs_.push_back({Handle(array), std::move(model)});
  requireSame(array, pairs_.back().model);
  if (pairs_.size() > mostArrays) pairs_.erase(pairs_.begin());
}

void ArrayProgram::duplicate() {
  Pair& pair = any();
  Handle copy(hcyDuplicateArray(pair.array.get()));
  Model model = pair.model.duplicate();
  if (pair.model.mayHaveLostImaginary()) model.setComplex(hcyIsComplex(copy.get()));
  add(copy.release(), std::move(model));
}

void ArrayProgram::destroy() {
  pairs_.erase(pairs_.begin() + static_cast<std::ptrdiff_t>(below(pairs_.size())));
}

void ArrayProgram::write() {
  Pair& pair = any();
  Contents& contents = pair.model.contents();
  const hcyClassID classId = pair.model.classId();
  if (contents.real.empty()) return;
  const std::size_t i = below(contents.real.size());
  const double value = classId == hcyLOGICAL_CLASS ? static_cast<double>(below(2))
                       : classId == hcyUINT8_CLASS ? static_cast<double>(next())
                                                   : static_cast<double>(below(128));
  const bool isImaginary = coin() && !contents.imaginary.empty();
  (isImaginary ? contents.imaginary : contents.real)[i] = value;
  void* const data = isImaginary ? hcyGetImagData(pair.array.get()) : dataOf(pair.array.get());
  abi::classFacts[classId].write(data, i, value);
  requireSame(pair.array.get(), pair.model);
}

void ArrayProgram::writeIndices() {
  Pair& pair = any();
  Contents& contents = pair.model.contents();
  if (!pair.model.isSparse()) return;
  const bool isRow = coin() && !contents.rows.empty();
  Sizes& sizes = isRow ? contents.rows : contents.columnStarts;
  const std::size_t i = below(sizes.size());
  sizes[i] = size();
  (isRow ? hcyGetIr(pair.array.get()) : hcyGetJc(pair.array.get()))[i] = sizes[i];
  requireSame(pair.array.get(), pair.model);
}

void ArrayProgram::subscript() {
  if (pairs_.empty()) return;
  const Pair& pair = any();
  const Sizes& dimensions = pair.model.dimensions();
  const std::array<std::size_t, 5> subscripts = {size(), size(), size(), size(), size()};
  const std::size_t count = below(subscripts.size() + 1);
  std::size_t expected = 0, stride = 1;
  for (std::size_t i = 0; i < std::min(count, dimensions.size()); ++i) {
    expected += subscripts[i] * stride;
    stride *= dimensions[i];
  }
  HCY_REQUIRE(hcyCalcSingleSubscript(pair.array.get(), count, subscripts.data()) == expected);
}

void ArrayProgram::compareAll() {
  for (Pair& pair : pairs_) requireSameThroughout(pair.array.get(), pair.model);
}

// --- Shapes.

void ArrayProgram::settle(Pair& pair) {
  const std::shared_ptr<Element> element = pair.model.element();
  const hcyArray* const array = pair.array.get();
  Contents& contents = pair.model.contents();
  if (pair.model.mayHaveLostImaginary() && hcyGetImagData(array) != nullptr) {
    contents.imaginary.resize(contents.real.size());
  }
  requireSame(array, pair.model);
  Handle(hcyDuplicateArray(array));
  pair.model.commit();
  std::erase_if(pairs_, [&](const Pair& other) {
    return other.array.get() != array && other.model.element() == element;
  });
}

void ArrayProgram::repair(Pair& pair) {
  const Sizes dimensions = {2, 2};
  HCY_REQUIRE(hcySetDimensions(pair.array.get(), dimensions.data(), dimensions.size()) == 0);
  pair.model.setDimensions(dimensions);
}

void ArrayProgram::changeDimension() {
  Pair& pair = any();
  Sizes dimensions = pair.model.dimensions();
  const std::size_t which = below(2), value = size();
  dimensions[which] = value;
  const bool isTooLarge = Model::isTooLarge(*pair.model.element(), dimensions);
  if (!isTooLarge && takesMuchMemory(pair.model, dimensions)) return;
  const auto set = which == 0 ? hcySetM : hcySetN;
  HCY_REQUIRE(overflows([&] { set(pair.array.get(), value); }) == isTooLarge);
  pair.model.setDimensions(dimensions);
  HCY_REQUIRE((which == 0 ? hcyGetM : hcyGetN)(pair.array.get()) == value);
  if (isTooLarge) repair(pair);
  settle(pair);
}

void ArrayProgram::changeDimensions() {
  Pair& pair = any();
  const Sizes given = smallDimensions();
  const int result = hcySetDimensions(pair.array.get(), given.data(), given.size());
  HCY_REQUIRE(result == (given.empty() ? 1 : 0));
  if (given.empty()) return requireSame(pair.array.get(), pair.model);
  pair.model.setDimensions(given.size() == 1 ? Sizes{given[0], 1} : given);
  settle(pair);
}

void ArrayProgram::changeNzmax() {
  Pair& pair = any();
  const std::size_t nzmax = size();
  if (nzmax > 100 && nzmax <= pair.model.count()) return;  // takes its memory
  hcySetNzmax(pair.array.get(), nzmax);
  pair.model.setNzmax(nzmax);
  settle(pair);
}

}  // namespace hcy::fuzz
