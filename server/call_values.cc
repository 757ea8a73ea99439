// SPDX-License-Identifier: Apache-2.0

#include "call_values.h"

#include <cstdint>
#include <exception>
#include <hcy/hcyclient.hpp>
#include <limits>
#include <new>
#include <nlohmann/json.hpp>
#include <utility>

#include "array_json.h"
#include "field_bytes.h"
#include "function_error.h"
#include "incomplete_output.h"
#include "json_array.h"
#include "json_value.h"
#include "request_fields.h"
#include "serialized_error.h"
#include "source_text.h"
#include "text.h"
#include "value.h"

namespace hcy::server {
namespace {

constexpr std::size_t kMostShown = 100'000;

struct Shown {
  std::string text;
  bool isExact;
};

Shown show(Value&& value) try {
  if (!value.array) return {"<not a value of JSON>", false};
  std::vector<Array> arrays;
  arrays.push_back(std::move(value.array));
  tools::requireWhole(arrays);
  return {tools::toJson(arrays.front()), true};
} catch (const std::bad_alloc&) {
  throw;
} catch (const tools::IncompleteOutput&) {
  return {"<incomplete>", false};
} catch (const std::exception&) {
  return {"<not a value of JSON>", false};
}

Shown showBytes(Bytes bytes) {
  std::optional<Value> value = readValue(bytes);
  return value ? show(std::move(*value)) : Shown{"<incomplete>", false};
}

const tools::JsonValue* member(const tools::JsonObject& object, std::string_view name) {
  for (const tools::JsonMember& one : object) {
    if (one.name == name) return &one.value;
  }
  return nullptr;
}

std::string textOf(const tools::JsonObject& object, std::string_view name) {
  const tools::JsonValue* const value = member(object, name);
  if (value == nullptr) return {};
  const auto* const text = value->as<std::string>();
  if (text == nullptr) throw BadAnswer(std::string(name) + " is not a string");
  return *text;
}

std::int32_t lineNumberOf(const tools::JsonObject& frame) try {
  const tools::JsonValue* const value = member(frame, "line");
  if (value == nullptr) return 0;
  const auto* const number = value->as<tools::JsonNumber>();
  if (number == nullptr) throw BadAnswer("the line of a stack frame is not a number");
  return std::stoi(std::string(number->token));
} catch (const std::out_of_range&) {
  throw BadAnswer("the line of a stack frame is out of range");
}

ByteBuffer errorResult(const tools::JsonValue& value) {
  const auto* const object = value.as<tools::JsonObject>();
  if (object == nullptr) throw BadAnswer("error is not an object");
  const std::string identifier = textOf(*object, "identifier");
  const std::string message = textOf(*object, "message");
  std::vector<StackFrame> stack;
  if (const tools::JsonValue* const list = member(*object, "stack")) {
    const auto* const frames = list->as<tools::JsonList>();
    if (frames == nullptr) throw BadAnswer("the stack of the error is not a list");
    for (const tools::JsonValue& one : *frames) {
      const auto* const frame = one.as<tools::JsonObject>();
      if (frame == nullptr) throw BadAnswer("a frame of the stack is not an object");
      stack.push_back({textOf(*frame, "file"), textOf(*frame, "name"), lineNumberOf(*frame)});
    }
  }
  return serialized(FunctionError(identifier, message, stack), "");
}

ByteBuffer outputsResult(const tools::JsonValue& value, int nargout) {
  const auto* const list = value.as<tools::JsonList>();
  if (list == nullptr) throw BadAnswer("outputs is not a list");
  const auto wanted = static_cast<std::size_t>(nargout);
  if (list->size() < wanted) {
    throw BadAnswer("outputs has " + std::to_string(list->size()) + " elements, and nargout is " +
                    std::to_string(nargout));
  }
  std::vector<Value> outputs;
  for (std::size_t i = 0; i < wanted; ++i) outputs.push_back({tools::arrayFrom((*list)[i])});
  const WrittenResult written(outputs);
  ByteBuffer result;
  result.resizeUninitialized(written.size());
  written.write(reinterpret_cast<std::uint8_t*>(result.data()));
  return result;
}

ByteBuffer resultOf(const tools::JsonValue& line, int nargout) {
  const auto* const object = line.as<tools::JsonObject>();
  if (object == nullptr) throw BadAnswer("the line is not an object");
  if (const tools::JsonValue* const error = member(*object, "error")) return errorResult(*error);
  const tools::JsonValue* const outputs = member(*object, "outputs");
  if (outputs == nullptr) throw BadAnswer("the line has neither outputs nor error");
  return outputsResult(*outputs, nargout);
}

}  // namespace

std::optional<ShownRequest> showRequest(std::string_view body) {
  const auto fields = requestFieldsOf(body);
  if (!fields) return std::nullopt;
  ShownRequest request;
  request.nargout = fields->nargout;
  for (const Bytes bytes : fields->inputs) {
    Shown shown = showBytes(bytes);
    request.inputs.push_back(std::move(shown.text));
    request.areExact = request.areExact && shown.isExact;
  }
  return request;
}

std::optional<ShownReply> showReply(std::string_view body) {
  std::string identifier, message;
  bool hasError = false;
  ShownReply shown;
  const auto readError = [&](const WireField& field) {
    if (field.is(kErrorIdentifier)) identifier.assign(field.content.begin(), field.content.end());
    if (field.is(kErrorMessage)) message.assign(field.content.begin(), field.content.end());
    return true;
  };
  const bool isWhole = forEachField(bytesOf(body), [&](const WireField& field) {
    if (field.is(kResultError)) {
      hasError = true;
      return forEachField(field.content, readError);
    }
    if (field.is(kResultOutput) && shown.outputs.size() < kMostShown) {
      shown.outputs.push_back(showBytes(field.content).text);
    }
    return true;
  });
  if (!isWhole) return std::nullopt;
  if (hasError) shown.error = identifier + ": " + message;
  return shown;
}

std::string cutText(std::string_view text, std::size_t columns) {
  return tools::cutToWidth(tools::printable(text), columns);
}

std::string lineOfCall(std::string_view function, const ShownRequest& request) {
  const auto name = tools::quotedJson(function);
  if (!name || !request.areExact) {
    throw BadAnswer("an input of the call cannot be written as JSON");
  }
  std::string line = R"({"function":)" + *name + R"(,"nargout":)" +
                     std::to_string(request.nargout) + R"(,"inputs":[)";
  for (std::size_t i = 0; i < request.inputs.size(); ++i) {
    if (i > 0) line += ',';
    line += request.inputs[i];
  }
  return line += "]}\n";
}

ByteBuffer resultOfLine(std::string_view line, int nargout) try {
  return resultOf(tools::parseJson(line), nargout);
} catch (const tools::BadText& problem) {
  throw BadAnswer("column " + std::to_string(problem.offset + 1) + ": " + problem.what());
}

}  // namespace hcy::server
