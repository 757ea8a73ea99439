// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "array/array_handle.h"
#include "hcy.client.VORTENParams.pb.h"
#include "hcy.client.VORTENResult.pb.h"
#include "support/call_test.h"

namespace hcy::abi {

using client::VORTEN_Array;
using client::VORTEN_Params;
using client::VORTEN_Result;

// Single calls whose reply is given as a message or as its bytes.
class ReplyCall : public ::testing::Test {
 protected:
  void TearDown() override { expectUsable(context); }

  // Status 200 with this body.
  int feval(const std::string& body, std::int32_t nargout, hcyArray** outputs,
            const std::vector<const hcyArray*>& inputs = {}) {
    const test::ScriptServer server(
        {test::Connection{test::replyToEach(test::httpReply(200, "OK", body))}});
    const int status = context.feval(server.url(), nargout, outputs, inputs);
    EXPECT_TRUE(params.ParseFromString(server.requests().at(0).body));
    return status;
  }
  int feval(const VORTEN_Result& result, std::int32_t nargout, hcyArray** outputs,
            const std::vector<const hcyArray*>& inputs = {}) {
    return feval(result.SerializeAsString(), nargout, outputs, inputs);
  }

  // An input of a call as the server got it.
  VORTEN_Array sent(const hcyArray* input) {
    EXPECT_EQ(feval("", 0, nullptr, {input}), 0);
    EXPECT_EQ(params.rhs_size(), 1);
    return params.rhs_size() == 1 ? params.rhs(0) : VORTEN_Array();
  }

  // The array of a reply as the caller gets it.
  OwnedArray received(const VORTEN_Array& array) {
    VORTEN_Result result;
    *result.add_lhs() = array;
    hcyArray* output = nullptr;
    EXPECT_EQ(feval(result, 1, &output), 0);
    return OwnedArray(output);
  }

  Library library;
  Config config{library};
  Context context{library, config};
  VORTEN_Params params;  // of the last call, as the server got them
};

inline VORTEN_Array doubleArray(double value) {
  VORTEN_Array array;
  array.set_type(VORTEN_Array::DOUBLE);
  array.add_dimension(1);
  array.add_dimension(1);
  array.mutable_qxdouble()->add_elements(value);
  return array;
}

inline VORTEN_Array containerOf(VORTEN_Array::QXType type,
                                const std::vector<VORTEN_Array>& elements) {
  VORTEN_Array array;
  array.set_type(type);
  array.add_dimension(1);
  array.add_dimension(type == VORTEN_Array::CELL ? elements.size() : 1);
  for (const VORTEN_Array& element : elements) {
    if (type == VORTEN_Array::CELL) {
      *array.mutable_cell()->add_elements() = element;
    } else {
      const int field = array.struct_().field_names_size();
      array.mutable_struct_()->add_field_names("field" + std::to_string(field));
      *array.mutable_struct_()->add_elements() = element;
    }
  }
  return array;
}

}  // namespace hcy::abi
