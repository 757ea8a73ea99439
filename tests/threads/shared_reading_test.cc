// SPDX-License-Identifier: Apache-2.0
//
// One array, which nobody changes, read and sent on several threads at once.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "at_once.h"
#include "support/array_value.h"
#include "support/local_server.h"
#include "support/script_server.h"
#include "support/wire_bytes.h"

namespace hcy::abi {
namespace {

using test::atOnce;

constexpr int kThreads = 8;

// A struct whose fields are found through an index.
Value manyFields() {
  std::vector<std::string> names;
  std::vector<Value> values;
  for (int i = 0; i < 40; ++i) {
    names.push_back("field" + std::to_string(i));
    values.push_back(doubles({1, 1}, {i + 0.5}));
  }
  return structure({1, 1}, names, values);
}

// An array of each class and kind of storage.
std::vector<Value> kindsWithElements() {
  std::vector<Value> kinds = {numeric<std::uint8_t>(hcyUINT8_CLASS, {1, 2}, {1, 200}, {3, 4}),
                              numeric<std::int8_t>(hcyINT8_CLASS, {1, 2}, {-1, 2}),
                              numeric<std::uint16_t>(hcyUINT16_CLASS, {1, 2}, {1, 60000}, {3, 4}),
                              numeric<std::int16_t>(hcyINT16_CLASS, {1, 2}, {-1, 2}, {5, 6}),
                              numeric<std::uint32_t>(hcyUINT32_CLASS, {1, 2}, {1, 4000000000U}),
                              numeric<std::int32_t>(hcyINT32_CLASS, {1, 2}, {-1, 2}, {7, 8}),
                              numeric<std::uint64_t>(hcyUINT64_CLASS, {1, 2}, {1, SIZE_MAX}),
                              numeric<std::int64_t>(hcyINT64_CLASS, {1, 2}, {-1, 2}),
                              numeric<float>(hcySINGLE_CLASS, {1, 2}, {1.5F, 2.5F}, {3.5F, 4.5F}),
                              doubles({2, 2}, {1, 2, 3, 4}, {5, 6, 7, 8}),
                              logicals({1, 3}, "101"),
                              chars({1, 2}, u"a\u20AC"),
                              sparseDoubles({3, 2}, {0, 2, 1}, {0, 2, 3}, {5, 6, 7}, {8, 9, 10}),
                              sparseLogicals({2, 2}, {0, 1}, {0, 1, 2}, "11"),
                              manyFields()};
  kinds.push_back(structure({1, 2}, {"a", "b"}, {kinds[0], kinds[2], kinds[11], kinds[12]}));
  kinds.push_back(cell({1, 2}, {cell({1, 2}, {kinds[3], kinds[11]}), manyFields()}));
  return kinds;
}

// These, and what holds no elements: asking for them has the part that is empty sent from then on.
std::vector<Value> allKinds() {
  std::vector<Value> kinds = kindsWithElements();
  kinds.push_back(doubles({0, 3}, {}));
  kinds.push_back(chars({0, 0}, u""));
  kinds.push_back(structure({1, 2}, {"a", "b"}, {neverSet(), kinds[0], neverSet(), neverSet()}));
  kinds.push_back(cell({1, 3}, {neverSet(), kinds[16], neverSet()}));
  return kinds;
}

// All that the functions that only read say of an array, with its elements.
void describe(const hcyArray* array, std::string& text);

void describeBytes(const void* bytes, std::size_t size, std::string& text) {
  text += bytes == nullptr ? "null;" : std::string(static_cast<const char*>(bytes), size) + ";";
}

void describeText(const hcyArray* array, std::string& text) {
  char* const utf8 = hcyArrayToString(array);
  text += utf8 == nullptr ? "null;" : std::string(utf8) + ";";
  hcyFree(utf8);
  char buffer[8] = "";
  text += std::to_string(hcyGetString(array, buffer, sizeof buffer));
  describeBytes(buffer, sizeof buffer, text);
}

void describeElements(const hcyArray* array, std::string& text) {
  const std::size_t stored =
      hcyIsSparse(array) ? hcyGetNzmax(array) : hcyGetNumberOfElements(array);
  const std::size_t size = stored * hcyGetElementSize(array);
  describeBytes(hcyGetPr(array), size, text);
  describeBytes(hcyGetPi(array), size, text);
  describeBytes(hcyGetData(array), size, text);
  describeBytes(hcyGetImagData(array), size, text);
  describeBytes(hcyGetLogicals(array), stored, text);
  describeBytes(hcyGetChars(array), 2 * stored, text);
  describeBytes(hcyGetIr(array), stored * sizeof(std::size_t), text);
  describeBytes(hcyGetJc(array), (hcyGetN(array) + 1) * sizeof(std::size_t), text);
}

void describeClass(const hcyArray* array, std::string& text) {
  using Predicate = bool(const hcyArray*);
  Predicate* const predicates[] = {
      hcyIsUint8,   hcyIsInt8,    hcyIsUint16, hcyIsInt16,         hcyIsUint32,
      hcyIsInt32,   hcyIsUint64,  hcyIsInt64,  hcyIsSingle,        hcyIsChar,
      hcyIsStruct,  hcyIsCell,    hcyIsSparse, hcyIsDouble,        hcyIsLogical,
      hcyIsNumeric, hcyIsComplex, hcyIsEmpty,  hcyIsLogicalScalar, hcyIsLogicalScalarTrue};
  for (Predicate* const predicate : predicates) text += predicate(array) ? '1' : '0';
  text += hcyIsClass(array, "double") ? '1' : '0';
  text += hcyGetClassName(array);
  const std::size_t subscripts[] = {1, 1};
  for (const std::size_t size :
       {static_cast<std::size_t>(hcyGetClassID(array)), hcyGetElementSize(array), hcyGetM(array),
        hcyGetN(array), hcyGetNumberOfDimensions(array), hcyGetNumberOfElements(array),
        hcyGetNzmax(array), hcyCalcSingleSubscript(array, 2, subscripts)}) {
    text += ' ' + std::to_string(size);
  }
  text += ' ' + std::to_string(hcyGetScalar(array)) + ';';
  describeBytes(hcyGetDimensions(array), hcyGetNumberOfDimensions(array) * sizeof(std::size_t),
                text);
}

void describeContainer(const hcyArray* array, std::string& text) {
  for (std::size_t i = 0; i < hcyGetNumberOfElements(array); ++i) {
    if (hcyIsCell(array)) describe(OwnedArray(hcyGetCell(array, i)).get(), text);
    for (int field = 0; field < hcyGetNumberOfFields(array); ++field) {
      const char* const name = hcyGetFieldNameByNumber(array, field);
      text += name;
      text += std::to_string(hcyGetFieldNumber(array, name));
      describe(OwnedArray(hcyGetField(array, i, name)).get(), text);
      describe(OwnedArray(hcyGetFieldByNumber(array, i, field)).get(), text);
    }
  }
}

void describe(const hcyArray* array, std::string& text) {
  if (array == nullptr) {
    text += "none;";
    return;
  }
  describeClass(array, text);
  describeElements(array, text);
  describeText(array, text);
  describeContainer(array, text);
}

std::string descriptionOf(const hcyArray* array) {
  std::string text;
  describe(array, text);
  return text;
}

class SharedReading : public ::testing::Test {
 protected:
  // The array as it comes back from a server.
  OwnedArray echoed(const OwnedArray& array) const {
    hcyArray* output = nullptr;
    EXPECT_EQ(context_.feval(server_.url("/echo"), 1, &output, {array.get()}), 0);
    return OwnedArray(output);
  }

  // The array in each way that a program can come to it; nobody has looked into it yet.
  std::map<std::string, std::function<OwnedArray()>> origins(const Value& value) const {
    const auto made = [value] { return makeArray(value); };
    const auto inCell = [value] { return makeArray(cell({1, 1}, {value})); };
    const auto elementOf = [](const OwnedArray& container) {
      return OwnedArray(hcyGetCell(container.get(), 0));
    };
    return {{"created", made},
            {"received", [this, made] { return echoed(made()); }},
            {"element", [=] { return elementOf(inCell()); }},
            {"received element", [=, this] { return elementOf(echoed(inCell())); }},
            {"duplicate", [=] { return OwnedArray(hcyDuplicateArray(made().get())); }},
            {"duplicate of what was received",
             [=, this] { return OwnedArray(hcyDuplicateArray(echoed(made()).get())); }}};
  }

  const test::LocalServer server_;
  const Library library_;
  const Config config_{library_};
  const Context context_{library_, config_};
};

TEST_F(SharedReading, allGettersOfOneArrayAtOnce) {
  for (const Value& value : allKinds()) {
    for (const auto& [origin, make] : origins(value)) {
      SCOPED_TRACE(origin + ", class " + std::to_string(value.classId));
      const OwnedArray array = make();
      const hcyArray* const shared = array.get();
      std::vector<std::string> descriptions(kThreads);
      atOnce(kThreads, [&](int thread) {
        descriptions[static_cast<std::size_t>(thread)] = descriptionOf(shared);
      });
      const std::string expected = descriptionOf(make().get());
      for (const std::string& description : descriptions) EXPECT_EQ(description, expected);
    }
  }
}

// Handles over one element that are got at once are handles over the same element.
TEST_F(SharedReading, elementsOfOneContainerAtOnce) {
  constexpr std::size_t kElements = 600;
  std::vector<Value> values(kElements, neverSet());
  for (std::size_t i = 0; i < kElements; i += 2) values[i] = doubles({1, 1}, {double(i)});
  const Value asCell = cell({1, kElements}, values);
  const Value asStruct = structure({1, kElements}, {"a"}, values);
  for (const Value& value : {asCell, asStruct}) {
    for (const auto& [origin, make] : origins(value)) {
      SCOPED_TRACE(origin);
      const OwnedArray array = make();
      const auto at = [&](std::size_t i) {
        return OwnedArray(hcyIsCell(array.get()) ? hcyGetCell(array.get(), i)
                                                 : hcyGetField(array.get(), i, "a"));
      };
      std::vector<std::vector<const double*>> elements(kThreads);
      atOnce(kThreads, [&](int thread) {
        for (std::size_t i = 0; i < kElements; ++i) {
          const OwnedArray element = at(i);
          EXPECT_EQ(hcyIsEmpty(element.get()), i % 2 != 0);
          elements[static_cast<std::size_t>(thread)].push_back(hcyGetPr(element.get()));
        }
      });
      for (std::size_t i = 0; i < kElements; i += 2) EXPECT_EQ(*elements[0][i], double(i));
      for (const auto& own : elements) EXPECT_EQ(own, elements[0]);
    }
  }
}

class SharedSending : public SharedReading {
 protected:
  // The body of the request that sends the array.
  std::string bodyOf(const hcyArray* array) const {
    const test::ScriptServer server(
        {test::Connection{test::replyToEach(test::httpReply(200, "OK", ""))}});
    const Context context(library_, config_);
    EXPECT_EQ(context.feval(server.url(), 0, nullptr, {array}), 0);
    return server.requests().at(0).body;
  }
};

TEST_F(SharedSending, oneInputOfCallsAtOnce) {
  const Value kinds = cell({1, allKinds().size()}, allKinds());
  for (const auto& [origin, make] : origins(kinds)) {
    SCOPED_TRACE(origin);
    const OwnedArray array = make();
    const std::string expected = bodyOf(make().get());
    atOnce(kThreads, [&](int) { EXPECT_TRUE(bodyOf(array.get()) == expected); });
  }
}

TEST_F(SharedSending, oneInputThatIsReadMeanwhile) {
  std::vector<Value> kinds = kindsWithElements();
  kinds.push_back(cell({1, kinds.size()}, kinds));
  for (const Value& value : kinds) {
    for (const auto& [origin, make] : origins(value)) {
      SCOPED_TRACE(origin + ", class " + std::to_string(value.classId));
      const OwnedArray array = make();
      const std::string body = bodyOf(make().get());
      const std::string description = descriptionOf(make().get());
      atOnce(kThreads, [&](int thread) {
        if (thread % 2 == 0) {
          EXPECT_TRUE(bodyOf(array.get()) == body);
        } else {
          EXPECT_TRUE(descriptionOf(array.get()) == description);
        }
      });
    }
  }
}

}  // namespace
}  // namespace hcy::abi
