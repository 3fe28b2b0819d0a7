// Where a value stands in the text of a JSON document.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vorna::drawing::map {

// A member by its key, or an element by its index.
using Json_Step = std::variant<std::string, std::size_t>;

// "line 3, column 7": the key of the last step, or the element that it leads to. text: a valid document. Where a step leads
// nowhere, the place of the value before it.
std::string json_place(std::string_view text, const std::vector<Json_Step>& path);

// The same for an offset in bytes.
std::string line_and_column(std::string_view text, std::size_t offset);

} // namespace vorna::drawing::map
