// SPDX-License-Identifier: Apache-2.0
//
// Suggestions for a function that the server does not know.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace hcy::tools {

// The function whose name is most similar to the path of the URL, or the only one whose last part
// is most similar; capitals make no difference. Empty if there is none.
std::string_view similarFunction(std::string_view url, const std::vector<std::string_view>& names);

// "; did you mean 'math/plus'?" after the server answered a call with 404, "; below 'math' is
// 'math/plus'" if the path only leads to functions, or nothing if the server has no index of its
// functions or none is similar. Requests the index with the settings of the call,
// waits no longer than `seconds` or two seconds (`seconds` = 0 is no limit), and reads at most 1
// MiB. What the server sends is made printable. Changes the size limit of the configuration. Never
// throws.
std::string functionSuggestion(hcyclient::Config& config, const std::string& url,
                               double seconds) noexcept;

// The URL of the server's root, where its index is: "http://host:8080/".
std::string rootOf(std::string_view url);

}  // namespace hcy::tools
