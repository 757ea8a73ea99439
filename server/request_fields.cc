// SPDX-License-Identifier: Apache-2.0

#include "request_fields.h"

#include "hcy.client.VORTENParams.pb.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy::server {

std::optional<RequestFields> requestFieldsOf(std::string_view body) {
  using client::VORTEN_Params;
  RequestFields fields;
  const Bytes bytes{reinterpret_cast<const std::uint8_t*>(body.data()), body.size()};
  const bool isWhole = forEachField(bytes, [&](const WireField& field) {
    if (field.isVarint(VORTEN_Params::kNargoutFieldNumber)) {
      const std::uint8_t* position = bytes.data() + field.begin + 1;
      fields.nargout = static_cast<int>(readVarint(position, bytes.data() + field.end));
    } else if (field.is(VORTEN_Params::kRhsFieldNumber)) {
      fields.inputs.push_back(field.content);
    }
    return true;
  });
  if (!isWhole) return std::nullopt;
  return fields;
}

}  // namespace hcy::server
