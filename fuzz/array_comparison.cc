// SPDX-License-Identifier: Apache-2.0

#include "array_comparison.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "abi/class_facts.h"
#include "handle.h"
#include "require.h"

namespace hcy::fuzz {

void* dataOf(const hcyArray* array) {
  if (hcyGetClassID(array) == hcyLOGICAL_CLASS) return hcyGetLogicals(array);
  if (hcyGetClassID(array) == hcyCHAR_CLASS) return hcyGetChars(array);
  return hcyGetData(array);
}

namespace {

void requireSameSizes(const std::size_t* sizes, const Sizes& expected) {
  HCY_REQUIRE((sizes == nullptr) == expected.empty());
  for (std::size_t i = 0; i < expected.size(); ++i) HCY_REQUIRE(sizes[i] == expected[i]);
}

void requireSameClass(const hcyArray* array, const Model& model) {
  for (hcyClassID id = 0; id < abi::classCount; ++id) {
    HCY_REQUIRE(abi::classFacts[id].predicate(array) == (id == model.classId()));
    HCY_REQUIRE(hcyIsClass(array, abi::classFacts[id].name) == (id == model.classId()));
  }
  const abi::ClassFacts& facts = abi::classFacts[model.classId()];
  HCY_REQUIRE(hcyGetClassID(array) == model.classId());
  HCY_REQUIRE(std::strcmp(hcyGetClassName(array), facts.name) == 0);
  HCY_REQUIRE(hcyIsSparse(array) == model.isSparse());
  HCY_REQUIRE(hcyIsNumeric(array) == model.isNumeric());
  HCY_REQUIRE(hcyIsComplex(array) == model.isComplex());
  HCY_REQUIRE(hcyGetElementSize(array) == facts.elementSize);
}

void requireSameShape(const hcyArray* array, const Model& model) {
  const Sizes& dimensions = model.dimensions();
  HCY_REQUIRE(hcyGetNumberOfDimensions(array) == dimensions.size());
  requireSameSizes(hcyGetDimensions(array), dimensions);
  HCY_REQUIRE(hcyGetM(array) == dimensions[0]);
  HCY_REQUIRE(hcyGetN(array) == dimensions[1]);
  HCY_REQUIRE(hcyGetNumberOfElements(array) == model.count());
  HCY_REQUIRE(hcyIsEmpty(array) == (model.count() == 0));
}

void requireSameElements(const void* data, hcyClassID classId, const std::vector<double>& values) {
  HCY_REQUIRE((data == nullptr) == values.empty());
  for (std::size_t i = 0; i < values.size(); ++i) {
    HCY_REQUIRE(abi::classFacts[classId].read(data, i) == values[i]);
  }
}

// That each getter serves its classes alone.
void requireSameData(const hcyArray* array, Model& model) {
  const Contents& contents = model.contents();
  const hcyClassID classId = model.classId();
  const bool isDouble = classId == hcyDOUBLE_CLASS;
  const void* const real = dataOf(array);
  requireSameElements(real, classId, contents.real);
  HCY_REQUIRE(hcyGetData(array) == (model.isNumeric() ? real : nullptr));
  HCY_REQUIRE(hcyGetPr(array) == (isDouble ? real : nullptr));
  HCY_REQUIRE(hcyGetLogicals(array) == (classId == hcyLOGICAL_CLASS ? real : nullptr));
  HCY_REQUIRE(hcyGetChars(array) == (classId == hcyCHAR_CLASS ? real : nullptr));
  const void* const imaginary = hcyGetImagData(array);
  requireSameElements(imaginary, classId, contents.imaginary);
  HCY_REQUIRE(hcyGetPi(array) == (isDouble ? imaginary : nullptr));
}

void requireSameSparse(const hcyArray* array, Model& model) {
  const Contents& contents = model.contents();
  HCY_REQUIRE(hcyGetNzmax(array) == (model.isSparse() ? contents.rows.size() : SIZE_MAX));
  requireSameSizes(hcyGetIr(array), contents.rows);
  requireSameSizes(hcyGetJc(array), contents.columnStarts);
}

void requireSameScalar(const hcyArray* array, Model& model) {
  const Contents& contents = model.contents();
  double first = contents.real.empty() ? 0 : contents.real[0];
  if (model.classId() == hcyUINT8_CLASS && first > INT8_MAX) first -= UINT8_MAX + 1;
  HCY_REQUIRE(hcyGetScalar(array) == first);
  const bool isScalar = model.classId() == hcyLOGICAL_CLASS && model.dimensions() == Sizes{1, 1};
  HCY_REQUIRE(hcyIsLogicalScalar(array) == isScalar);
  const bool isStored = !model.isSparse() || (isScalar && contents.columnStarts == Sizes{0, 1});
  HCY_REQUIRE(hcyIsLogicalScalarTrue(array) ==
              (isScalar && isStored && !contents.real.empty() && first != 0));
}

void requireSameFields(const hcyArray* array, const Model& model) {
  const std::vector<std::string>& fields = model.element()->fields;
  const int count = static_cast<int>(fields.size());
  HCY_REQUIRE(hcyGetNumberOfFields(array) == count);
  for (int n = 0; n < count; ++n) {
    const std::string& name = fields[static_cast<std::size_t>(n)];
    HCY_REQUIRE(hcyGetFieldNameByNumber(array, n) == name);
    HCY_REQUIRE(hcyGetFieldNumber(array, name.c_str()) == model.fieldNumber(name));
  }
  HCY_REQUIRE(hcyGetFieldNameByNumber(array, count) == nullptr);
  HCY_REQUIRE(hcyGetFieldNameByNumber(array, -1) == nullptr);
  HCY_REQUIRE(hcyGetFieldNumber(array, nullptr) == -1);
}

// ASCII is the same in UTF-8; of other text the fuzzer of UTF-16 sees to the form.
void requireSameText(const hcyArray* array, Model& model) {
  const std::vector<double>& units = model.contents().real;
  const bool isChar = model.classId() == hcyCHAR_CLASS;
  const Text text(hcyArrayToString(array));
  if (!isChar || units.empty()) HCY_REQUIRE(!text);
  std::string ascii;
  for (const double unit : units) ascii += static_cast<char>(static_cast<std::uint16_t>(unit));
  bool isAscii = isChar && !units.empty();
  for (const double unit : units) isAscii = isAscii && unit < 0x80;
  if (isAscii) HCY_REQUIRE(text && std::memcmp(text.get(), ascii.c_str(), units.size() + 1) == 0);

  std::array<char, 9> buffer;
  buffer.fill('?');
  const int result = hcyGetString(array, buffer.data(), buffer.size() - 1);
  const std::string cut = isChar ? ascii.substr(0, buffer.size() - 2) : "";
  HCY_REQUIRE(result == (isChar && cut.size() == ascii.size() ? 0 : 1));
  if (isChar) HCY_REQUIRE(std::memcmp(buffer.data(), cut.c_str(), cut.size() + 1) == 0);
  for (std::size_t i = isChar ? cut.size() + 1 : 0; i < buffer.size(); ++i) {
    HCY_REQUIRE(buffer[i] == '?');
  }
}

}  // namespace

void requireSame(const hcyArray* array, Model& model) {
  requireSameClass(array, model);
  requireSameShape(array, model);
  requireSameData(array, model);
  requireSameSparse(array, model);
  requireSameScalar(array, model);
  requireSameFields(array, model);
  requireSameText(array, model);
}

void requireSameThroughout(const hcyArray* array, Model& model) {
  requireSame(array, model);
  if (!model.isContainer()) return;
  const std::size_t perElement = model.slotsPerElement();
  for (std::size_t i = 0; i < model.count() * perElement; ++i) {
    std::size_t slot = i;
    const std::size_t field = i % perElement;
    const char* const name = hcyGetFieldNameByNumber(array, static_cast<int>(field));
    // Of two fields of one name, the first is read.
    if (model.isStruct()) {
      slot = i - field + static_cast<std::size_t>(model.fieldNumber(name));
    }
    const Handle element(model.isCell() ? hcyGetCell(array, i)
                                        : hcyGetField(array, i / perElement, name));
    HCY_REQUIRE(element != nullptr);
    Model expected = model.slot(slot);
    requireSameThroughout(element.get(), expected);
  }
}

}  // namespace hcy::fuzz
