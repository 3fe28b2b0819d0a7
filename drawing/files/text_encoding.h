// Text in other encodings than UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorna::drawing {

// Whether bytes are UTF-16: a byte order mark, and behind it a character of ASCII, with which every text format begins.
bool is_utf16(std::string_view bytes) noexcept;

// Such bytes as UTF-8 without the mark. Surrogates without their other half become U+FFFD; an odd byte at the end is left out.
std::string utf8_from_utf16(std::string_view bytes);

// character: a number of Unicode up to 0x1FFFFF.
void append_utf8(std::string& text, std::uint32_t character);

// Without the mark that some programs write before UTF-8.
constexpr std::string_view without_byte_order_mark(std::string_view text) noexcept {
    return text.starts_with("\xEF\xBB\xBF") ? text.substr(3) : text;
}

} // namespace vorna::drawing
