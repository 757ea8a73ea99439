// SPDX-License-Identifier: Apache-2.0

#include "bodies/message_json.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/unknown_field_set.h>

#include <string_view>
#include <vector>

#include "notations/element_json.h"
#include "text/text.h"
#include "wire/protobuf_version.h"

namespace hcy::tools {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::UnknownField;
using google::protobuf::UnknownFieldSet;

void appendHexadecimal(std::string& out, std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  out += R"({"hexadecimal": ")";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    out += digits[byte >> 4];
    out += digits[byte & 0xF];
  }
  out += "\"}";
}

void appendText(std::string& out, const std::string& bytes) {
  if (const auto text = quotedJson(bytes)) {
    out += *text;
  } else {
    appendHexadecimal(out, bytes);
  }
}

// The elements of uint8 and int8 arrays.
template <class T>
void appendBytes(std::string& out, std::string_view bytes) {
  out += '[';
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i > 0) out += ", ";
    appendElement(out, static_cast<T>(bytes[i]));
  }
  out += ']';
}

class Writer {
 public:
  std::string take() { return std::move(out_); }

  void message(const Message& message) {
    const Reflection& reflection = *message.GetReflection();
    std::vector<const FieldDescriptor*> fields;
    reflection.ListFields(message, &fields);
    const UnknownFieldSet& unknown = reflection.GetUnknownFields(message);
    open('{');
    for (const FieldDescriptor* const field : fields) {
      item();
      out_ += "\"" + std::string(nameOf(*field)) + "\": ";
      this->field(message, *field);
    }
    unknownFields(unknown);
    close('}', fields.empty() && unknown.empty());
  }

 private:
  void open(char bracket) {
    out_ += bracket;
    indent_ += 2;
    isFirst_ = true;
  }
  void item() {
    if (!isFirst_) out_ += ',';
    isFirst_ = false;
    out_ += "\n" + std::string(indent_, ' ');
  }
  void close(char bracket, bool isEmpty) {
    indent_ -= 2;
    if (!isEmpty) out_ += "\n" + std::string(indent_, ' ');
    out_ += bracket;
    isFirst_ = false;
  }

  void field(const Message& message, const FieldDescriptor& field) {
    const Reflection& reflection = *message.GetReflection();
    if (!field.is_repeated()) return value(message, field, -1);
    const int size = reflection.FieldSize(message, &field);
    if (field.cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      open('[');
      for (int i = 0; i < size; ++i) {
        item();
        this->message(reflection.GetRepeatedMessage(message, &field, i));
      }
      return close(']', false);
    }
    if (isCodeUnits(field) && units(message, field, size)) return;
    out_ += '[';
    for (int i = 0; i < size; ++i) {
      if (i > 0) out_ += ", ";
      value(message, field, i);
    }
    out_ += ']';
  }

  static bool isCodeUnits(const FieldDescriptor& field) {
    return nameOf(*field.containing_type()) == "Char" || nameOf(field) == "strings";
  }

  // Appends them as a string if they are valid text.
  bool units(const Message& message, const FieldDescriptor& field, int size) {
    std::u16string text;
    for (int i = 0; i < size; ++i) {
      const std::uint32_t unit = message.GetReflection()->GetRepeatedUInt32(message, &field, i);
      if (unit > 0xFFFF) return false;
      text += static_cast<char16_t>(unit);
    }
    const auto shown = quotedJson(text);
    if (shown) out_ += *shown;
    return shown.has_value();
  }

  // One value: that of a field, or with an index one of its values.
  void value(const Message& message, const FieldDescriptor& field, int i) {
    const Reflection& reflection = *message.GetReflection();
    const auto number = [&](auto get, auto getRepeated) {
      appendElement(out_, i < 0 ? (reflection.*get)(message, &field)
                                : (reflection.*getRepeated)(message, &field, i));
    };
    switch (field.cpp_type()) {
      case FieldDescriptor::CPPTYPE_INT32:
        return number(&Reflection::GetInt32, &Reflection::GetRepeatedInt32);
      case FieldDescriptor::CPPTYPE_INT64:
        return number(&Reflection::GetInt64, &Reflection::GetRepeatedInt64);
      case FieldDescriptor::CPPTYPE_UINT32:
        return number(&Reflection::GetUInt32, &Reflection::GetRepeatedUInt32);
      case FieldDescriptor::CPPTYPE_UINT64:
        return number(&Reflection::GetUInt64, &Reflection::GetRepeatedUInt64);
      case FieldDescriptor::CPPTYPE_DOUBLE:
        return number(&Reflection::GetDouble, &Reflection::GetRepeatedDouble);
      case FieldDescriptor::CPPTYPE_FLOAT:
        return number(&Reflection::GetFloat, &Reflection::GetRepeatedFloat);
      case FieldDescriptor::CPPTYPE_BOOL:
        return number(&Reflection::GetBool, &Reflection::GetRepeatedBool);
      case FieldDescriptor::CPPTYPE_ENUM:
        return enumeration(field, i < 0 ? reflection.GetEnumValue(message, &field)
                                        : reflection.GetRepeatedEnumValue(message, &field, i));
      case FieldDescriptor::CPPTYPE_STRING:
        return bytes(field, i < 0 ? reflection.GetString(message, &field)
                                  : reflection.GetRepeatedString(message, &field, i));
      case FieldDescriptor::CPPTYPE_MESSAGE:
        return this->message(reflection.GetMessage(message, &field));
    }
  }

  void enumeration(const FieldDescriptor& field, int number) {
    const auto* const known = field.enum_type()->FindValueByNumber(number);
    out_ += known == nullptr ? std::to_string(number) : "\"" + std::string(nameOf(*known)) + "\"";
  }

  void bytes(const FieldDescriptor& field, const std::string& value) {
    const std::string_view type = nameOf(*field.containing_type());
    if (type == "Uint8") return appendBytes<std::uint8_t>(out_, value);
    if (type == "Int8") return appendBytes<std::int8_t>(out_, value);
    appendText(out_, value);
  }

  void unknownFields(const UnknownFieldSet& fields) {
    for (int i = 0; i < fields.field_count(); ++i) {
      const UnknownField& field = fields.field(i);
      item();
      out_ += "\"#" + std::to_string(field.number()) + "\": ";
      switch (field.type()) {
        case UnknownField::TYPE_VARINT:
          out_ += std::to_string(field.varint());
          break;
        case UnknownField::TYPE_FIXED32:
          out_ += std::to_string(field.fixed32());
          break;
        case UnknownField::TYPE_FIXED64:
          out_ += std::to_string(field.fixed64());
          break;
        case UnknownField::TYPE_LENGTH_DELIMITED:
          appendHexadecimal(out_, field.length_delimited());
          break;
        case UnknownField::TYPE_GROUP:
          open('{');
          unknownFields(field.group());
          close('}', field.group().empty());
          break;
      }
    }
  }

  std::string out_;
  std::size_t indent_ = 0;
  bool isFirst_ = true;
};

}  // namespace

UnknownFields unknownFieldsOf(const google::protobuf::Message& message) {
  const Reflection& reflection = *message.GetReflection();
  std::vector<const FieldDescriptor*> fields;
  reflection.ListFields(message, &fields);
  const auto unknown = static_cast<std::size_t>(reflection.GetUnknownFields(message).field_count());
  UnknownFields found{unknown, fields.empty()};
  for (const FieldDescriptor* const field : fields) {
    if (field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) continue;
    const int size = field->is_repeated() ? reflection.FieldSize(message, field) : 1;
    for (int i = 0; i < size; ++i) {
      found.count +=
          unknownFieldsOf(field->is_repeated() ? reflection.GetRepeatedMessage(message, field, i)
                                               : reflection.GetMessage(message, field))
              .count;
    }
  }
  return found;
}

std::string toJson(const google::protobuf::Message& message) {
  Writer writer;
  writer.message(message);
  return writer.take();
}

}  // namespace hcy::tools
