// SPDX-License-Identifier: Apache-2.0

#include "wire/wire_fields.h"

#include <google/protobuf/io/coded_stream.h>

#include "wire/protobuf_version.h"

namespace hcy {

// Groups have been out of use for long, and only hold what no schema here knows.
std::size_t endOfGroup(Bytes message, std::size_t position, std::uint32_t tag) {
  const Bytes fields = message.subspan(position);
  google::protobuf::io::CodedInputStream input(fields.data(), static_cast<int>(fields.size()));
  if (!skipField(input, tag)) return 0;
  return position + static_cast<std::size_t>(input.CurrentPosition());
}

}  // namespace hcy
