// Text in other encodings than UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace vorna::drawing {

// Whether bytes are UTF-16: a byte order mark, and behind it a character of ASCII, with which every text format begins.
bool is_utf16(std::string_view bytes) noexcept;

// Such bytes as UTF-8 without the mark. Surrogates without their other half become U+FFFD; an odd byte at the end is left out.
std::string utf8_from_utf16(std::string_view bytes);

// Without the mark that some programs write before UTF-8.
constexpr std::string_view without_byte_order_mark(std::string_view text) noexcept {
    return text.starts_with("\xEF\xBB\xBF") ? text.substr(3) : text;
}

} // namespace vorna::drawing
