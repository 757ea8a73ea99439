// SPDX-License-Identifier: Apache-2.0

#pragma once

// What the caller's handles point to.
struct hcyArray {
  virtual ~hcyArray() = default;
};

namespace hcy {

struct ServerBridge;

// Every array that has a handle. The number in the name stands for the bridge: a server that knows
// another bridge does not find this class in a handle, because classes are told apart by name.
class ServedArray_1 : public hcyArray {
 public:
  // The way from arrays to their bytes and back, for a server in this process.
  virtual const ServerBridge& serverBridge() const = 0;
};
using ServedArray = ServedArray_1;

}  // namespace hcy
