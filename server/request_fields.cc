// SPDX-License-Identifier: Apache-2.0

#include "request_fields.h"

#include "field_bytes.h"

namespace hcy::server {

std::optional<RequestFields> requestFieldsOf(std::string_view body) {
  RequestFields fields;
  const bool isWhole = forEachField(bytesOf(body), [&](const WireField& field) {
    if (field.isVarint(kParamsNargout)) fields.nargout = static_cast<int>(field.value);
    if (field.is(kParamsInput)) fields.inputs.push_back(field.content);
    return true;
  });
  if (!isWhole) return std::nullopt;
  return fields;
}

}  // namespace hcy::server
