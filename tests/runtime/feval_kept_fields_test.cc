// SPDX-License-Identifier: Apache-2.0
//
// Fields of a reply that no operation of the library reaches: they are kept, and sent back with
// the array.

#include <gtest/gtest.h>

#include <string>

#include "runtime/reply_call.h"

namespace hcy::abi {
namespace {

using FevalKeptFields = ReplyCall;

// Two fields that no schema knows.
void addUnknownFields(google::protobuf::Message& message) {
  auto* const unknown = message.GetReflection()->MutableUnknownFields(&message);
  unknown->AddVarint(8, 16);
  unknown->AddLengthDelimited(1000, "unknown");
}

// Every field that is not interpreted, and those that no schema knows.
void addKeptFields(VORTEN_Array& array) {
  array.set_arrayid(3);
  array.set_dataframe(4);
  client::VORTEN_Shared_Data& shared = *array.mutable_shareddata();
  shared.mutable_stringtable()->add_stringentry("entry");
  shared.mutable_classinfo()->add_classinfo()->add_propertynameindex(5);
  shared.mutable_arrays()->add_elements()->set_type(VORTEN_Array::STRING);
  shared.mutable_packagetable()->add_elements()->set_packageuuidindex(6);
  array.set_memorylayout(VORTEN_Array::ROW_MAJOR);
  array.set_iscomplex(true);
  array.set_classnameindex(7);
  VORTEN_Array::Object& object = *array.mutable_objects()->add_elements();
  object.add_propertyvalue()->set_type(VORTEN_Array::OBJECT);
  object.add_dynamicproperties()->add_propertyname(8);
  VORTEN_Array::Handle_Object_Ref& reference = *array.mutable_objectrefs();
  reference.add_objectid(9);
  reference.add_htype(VORTEN_Array::Handle_Object_Ref::FUNCTION_HANDLE);
  array.set_arrayref(10);
  array.set_targettype(VORTEN_Array::ENUMERATION);
  array.set_enumerationclassname(11);
  array.mutable_enumerations()->add_elements()->set_enumerationnameindex(12);
  array.mutable_stringelements()->add_strings(13);
  array.mutable_stringelements()->add_stringsizes(1);
  array.set_packageinfoindex(14);
  array.mutable_sparsewithdataframe()->set_nnzsize(15);
  addUnknownFields(array);
}

// A 1-by-1 array whose one element is still to come.
VORTEN_Array withoutElements(VORTEN_Array::QXType type) {
  VORTEN_Array array = doubleArray(1);
  array.set_type(type);
  array.clear_qxdouble();
  return array;
}

VORTEN_Array sparseWithUnknownFields() {
  VORTEN_Array array = withoutElements(VORTEN_Array::SPARSE);
  VORTEN_Array::Sparse& sparse = *array.mutable_sparse();
  sparse.add_ir(0);
  sparse.add_jc(0);
  sparse.add_jc(1);
  sparse.mutable_qxsparsedouble()->add_elements(5);
  addUnknownFields(sparse);
  addUnknownFields(*sparse.mutable_qxsparsedouble());
  return array;
}

TEST_F(FevalKeptFields, ofAnArraySurvive) {
  VORTEN_Array array = doubleArray(1);
  addKeptFields(array);
  const OwnedArray output = received(array);
  EXPECT_FALSE(hcyIsComplex(output.get()));
  EXPECT_EQ(sent(output.get()).SerializeAsString(), array.SerializeAsString());
}

TEST_F(FevalKeptFields, ofAnArrayThatKeepsItsElementsOutsideTheMessageSurvive) {
  VORTEN_Array array = withoutElements(VORTEN_Array::CHAR);
  array.mutable_qxchar()->add_elements(0x20AC);
  addKeptFields(array);
  const OwnedArray output = received(array);
  EXPECT_EQ(sent(output.get()).SerializeAsString(), array.SerializeAsString());
}

TEST_F(FevalKeptFields, amongTheElementsSurvive) {
  VORTEN_Array number = doubleArray(1);
  addUnknownFields(*number.mutable_qxdouble());
  VORTEN_Array integer = withoutElements(VORTEN_Array::INT16);
  integer.mutable_int16()->add_elements(-1);
  addUnknownFields(*integer.mutable_int16());
  VORTEN_Array text = withoutElements(VORTEN_Array::CHAR);
  text.mutable_qxchar()->add_elements(0x20AC);
  addUnknownFields(*text.mutable_qxchar());
  const VORTEN_Array sparse = sparseWithUnknownFields();
  VORTEN_Array record = containerOf(VORTEN_Array::STRUCT, {number, integer, text, sparse});
  addUnknownFields(*record.mutable_struct_());
  VORTEN_Array cell = containerOf(VORTEN_Array::CELL, {number, integer, text, sparse, record});
  addUnknownFields(*cell.mutable_cell());
  for (const VORTEN_Array& array : {number, integer, text, sparse, record, cell}) {
    const OwnedArray output = received(array);
    EXPECT_EQ(sent(output.get()).SerializeAsString(), array.SerializeAsString()) << array.type();
    const OwnedArray copy(hcyDuplicateArray(output.get()));
    EXPECT_EQ(sent(copy.get()).SerializeAsString(), array.SerializeAsString()) << array.type();
  }
}

TEST_F(FevalKeptFields, ofContainersAndTheirElementsSurvive) {
  VORTEN_Array element = doubleArray(1);
  addKeptFields(element);
  VORTEN_Array record = containerOf(VORTEN_Array::STRUCT, {element, doubleArray(2)});
  addKeptFields(record);
  VORTEN_Array cell = containerOf(VORTEN_Array::CELL, {record, element});
  addKeptFields(cell);
  const OwnedArray output = received(cell);
  EXPECT_EQ(sent(output.get()).SerializeAsString(), cell.SerializeAsString());
}

TEST_F(FevalKeptFields, ofAnElementGotFromAContainerSurvive) {
  VORTEN_Array element = doubleArray(1);
  addKeptFields(element);
  const OwnedArray output = received(containerOf(VORTEN_Array::CELL, {element}));
  const OwnedArray got(hcyGetCell(output.get(), 0));
  EXPECT_EQ(sent(got.get()).SerializeAsString(), element.SerializeAsString());
}

TEST_F(FevalKeptFields, ofAnElementOfAnUnservedTypeInAContainerSurvive) {
  VORTEN_Array element;
  element.set_type(VORTEN_Array::STRING);
  element.mutable_stringelements()->add_strings(65);
  const VORTEN_Array cell = containerOf(VORTEN_Array::CELL, {element, doubleArray(1)});
  const OwnedArray output = received(cell);
  EXPECT_EQ(sent(output.get()).SerializeAsString(), cell.SerializeAsString());
}

TEST_F(FevalKeptFields, ofAResultAndItsErrorDoNotDisturb) {
  VORTEN_Result result;
  *result.add_lhs() = doubleArray(1);
  result.GetReflection()->MutableUnknownFields(&result)->AddVarint(99, 1);
  Outputs outputs(1);
  EXPECT_EQ(feval(result, 1, outputs.data()), 0);
  result.mutable_error()->set_message("m");
  auto& error = *result.mutable_error();
  error.GetReflection()->MutableUnknownFields(&error)->AddLengthDelimited(99, "x");
  EXPECT_EQ(feval(result, 1, Outputs(1).data()), 1);
  EXPECT_EQ(context.lastFailure(), vortenFailure("m", ""));
}

}  // namespace
}  // namespace hcy::abi
