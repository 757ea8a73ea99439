// SPDX-License-Identifier: Apache-2.0

#include "work_messages.h"

#include <algorithm>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "array_values.h"
#include "function_error.h"
#include "hcy.client.VORTENResult.pb.h"
#include "message_memory.h"
#include "wire/protobuf_version.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy::server {
namespace {

using client::VORTEN_Array;
using client::VORTEN_Result;

constexpr std::size_t kLongestMessage = 2147483647;

std::size_t fieldSize(int number, std::size_t length) {
  return varintSize(lengthDelimitedTag(number)) + varintSize(length) + length;
}

// The beginning of a field; its content comes next.
std::uint8_t* beginField(int number, std::size_t length, std::uint8_t* out) {
  return writeVarint(length, writeVarint(lengthDelimitedTag(number), out));
}

std::uint8_t* writeField(int number, Bytes content, std::uint8_t* out) {
  return copyBytes(content, beginField(number, content.size(), out));
}

Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string serializedScalar(double value) {
  VORTEN_Array array;
  makeScalar(array, value);
  return array.SerializeAsString();
}

std::string serializedText(std::string_view ascii) {
  VORTEN_Array array;
  array.set_type(VORTEN_Array::CHAR);
  setDimensions(array, {1, ascii.size()});
  for (const char c : ascii) {
    array.mutable_qxchar()->add_elements(static_cast<unsigned char>(c));
  }
  return array.SerializeAsString();
}

// A VORTEN_Result with these outputs.
ByteBuffer resultWith(std::span<const Bytes> outputs) {
  constexpr int kOutput = VORTEN_Result::kLhsFieldNumber;
  std::size_t size = 0;
  for (const Bytes output : outputs) size += fieldSize(kOutput, output.size());
  if (size > kLongestMessage) throw FunctionError(kResultSize, "The outputs take more than 2 GiB.");
  ByteBuffer result;
  result.resizeUninitialized(size);
  auto* out = reinterpret_cast<std::uint8_t*>(result.data());
  for (const Bytes output : outputs) out = writeField(kOutput, output, out);
  return result;
}

// A VORTEN_Result with one output, a cell of one row with these elements.
ByteBuffer resultWithCell(std::span<const Bytes> elements) {
  constexpr int kElement = VORTEN_Array::Cell::kElementsFieldNumber;
  VORTEN_Array head;
  head.set_type(VORTEN_Array::CELL);
  setDimensions(head, {1, elements.size()});
  const std::string beginning = head.SerializeAsString();
  std::size_t cellSize = 0;
  for (const Bytes element : elements) cellSize += fieldSize(kElement, element.size());
  const std::size_t arraySize =
      beginning.size() + fieldSize(VORTEN_Array::kCellFieldNumber, cellSize);
  const std::size_t size = fieldSize(VORTEN_Result::kLhsFieldNumber, arraySize);
  if (size > kLongestMessage) throw std::bad_alloc();
  ByteBuffer result;
  result.resizeUninitialized(size);
  auto* out = reinterpret_cast<std::uint8_t*>(result.data());
  out = beginField(VORTEN_Result::kLhsFieldNumber, arraySize, out);
  out = copyBytes(bytesOf(beginning), out);
  out = beginField(VORTEN_Array::kCellFieldNumber, cellSize, out);
  for (const Bytes element : elements) out = writeField(kElement, element, out);
  return result;
}

// Arrays that a worker sends about a call, beside the outputs.
class Remark {
 public:
  explicit Remark(Bytes bytes) : array_(createMessage<Array>(*arena_)) {
    if (!array_.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) {
      throw FunctionError(kArgumentValue, "An input of the worker is broken.");
    }
  }
  Array& operator*() { return array_; }

 private:
  BoundedArena arena_;
  Array& array_;
};

void addFrames(client::VORTEN_Error& error, Array& cell) {
  requireClass(cell, VORTEN_Array::CELL, "stack");
  auto& elements = *cell.mutable_cell()->mutable_elements();
  for (int i = 0; i + 2 < elements.size(); i += 3) {
    auto& frame = *error.add_stack();
    frame.set_file(utf8Text(elements[i], "file"));
    frame.set_name(utf8Text(elements[i + 1], "name"));
    frame.set_line(static_cast<std::int32_t>(realScalar(elements[i + 2], "line")));
  }
}

ByteBuffer errorFrom(std::span<const Bytes> remarks) {
  if (remarks.size() < 2) throw FunctionError(kArgumentCount, "An error has no message.");
  VORTEN_Result result;
  client::VORTEN_Error& error = *result.mutable_error();
  error.set_identifier(utf8Text(*Remark(remarks[0]), "identifier"));
  error.set_message(utf8Text(*Remark(remarks[1]), "message"));
  if (remarks.size() > 2) addFrames(error, *Remark(remarks[2]));
  return ByteBuffer(result.SerializeAsString());
}

}  // namespace

std::uint64_t ticketIn(const RequestFields& work) {
  if (work.inputs.empty()) throw FunctionError(kArgumentCount, "A worker sends a ticket.");
  const double ticket = realScalar(*Remark(work.inputs[0]), "ticket");
  if (ticket != 0 && work.inputs.size() < 2) {
    throw FunctionError(kArgumentCount, "A worker sends outputs or an error.");
  }
  return ticket >= 1 && ticket < 1e15 ? static_cast<std::uint64_t>(ticket) : 0;
}

ByteBuffer resultIn(const RequestFields& work, int nargout) {
  const std::span<const Bytes> values = std::span(work.inputs).subspan(2);
  if (utf8Text(*Remark(work.inputs[1]), "kind") == "error") return errorFrom(values);
  const auto wanted = static_cast<std::size_t>(std::max(nargout, 0));
  if (values.size() < wanted) {
    throw FunctionError(kArgumentCount, "The function gave " + std::to_string(values.size()) +
                                            " outputs, and " + std::to_string(wanted) +
                                            " were asked for.");
  }
  return resultWith(values.first(wanted));
}

ByteBuffer messageOfCall(std::uint64_t ticket, std::string_view function,
                         const RequestFields& call) {
  const std::string about[] = {serializedScalar(static_cast<double>(ticket)),
                               serializedText(function), serializedScalar(call.nargout)};
  std::vector<Bytes> elements = {bytesOf(about[0]), bytesOf(about[1]), bytesOf(about[2])};
  elements.insert(elements.end(), call.inputs.begin(), call.inputs.end());
  return resultWithCell(elements);
}

ByteBuffer messageOfNoCall() { return resultWithCell({}); }

}  // namespace hcy::server
