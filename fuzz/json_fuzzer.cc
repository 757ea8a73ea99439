// SPDX-License-Identifier: Apache-2.0
//
// What is read as JSON is written as JSON that means the same.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "notations/array_json.h"
#include "notations/json_array.h"
#include "notations/json_value.h"
#include "require.h"
#include "text/source_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    const auto array = hcy::tools::arrayFrom(hcy::tools::parseJson(text));
    // What the elements would take more room for than the text is no finding.
    if (array.size() > 1000000 || array.columns() > 1000000) return 0;
    const std::string json = hcy::tools::toJson(array);
    HCY_REQUIRE(hcy::tools::toJson(hcy::tools::arrayFrom(hcy::tools::parseJson(json))) == json);
  } catch (const hcy::tools::BadText& problem) {
    HCY_REQUIRE(problem.offset <= size);
  }
  return 0;
}
