// Texts from files, made harmless.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorna::drawing {

// Bytes of the character that the text begins with; 0 for what is no UTF-8.
std::size_t character_length(std::string_view text) noexcept;

// Whether all of the text is UTF-8.
bool is_utf8(std::string_view text) noexcept;

// One line: spaces for control characters, those of U+0080 to U+009F too, and question marks for bytes that are no UTF-8, which
// some terminals obey.
std::string printable(const std::string& text);

// The same, and ends of lines stay.
std::string printable_lines(std::string_view text);

} // namespace vorna::drawing
