// Texts from files, made harmless.
#include "drawing/files/printable.h"

namespace vorna::drawing {

std::size_t character_length(std::string_view text) noexcept {
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const unsigned first = byte(0), second = byte(1);
    const std::size_t length = first < 0x80                    ? 1
                               : first >= 0xC2 && first < 0xE0 ? 2
                               : first >= 0xE0 && first < 0xF0 ? 3
                               : first >= 0xF0 && first < 0xF5 ? 4
                                                               : 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    // Written longer than need be, halves of pairs, and beyond the last one.
    const bool wrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) ||
                       (first == 0xF0 && second < 0x90) || (first == 0xF4 && second >= 0x90);
    return wrong ? 0 : length;
}

namespace {

std::string without_controls(std::string_view text, bool one_line) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        const auto first = static_cast<unsigned char>(text.front());
        const bool is_c1 = length == 2 && first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
        if (length == 0) {
            result += '?';
        } else if (is_c1 || first == 0x7F || (first < 0x20 && (one_line || first != '\n'))) {
            result += ' ';
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

} // namespace

bool is_utf8(std::string_view text) noexcept {
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string printable(const std::string& text) {
    return without_controls(text, true);
}

std::string printable_lines(std::string_view text) {
    return without_controls(text, false);
}

} // namespace vorna::drawing
