// SPDX-License-Identifier: Apache-2.0

#include "work_messages.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "field_bytes.h"
#include "function_error.h"
#include "serialized_error.h"

namespace hcy::server {
namespace {

constexpr std::size_t kLongestMessage = 2147483647;

std::string serializedArray(Array array) {
  const Value value{std::move(array)};
  const WrittenValue written(value);
  std::string bytes(written.size(), '\0');
  written.write(reinterpret_cast<std::uint8_t*>(bytes.data()));
  return bytes;
}

// A VORTEN_Result with these outputs.
ByteBuffer resultWith(std::span<const Bytes> outputs) {
  std::size_t size = 0;
  for (const Bytes output : outputs) size += fieldSize(kResultOutput, output.size());
  if (size > kLongestMessage) throw FunctionError(kResultSize, "The outputs take more than 2 GiB.");
  ByteBuffer result;
  result.resizeUninitialized(size);
  auto* out = reinterpret_cast<std::uint8_t*>(result.data());
  for (const Bytes output : outputs) out = writeField(kResultOutput, output, out);
  return result;
}

// A VORTEN_Result with one output, a cell of one row with these elements.
ByteBuffer resultWithCell(std::span<const Bytes> elements) {
  // The type, cell, and two dimensions, 1 and the number of elements.
  constexpr int kDimensions = 2;
  constexpr int kCell = 28;
  constexpr int kElement = 1;
  std::string beginning = {1 << 3, 13};
  std::uint8_t dimensions[16] = {1};
  const std::uint8_t* const begin = dimensions;
  const std::uint8_t* const end = writeVarint(elements.size(), dimensions + 1);
  beginning.push_back(static_cast<char>(lengthDelimitedTag(kDimensions)));
  beginning.push_back(static_cast<char>(end - begin));
  beginning.insert(beginning.end(), begin, end);
  std::size_t cellSize = 0;
  for (const Bytes element : elements) cellSize += fieldSize(kElement, element.size());
  const std::size_t arraySize = beginning.size() + fieldSize(kCell, cellSize);
  const std::size_t size = fieldSize(kResultOutput, arraySize);
  if (size > kLongestMessage) throw std::bad_alloc();
  ByteBuffer result;
  result.resizeUninitialized(size);
  auto* out = reinterpret_cast<std::uint8_t*>(result.data());
  out = copyBytes(bytesOf(beginning), beginField(kResultOutput, arraySize, out));
  out = beginField(kCell, cellSize, out);
  for (const Bytes element : elements) out = writeField(kElement, element, out);
  return result;
}

// An array that a worker sends about a call, beside the outputs.
Value remark(Bytes bytes) {
  std::optional<Value> value = readValue(bytes);
  if (!value) throw FunctionError(kArgumentValue, "An input of the worker is broken.");
  return std::move(*value);
}

std::string textOf(Bytes bytes, const std::string& name) {
  Value value = remark(bytes);
  return utf8Text(value, name);
}

std::vector<StackFrame> framesOf(const Value& cell) {
  if (!cell.array || !cell.array.isCell()) {
    throw FunctionError(kArgumentClass, "stack is not a cell.");
  }
  const auto text = [&cell](std::size_t i, const char* name) {
    Value element{static_cast<const Array&>(cell.array)[i]};
    return utf8Text(element, name);
  };
  std::vector<StackFrame> frames;
  for (std::size_t i = 0; i + 2 < cell.array.size(); i += 3) {
    Value line{static_cast<const Array&>(cell.array)[i + 2]};
    frames.push_back(
        {text(i, "file"), text(i + 1, "name"), static_cast<int>(realScalar(line, "line"))});
  }
  return frames;
}

ByteBuffer errorFrom(std::span<const Bytes> remarks) {
  if (remarks.size() < 2) throw FunctionError(kArgumentCount, "An error has no message.");
  const std::string identifier = textOf(remarks[0], "identifier");
  const std::string message = textOf(remarks[1], "message");
  std::vector<StackFrame> frames;
  if (remarks.size() > 2) frames = framesOf(remark(remarks[2]));
  return serialized(FunctionError(identifier, message, frames), "");
}

}  // namespace

std::uint64_t ticketIn(const RequestFields& work) {
  if (work.inputs.empty()) throw FunctionError(kArgumentCount, "A worker sends a ticket.");
  Value first = remark(work.inputs[0]);
  const double ticket = realScalar(first, "ticket");
  if (ticket != 0 && work.inputs.size() < 2) {
    throw FunctionError(kArgumentCount, "A worker sends outputs or an error.");
  }
  return ticket >= 1 && ticket < 1e15 ? static_cast<std::uint64_t>(ticket) : 0;
}

ByteBuffer resultIn(const RequestFields& work, int nargout) {
  const std::span<const Bytes> values = std::span(work.inputs).subspan(2);
  if (textOf(work.inputs[1], "kind") == "error") return errorFrom(values);
  const auto wanted = static_cast<std::size_t>(std::max(nargout, 0));
  if (values.size() < wanted) throw missingOutputs(values.size(), wanted);
  return resultWith(values.first(wanted));
}

ByteBuffer messageOfCall(std::uint64_t ticket, std::string_view function,
                         const RequestFields& call) {
  const std::string about[] = {serializedArray(static_cast<double>(ticket)),
                               serializedArray(function),
                               serializedArray(static_cast<double>(call.nargout))};
  std::vector<Bytes> elements = {bytesOf(about[0]), bytesOf(about[1]), bytesOf(about[2])};
  elements.insert(elements.end(), call.inputs.begin(), call.inputs.end());
  return resultWithCell(elements);
}

ByteBuffer messageOfNoCall() { return resultWithCell({}); }

}  // namespace hcy::server
