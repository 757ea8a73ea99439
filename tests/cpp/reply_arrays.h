// SPDX-License-Identifier: Apache-2.0
//
// Arrays of replies, made byte by byte, and what a call gives for them.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <utility>
#include <vector>

#include "support/script_server.h"
#include "support/wire_bytes.h"

namespace hcyclient::test {

using hcy::test::bytesField;
using hcy::test::numberField;

// The numbers of the typed part of an array's message.
constexpr unsigned kInt16 = 19, kSingle = 24, kDouble = 25, kLogical = 26, kChar = 27, kCell = 28,
                   kStruct = 29, kSparse = 30;
constexpr int kSparseType = 14;

inline std::string arrayOf(int type, const std::vector<std::uint64_t>& shape, unsigned part,
                           const std::string& contents) {
  std::string dimensions;
  for (const std::uint64_t dimension : shape) dimensions += hcy::test::varint(dimension);
  return numberField(1, static_cast<std::uint64_t>(type)) + bytesField(2, dimensions) +
         bytesField(part, contents);
}

// The number 2 as a double on the wire.
inline const std::string kTwo = std::string("\0\0\0\0\0\0\0\x40", 8);

// Doubles all 2, of which `count` arrive.
inline std::string twos(const std::vector<std::uint64_t>& shape, int count) {
  std::string values;
  for (int i = 0; i < count; ++i) values += kTwo;
  return arrayOf(hcyDOUBLE_CLASS, shape, kDouble, bytesField(1, values));
}

// A sparse double array.
inline std::string sparseOf(const std::vector<std::uint64_t>& shape, const std::string& rows,
                            const std::string& starts, const std::string& values) {
  return arrayOf(kSparseType, shape, kSparse,
                 bytesField(2, rows) + bytesField(3, starts) + bytesField(16, values));
}

inline std::string cellOf(std::uint64_t size, const std::vector<std::string>& elements) {
  std::string contents;
  for (const std::string& element : elements) contents += bytesField(1, element);
  return arrayOf(hcyCELL_CLASS, {size, 1}, kCell, contents);
}

inline std::string structOf(std::uint64_t size, const std::vector<std::string>& fields,
                            const std::vector<std::string>& elements) {
  std::string contents;
  for (const std::string& field : fields) contents += bytesField(1, field);
  for (const std::string& element : elements) contents += bytesField(2, element);
  return arrayOf(hcySTRUCT_CLASS, {size, 1}, kStruct, contents);
}

// Answers every call with these arrays.
class ReplyingServer {
 public:
  explicit ReplyingServer(const std::vector<std::string>& arrays)
      : server_({hcy::test::Connection{hcy::test::replyToEach(
            hcy::test::httpReply(200, "OK", hcy::test::resultOf(arrays)))}}) {}
  std::string url() const { return server_.url(); }

 private:
  const hcy::test::ScriptServer server_;
};

// The one output of a call.
inline Array received(const std::string& array) {
  const ReplyingServer server({array});
  const Library library;
  return Context(Config(library)).feval(server.url())[0];
}

// The same by the C interface, where nothing is checked.
inline Array adopted(const std::string& array) {
  const ReplyingServer server({array});
  const Library library;
  const Context context{Config(library)};
  hcyArray* output = nullptr;
  library.runtime()->feval(context.get(), server.url().c_str(), 1, &output, 0, nullptr);
  return Array::adopt(output);
}

// What an action throws as an IncompleteReply; empty when it does not.
template <class Action>
std::string incompleteness(Action action) {
  try {
    action();
  } catch (const IncompleteReply& error) {
    return error.what();
  }
  return "";
}

}  // namespace hcyclient::test
