// SPDX-License-Identifier: Apache-2.0
//
// The operations of the library, done on plain messages.

#include "operations/messages/messages.h"
#include "operations/operation.h"
#include "operations/points.h"

namespace hcy::bench {
namespace {

void addCreationAndDuplication(Operations& operations, VORTEN_Array::QXType type) {
  for (const std::size_t size : arraySizes) {
    operations.push_back(operation(operationName("create", classNames[type], size),
                                   [=] { return [=] { keep(makeMessage(type, size).get()); }; }));
    operations.push_back(operation(operationName("duplicate", classNames[type], size), [=] {
      return [message = makeMessage(type, size)] {
        keep(std::make_unique<VORTEN_Array>(*message).get());
      };
    }));
  }
}

void addElements(Operations& operations, std::size_t size) {
  operations.push_back(operation(operationName("get_pr", "double", size), [=] {
    return [message = makeMessage(VORTEN_Array::DOUBLE, size)] {
      keep(message->mutable_qxdouble()->mutable_elements()->mutable_data());
    };
  }));
  operations.push_back(operation(operationName("get_cell", "double", size), [=] {
    return [cells = makeMessage(VORTEN_Array::CELL, size), last = static_cast<int>(size) - 1] {
      keep(cells->mutable_cell()->mutable_elements(last));
    };
  }));
}

VORTEN_Array* fieldOf(VORTEN_Array& array, const std::string& name) {
  auto& found = *array.mutable_struct_();
  for (int i = 0; i < found.field_names_size(); ++i) {
    if (found.field_names(i) == name) return found.mutable_elements(i);
  }
  return nullptr;
}

// Always the last field.
void addFields(Operations& operations, int fields) {
  const auto size = static_cast<std::size_t>(fields);
  const std::string last = fieldName(fields - 1);
  operations.push_back(operation(operationName("get_field", "double", size), [=] {
    return [message = makeStructMessage(fields), last] { keep(fieldOf(*message, last)); };
  }));
  operations.push_back(operation(operationName("set_field", "double", size), [=] {
    return
        [message = makeStructMessage(fields), last, value = makeMessage(VORTEN_Array::DOUBLE, 1)] {
          fieldOf(*message, last)->CopyFrom(*value);
        };
  }));
}

Message messageOf(const std::string& text) {
  Message message = makeMessage(VORTEN_Array::CHAR, 0);
  message->mutable_qxchar()->mutable_elements()->Add(text.begin(), text.end());
  return message;
}

// One unit of ASCII after another, as it is first written.
std::string asciiOf(const VORTEN_Array& message) {
  std::string text;
  text.reserve(static_cast<std::size_t>(message.qxchar().elements_size()));
  for (const std::uint32_t unit : message.qxchar().elements()) {
    text.push_back(static_cast<char>(unit));
  }
  return text;
}

void addTexts(Operations& operations, std::size_t size) {
  const std::string text(size, 'a');
  operations.push_back(operation(
      operationName("create_string", "ascii", size),
      [=] { return [=] { keep(messageOf(text).get()); }; }, size));
  operations.push_back(operation(
      operationName("to_string", "ascii", size),
      [=] { return [message = messageOf(text)] { keep(asciiOf(*message).data()); }; }, size));
}

}  // namespace

Operations allOperations() {
  Operations operations;
  for (int type = VORTEN_Array::UINT8; type <= VORTEN_Array::CELL; ++type) {
    addCreationAndDuplication(operations, static_cast<VORTEN_Array::QXType>(type));
  }
  for (const std::size_t size : arraySizes) addElements(operations, size);
  for (const int fields : fieldCounts) addFields(operations, fields);
  for (const std::size_t size : textSizes) addTexts(operations, size);
  return operations;
}

}  // namespace hcy::bench
