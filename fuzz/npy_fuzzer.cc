// SPDX-License-Identifier: Apache-2.0
//
// .npy files, and those written of the arrays in them.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "notations/array_json.h"
#include "notations/npy.h"
#include "require.h"
#include "text/source_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    const auto array = hcy::tools::arrayOfNpy(text);
    // More would be an array without elements, or a text of NULs.
    if (array.size() > size) HCY_REQUIRE(array.isText());
    if (array.shape().size() > 32) return 0;
    const auto again = hcy::tools::arrayOfNpy(hcy::tools::npyOf(array));
    // NULs at the end of a text are not kept.
    if (!array.isText()) HCY_REQUIRE(hcy::tools::toJson(again) == hcy::tools::toJson(array));
  } catch (const hcy::tools::BadInput&) {
  }
  return 0;
}
