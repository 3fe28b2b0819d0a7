// Texts made safe for documents and shells.
#include "drawing/comparison/quoting.h"

#include <cstdint>

#include "drawing/files/printable.h"

namespace vorna::drawing::comparison {

std::string markup_escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        const auto first = static_cast<unsigned char>(text.front());
        const bool is_c1 = length == 2 && first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
        const bool is_control = is_c1 || first == 0x7F || (first < 0x20 && first != '\n' && first != '\t');
        const bool is_noncharacter = text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF");
        if (length == 0 || is_noncharacter || is_control) {
            result += "\xEF\xBF\xBD";
        } else if (first == '&') {
            result += "&amp;";
        } else if (first == '<') {
            result += "&lt;";
        } else if (first == '>') {
            result += "&gt;";
        } else if (first == '"') {
            result += "&quot;";
        } else if (first == '\'') {
            result += "&#39;";
        } else if (first < 0x20) { // readers make spaces of line ends and tabs in attributes
            result += first == '\n' ? "&#10;" : "&#9;";
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

std::string shell_quoted(std::string_view text) {
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'') {
            result += "'\\''";
        } else {
            result += c;
        }
    }
    return result + "'";
}

std::string base64(std::string_view bytes) {
    constexpr const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (i + k < bytes.size() ? static_cast<std::uint8_t>(bytes[i + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += i + k > bytes.size() ? '=' : digits[group >> (18 - 6 * k) & 63U];
        }
    }
    return text;
}

bool is_plain(const std::string& text) {
    // markup_escaped replaces these two.
    return printable(text) == text && text.find("\xEF\xBF\xBE") == text.npos && text.find("\xEF\xBF\xBF") == text.npos;
}

} // namespace vorna::drawing::comparison
