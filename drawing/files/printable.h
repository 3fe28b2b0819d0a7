// Texts from files, made harmless.
#pragma once

#include <string>
#include <string_view>

namespace vorna::drawing {

bool is_utf8(std::string_view text) noexcept;

// One line: spaces for control characters, those of U+0080 to U+009F too, and question marks for bytes that are no UTF-8, which
// some terminals obey.
std::string printable(const std::string& text);

// The same, and ends of lines stay.
std::string printable_lines(std::string_view text);

} // namespace vorna::drawing
