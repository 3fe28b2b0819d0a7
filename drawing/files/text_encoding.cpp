// Text in other encodings than UTF-8.
#include "drawing/files/text_encoding.h"

#include <cstddef>

namespace vorna::drawing {
namespace {

constexpr std::size_t mark_size = 2;

bool is_big_endian(std::string_view bytes) noexcept {
    return bytes.starts_with("\xFE\xFF");
}

// Unit of 16 bits at a place.
std::uint32_t unit_at(std::string_view bytes, std::size_t place, bool big_endian) noexcept {
    const std::uint32_t first = static_cast<unsigned char>(bytes[place]), second = static_cast<unsigned char>(bytes[place + 1]);
    return big_endian ? first << 8U | second : second << 8U | first;
}

} // namespace

void append_utf8(std::string& text, std::uint32_t character) {
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    const unsigned following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr unsigned leads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(leads[following] | character >> 6 * following);
    for (unsigned i = following; i-- > 0;) {
        text += static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
    }
}

bool is_utf16(std::string_view bytes) noexcept {
    if (bytes.size() < 2 * mark_size || !(bytes.starts_with("\xFF\xFE") || is_big_endian(bytes))) {
        return false;
    }
    const std::uint32_t first = unit_at(bytes, mark_size, is_big_endian(bytes));
    return first > 0 && first < 0x80;
}

std::string utf8_from_utf16(std::string_view bytes) {
    const bool big_endian = is_big_endian(bytes);
    std::string text;
    text.reserve(bytes.size() / 2);
    for (std::size_t place = mark_size; place + 1 < bytes.size(); place += 2) {
        constexpr std::uint32_t replacement = 0xFFFD;
        std::uint32_t character = unit_at(bytes, place, big_endian);
        if (character >> 11 == 0x1B) { // half of a surrogate pair
            const std::uint32_t low = place + 3 < bytes.size() ? unit_at(bytes, place + 2, big_endian) : 0;
            const bool is_pair = character < 0xDC00 && low >> 10 == 0x37;
            character = is_pair ? 0x10000 + ((character & 0x3FF) << 10) + (low & 0x3FF) : replacement;
            place += is_pair ? 2 : 0;
        }
        append_utf8(text, character);
    }
    return text;
}

} // namespace vorna::drawing
