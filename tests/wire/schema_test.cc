// SPDX-License-Identifier: Apache-2.0
//
// The schema is the contract with the server: every number, type, label and name of it.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.pb.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "hcy.client.VORTENArray.pb.h"
#include "hcy.client.VORTENError.pb.h"
#include "hcy.client.VORTENParams.pb.h"
#include "hcy.client.VORTENResult.pb.h"
#include "wire/protobuf_version.h"

namespace hcy {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using Lines = std::vector<std::string>;

// Each message with its fields: number, label, type and name.
const Lines arraySchema = {
    "VORTEN_Shared_Strings: 1 repeated bytes stringEntry; 2 optional uint64 startIndex",
    "VORTEN_Name: 1 optional uint32 nameIndex",
    "VORTEN_ClassInfo: 1 optional uint32 classNameIndex; 2 packed uint32 propertyNameIndex; "
    "3 packed uint32 superclassNameIndex",
    "VORTEN_ClassInfoTable: 1 repeated VORTEN_ClassInfo classInfo",
    "VORTEN_PackageInfo: 1 singular uint32 packageNameIndex; "
    "2 singular uint32 packageVersionIndex; 3 singular uint32 packageUUIDIndex",
    "VORTEN_Shared_PackageInfo: 1 repeated VORTEN_PackageInfo elements; "
    "2 optional uint64 startIndex",
    "VORTEN_SharedArrays: 1 repeated VORTEN_Array elements; 2 optional uint64 startIndex",
    "VORTEN_Shared_Data: 1 optional VORTEN_Shared_Strings stringTable; "
    "2 optional VORTEN_ClassInfoTable classInfo; 3 optional VORTEN_SharedArrays arrays; "
    "4 optional VORTEN_Shared_PackageInfo packageTable",
    "VORTEN_Array: 1 optional VORTEN_Array.QXType type; 2 packed uint64 dimension; "
    "3 optional uint64 arrayID; 4 optional uint64 dataFrame; "
    "5 optional VORTEN_Shared_Data sharedData; "
    "6 optional VORTEN_Array.QXMemoryLayout memoryLayout; 7 optional bool isComplex; "
    "16 optional VORTEN_Array.Uint8 uint8; 17 optional VORTEN_Array.Int8 int8; "
    "18 optional VORTEN_Array.Uint16 uint16; 19 optional VORTEN_Array.Int16 int16; "
    "20 optional VORTEN_Array.Uint32 uint32; 21 optional VORTEN_Array.Int32 int32; "
    "22 optional VORTEN_Array.Uint64 uint64; 23 optional VORTEN_Array.Int64 int64; "
    "24 optional VORTEN_Array.Single single; 25 optional VORTEN_Array.Double qxdouble; "
    "26 optional VORTEN_Array.Logical logical; 27 optional VORTEN_Array.Char qxchar; "
    "28 optional VORTEN_Array.Cell cell; 29 optional VORTEN_Array.Struct struct_; "
    "30 optional VORTEN_Array.Sparse sparse; 31 optional uint32 classNameIndex; "
    "32 optional VORTEN_Array.Objects objects; "
    "33 optional VORTEN_Array.Handle_Object_Ref objectRefs; 34 optional uint64 arrayRef; "
    "35 optional VORTEN_Array.QXType targetType; 36 optional uint32 enumerationClassName; "
    "37 optional VORTEN_Array.Objects enumerations; "
    "38 optional VORTEN_Array.String stringElements; 39 optional uint32 packageInfoIndex; "
    "40 optional VORTEN_Array.SparseWithDataFrame sparsewithdataframe",
    "VORTEN_Array.Uint8: 1 optional bytes elements; 2 optional bytes imag_elements",
    "VORTEN_Array.Int8: 1 optional bytes elements; 2 optional bytes imag_elements",
    "VORTEN_Array.Uint16: 1 packed uint32 elements; 2 packed uint32 imag_elements",
    "VORTEN_Array.Int16: 1 packed int32 elements; 2 packed int32 imag_elements",
    "VORTEN_Array.Uint32: 1 packed fixed32 elements; 2 packed fixed32 imag_elements",
    "VORTEN_Array.Int32: 1 packed sfixed32 elements; 2 packed sfixed32 imag_elements",
    "VORTEN_Array.Uint64: 1 packed uint64 elements; 2 packed uint64 imag_elements",
    "VORTEN_Array.Int64: 1 packed int64 elements; 2 packed int64 imag_elements",
    "VORTEN_Array.Single: 1 packed float elements; 2 packed float imag_elements",
    "VORTEN_Array.Double: 1 packed double elements; 2 packed double imag_elements",
    "VORTEN_Array.Logical: 1 packed bool elements",
    "VORTEN_Array.Char: 1 packed uint32 elements",
    "VORTEN_Array.Cell: 1 repeated VORTEN_Array elements",
    "VORTEN_Array.Struct: 1 repeated string field_names; 2 repeated VORTEN_Array elements",
    "VORTEN_Array.Sparse: 1 optional VORTEN_Array.Sparse.SparseType type; "
    "2 packed uint64 ir; 3 packed uint64 jc; 16 optional VORTEN_Array.Double qxsparsedouble; "
    "17 optional VORTEN_Array.Logical logical; 18 optional VORTEN_Array.Single qxsparsesingle",
    "VORTEN_Array.SparseWithDataFrame: "
    "1 optional VORTEN_Array.SparseWithDataFrame.SparseType type; "
    "2 optional VORTEN_Array.QXType sizetArrayType; 3 optional uint64 nnzsize; "
    "4 optional uint64 jcsize; 5 optional uint64 irdataframe; 6 optional uint64 jcdataframe",
    "VORTEN_Array.Object: 1 optional uint32 classNameIndex; 2 packed uint32 propertyName; "
    "3 packed uint32 propertyClassName; 4 repeated VORTEN_Array propertyValue; "
    "5 optional uint32 enumerationNameIndex; "
    "6 repeated VORTEN_Array.Object.Dynamic_Property dynamicProperties; "
    "7 optional uint32 objectPackageInfoIndex; 8 packed uint32 propertyPackageInfoIndex",
    "VORTEN_Array.Object.Dynamic_Property: 1 packed uint32 propertyName; "
    "2 packed uint32 propertyClassName; 3 packed uint32 propertyDataTypeName; "
    "4 repeated VORTEN_Array propertyValue; 5 packed uint32 propertyPackageInfoIndex",
    "VORTEN_Array.Objects: 1 repeated VORTEN_Array.Object elements",
    "VORTEN_Array.RteID: 1 optional bytes rteID",
    "VORTEN_Array.Handle_Object_Ref: 1 packed uint32 rteID; 2 packed uint64 objectID; "
    "3 packed VORTEN_Array.Handle_Object_Ref.QXHandleObjectType htype; "
    "4 repeated VORTEN_Array data",
    "VORTEN_Array.String: 1 packed uint32 strings; 2 packed uint64 stringSizes",
};

const Lines errorSchema = {
    "VORTEN_Error: 1 optional string message; 2 optional string identifier; "
    "3 repeated VORTEN_Error.Stack_Frame stack; 4 optional string report",
    "VORTEN_Error.Stack_Frame: 1 optional string file; 2 optional string name; "
    "3 optional int32 line",
};
const Lines paramsSchema = {
    "VORTEN_Params: 1 optional int32 nargout; 2 repeated VORTEN_Array rhs",
};
const Lines resultSchema = {
    "VORTEN_Result: 1 repeated VORTEN_Array lhs; 2 optional VORTEN_Error error",
};

std::string withoutPackage(std::string_view name) {
  return std::string(name.substr(std::string_view("hcy.client.").size()));
}

std::string typeOf(const FieldDescriptor& field) {
  if (field.message_type() != nullptr) return withoutPackage(fullNameOf(*field.message_type()));
  if (field.enum_type() != nullptr) return withoutPackage(fullNameOf(*field.enum_type()));
  return std::string(field.type_name());
}

// In proto3 the keyword makes a oneof that nobody wrote.
bool hasOptionalKeyword(const FieldDescriptor& field) {
  return field.containing_oneof() != nullptr && field.real_containing_oneof() == nullptr;
}

std::string labelOf(const FieldDescriptor& field) {
  if (field.is_packed()) return "packed";
  if (field.is_repeated()) return "repeated";
  return field.has_presence() && hasOptionalKeyword(field) ? "optional" : "singular";
}

void describe(const Descriptor& message, Lines& lines) {
  std::string text = withoutPackage(fullNameOf(message)) + ":";
  for (int i = 0; i < message.field_count(); ++i) {
    const FieldDescriptor& field = *message.field(i);
    text += (i == 0 ? " " : "; ") + std::to_string(field.number()) + " " + labelOf(field) + " " +
            typeOf(field) + " " + std::string(nameOf(field));
  }
  lines.push_back(text);
  for (int i = 0; i < message.nested_type_count(); ++i) describe(*message.nested_type(i), lines);
}

Lines describe(const FileDescriptor& file) {
  Lines lines;
  for (int i = 0; i < file.message_type_count(); ++i) describe(*file.message_type(i), lines);
  return lines;
}

// A file of the schema itself, as it is given to others.
Lines describe(std::string_view file) {
  std::ifstream stream(HCY_SCHEMA_SET, std::ios::binary);
  google::protobuf::FileDescriptorSet files;
  EXPECT_TRUE(files.ParseFromIstream(&stream));
  google::protobuf::DescriptorPool pool;
  for (const auto& each : files.file()) EXPECT_NE(pool.BuildFile(each), nullptr);
  return describe(*pool.FindFileByName(std::string(file)));
}

// In generated classes strings are bytes, of which nobody asks whether they are valid UTF-8.
Lines withBytes(Lines lines) {
  for (std::string& line : lines)
    line = std::regex_replace(line, std::regex(" string "), " bytes ");
  return lines;
}

const FileDescriptor& arrayFile() { return *client::VORTEN_Array::descriptor()->file(); }
const FileDescriptor& errorFile() { return *client::VORTEN_Error::descriptor()->file(); }
const FileDescriptor& paramsFile() { return *client::VORTEN_Params::descriptor()->file(); }
const FileDescriptor& resultFile() { return *client::VORTEN_Result::descriptor()->file(); }

TEST(Schema, HasTheMessagesAndFieldsOfTheContract) {
  using testing::UnorderedElementsAreArray;
  EXPECT_THAT(describe(nameOf(arrayFile())), UnorderedElementsAreArray(arraySchema));
  EXPECT_THAT(describe(nameOf(errorFile())), UnorderedElementsAreArray(errorSchema));
  EXPECT_THAT(describe(nameOf(paramsFile())), UnorderedElementsAreArray(paramsSchema));
  EXPECT_THAT(describe(nameOf(resultFile())), UnorderedElementsAreArray(resultSchema));
}

TEST(Schema, IsWhatTheClassesHaveButForStrings) {
  for (const FileDescriptor* file : {&arrayFile(), &errorFile(), &paramsFile(), &resultFile()}) {
    EXPECT_EQ(describe(*file), withBytes(describe(nameOf(*file))));
  }
}

Lines dependenciesOf(const FileDescriptor& file) {
  Lines names;
  for (int i = 0; i < file.dependency_count(); ++i) names.emplace_back(nameOf(*file.dependency(i)));
  return names;
}

TEST(Schema, LiesInFourFilesOfOnePackage) {
  const std::string prefix = "hcy.client.VORTEN";
  EXPECT_EQ(nameOf(arrayFile()), prefix + "Array.proto");
  EXPECT_EQ(nameOf(errorFile()), prefix + "Error.proto");
  EXPECT_EQ(nameOf(paramsFile()), prefix + "Params.proto");
  EXPECT_EQ(nameOf(resultFile()), prefix + "Result.proto");
  EXPECT_EQ(dependenciesOf(arrayFile()), Lines());
  EXPECT_EQ(dependenciesOf(errorFile()), Lines());
  EXPECT_EQ(dependenciesOf(paramsFile()), Lines{std::string(nameOf(arrayFile()))});
  EXPECT_EQ(dependenciesOf(resultFile()),
            (Lines{std::string(nameOf(arrayFile())), std::string(nameOf(errorFile()))}));
  for (const FileDescriptor* file : {&arrayFile(), &errorFile(), &paramsFile(), &resultFile()}) {
    EXPECT_EQ(file->package(), "hcy.client");
    google::protobuf::FileDescriptorProto asWritten;
    file->CopyTo(&asWritten);
    EXPECT_EQ(asWritten.syntax(), "proto3");
    EXPECT_NE(file->options().optimize_for(), google::protobuf::FileOptions::LITE_RUNTIME);
    EXPECT_EQ(file->extension_count(), 0);
    EXPECT_EQ(google::protobuf::DescriptorPool::generated_pool()->FindFileByName(
                  std::string(nameOf(*file))),
              file);
  }
}

void expectPlain(const FieldDescriptor& field) {
  EXPECT_FALSE(field.has_default_value()) << fullNameOf(field);
  EXPECT_FALSE(field.options().deprecated()) << fullNameOf(field);
  EXPECT_EQ(field.real_containing_oneof(), nullptr) << fullNameOf(field);
  EXPECT_EQ(field.is_packed(), field.options().packed()) << fullNameOf(field);
  if (!hasOptionalKeyword(field)) return;
  EXPECT_EQ(nameOf(*field.containing_oneof()), "_" + std::string(nameOf(field)));
}

void expectPlain(const Descriptor& message) {
  EXPECT_EQ(message.extension_count(), 0) << fullNameOf(message);
  EXPECT_EQ(message.extension_range_count(), 0) << fullNameOf(message);
  EXPECT_EQ(message.reserved_range_count(), 0) << fullNameOf(message);
  EXPECT_EQ(message.reserved_name_count(), 0) << fullNameOf(message);
  EXPECT_EQ(message.real_oneof_decl_count(), 0) << fullNameOf(message);
  for (int i = 0; i < message.field_count(); ++i) expectPlain(*message.field(i));
  for (int i = 0; i < message.nested_type_count(); ++i) expectPlain(*message.nested_type(i));
}

TEST(Schema, HasNoDefaultsExtensionsReservedNumbersOrRealOneofs) {
  for (const FileDescriptor* file : {&arrayFile(), &errorFile(), &paramsFile(), &resultFile()}) {
    for (int i = 0; i < file->message_type_count(); ++i) expectPlain(*file->message_type(i));
  }
}

std::string describe(const EnumDescriptor* enumeration) {
  std::string text;
  for (int i = 0; i < enumeration->value_count(); ++i) {
    const auto& value = *enumeration->value(i);
    text += std::to_string(value.number()) + " " + std::string(nameOf(value)) + "; ";
  }
  return text;
}

TEST(Schema, NumbersItsEnumerations) {
  using client::VORTEN_Array;
  EXPECT_EQ(describe(VORTEN_Array::QXType_descriptor()),
            "0 UINT8; 1 INT8; 2 UINT16; 3 INT16; 4 UINT32; 5 INT32; 6 UINT64; 7 INT64; 8 SINGLE; "
            "9 DOUBLE; 10 LOGICAL; 11 CHAR; 12 STRUCT; 13 CELL; 14 SPARSE; 15 OBJECT; "
            "16 HANDLE_OBJECT_REF; 17 ARRAYREF; 18 ENUMERATION; 19 STRING; ");
  EXPECT_EQ(describe(VORTEN_Array::QXMemoryLayout_descriptor()),
            "0 COLUMN_MAJOR; 1 ROW_MAJOR; 2 UNKNOWN; ");
  const char* const sparseTypes = "0 DOUBLE; 1 LOGICAL; 2 SINGLE; ";
  EXPECT_EQ(describe(VORTEN_Array::Sparse::SparseType_descriptor()), sparseTypes);
  EXPECT_EQ(describe(VORTEN_Array::SparseWithDataFrame::SparseType_descriptor()), sparseTypes);
  EXPECT_EQ(describe(VORTEN_Array::Handle_Object_Ref::QXHandleObjectType_descriptor()),
            "0 UNKNOWN_HANDLE_TYPE; 1 FUNCTION_HANDLE; 2 HANDLE; 3 OBJSYS; 4 SHARED_COPY; ");
}

TEST(Schema, ParsesAResultWithOutputsAndAnError) {
  client::VORTEN_Result sent;
  sent.add_lhs()->set_type(client::VORTEN_Array::CELL);
  sent.mutable_error()->set_message("both");
  client::VORTEN_Result received;
  ASSERT_TRUE(received.ParseFromString(sent.SerializeAsString()));
  EXPECT_EQ(received.lhs_size(), 1);
  EXPECT_TRUE(received.has_error());
  EXPECT_EQ(received.error().message(), "both");
}

TEST(Schema, WritesTheNumberOfOutputsEvenWhenItIsZero) {
  client::VORTEN_Params params;
  params.set_nargout(0);
  EXPECT_EQ(params.SerializeAsString(), std::string("\x08\x00", 2));
}

}  // namespace
}  // namespace hcy
