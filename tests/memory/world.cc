// SPDX-License-Identifier: Apache-2.0

#include "memory/world.h"

#include <memory>

#include "array/array_handle.h"
#include "array/array_proxy_builder.h"
#include "array/array_to_send.h"
#include "memory/description.h"

namespace hcy::abi {
namespace {

using client::VORTEN_Array;

const char* const originNames[] = {"created",  "complex", "empty", "element",
                                   "received", "bare",    "roomy"};

std::string sentBytes(const hcyArray* array) {
  const SentArray sent(proxyOf(array).toSend(SendingOrder()));
  std::string bytes(sent.size(), '\0');
  sent.write(reinterpret_cast<std::uint8_t*>(bytes.data()));
  return bytes;
}

Array arrayOfReply(const std::string& bytes) {
  ReceivedArray received;
  EXPECT_TRUE(
      readReceived(received, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
  return ArrayProxyBuilder::over(std::move(received)).release();
}

Array receivedArray(const ArrayKind& kind) {
  const Array array = filledMatrix(kind, 3, 2);
  return arrayOfReply(sentBytes(array));
}

Array bareArray(const ArrayKind& kind) {
  VORTEN_Array message;
  message.set_type(kind.isSparse ? VORTEN_Array::SPARSE
                                 : static_cast<VORTEN_Array::QXType>(kind.id));
  if (kind.isSparse && kind.isNumeric()) {
    message.mutable_sparse()->set_type(VORTEN_Array::Sparse::DOUBLE);
  }
  message.add_dimension(3);
  message.add_dimension(2);
  return arrayOfReply(message.SerializeAsString());
}

Array makeArray(const ArrayCase& arrayCase) {
  const ArrayKind& kind = arrayCase.kind;
  switch (arrayCase.origin) {
    case Origin::Complex:
      return filledComplexMatrix(kind, 3, 2);
    case Origin::Empty:
      return createMatrix(kind, 0, 0);
    case Origin::Received:
      return receivedArray(kind);
    case Origin::Bare:
      return bareArray(kind);
    case Origin::Roomy:
      return kind.isNumeric() ? hcyCreateSparse(30, 30, 2, hcyCOMPLEX)
                              : hcyCreateSparseLogicalMatrix(30, 30, 2);
    default:
      return filledMatrix(kind, 3, 2);
  }
}

// What the functions tell, and the bytes that would be sent: lists that the functions tell nothing
// of may have grown. To look at the elements of a container changes its bytes.
std::string describeWhole(const hcyArray* array) {
  std::string description = describe(array);
  if (array == nullptr || hcyIsCell(array) || hcyIsStruct(array)) return description;
  return description + ", sent as " + sentBytes(array);
}

}  // namespace

std::string described(const ArrayCase& arrayCase) {
  return arrayCase.kind.name() + ' ' + originNames[static_cast<std::size_t>(arrayCase.origin)];
}

std::vector<ArrayCase> allArrayCases() {
  std::vector<ArrayCase> cases;
  for (const ArrayKind& kind : allKinds()) {
    cases.push_back({kind, Origin::Created});
    if (kind.isNumeric()) cases.push_back({kind, Origin::Complex});
    cases.push_back({kind, Origin::Empty});
    cases.push_back({kind, Origin::Element});
    cases.push_back({kind, Origin::Received});
    cases.push_back({kind, Origin::Bare});
    if (kind.isSparse) cases.push_back({kind, Origin::Roomy});
  }
  return cases;
}

World::World(const ArrayCase& arrayCase)
    : cell(hcyCreateCellMatrix(1, 2)),
      structure(hcyCreateStructMatrix(1, 2, fieldCount, fieldNames)),
      array(nullptr),
      text(hcyArrayToString(Array(hcyCreateString("text")))) {
  hcySetCell(cell, 0, makeArray(arrayCase));
  hcySetField(structure, 0, fieldNames[0], makeArray(arrayCase));
  array = arrayCase.origin == Origin::Element ? Array(hcyGetCell(cell, 0)) : makeArray(arrayCase);
}

std::string describe(const World& world) {
  return describeWhole(world.array) + "\n  in a cell: " + describe(world.cell) +
         "\n  in a struct: " + describe(world.structure);
}

}  // namespace hcy::abi
