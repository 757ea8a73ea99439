// SPDX-License-Identifier: Apache-2.0
//
// Workloads as messages and back, as an application that has nothing but the generated classes
// writes it.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hcy.client.VORTENParams.pb.h"
#include "readable.h"
#include "workload.h"

namespace hcy::bench {

// The parameters of a call with one output and the workload as its one input.
client::VORTEN_Params paramsOf(const Workload& workload);

// Reads the one array of a message. Doubles and 64-bit integers are read where the message holds
// them; int16 and chars, which are 32 bits wide there, are narrowed into memory of this object. The
// message must outlive it.
class ArrayReader {
 public:
  // Throws std::runtime_error when there is not one array of a class that workloads have.
  explicit ArrayReader(const google::protobuf::RepeatedPtrField<client::VORTEN_Array>& arrays);

  const Readable& readable() const { return readable_; }

 private:
  std::vector<std::int16_t> int16s_;
  std::u16string chars_;
  Readable readable_;
};

}  // namespace hcy::bench
