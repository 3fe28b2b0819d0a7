// What JSON documents take in memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vorna::drawing {

// Bytes of the document that the text becomes, counted by its signs before it is parsed: lists and objects, members, and
// elements, each with the room that growing lists keep ready.
inline std::uint64_t json_memory(std::string_view text) noexcept {
    std::uint64_t containers = 0, members = 0, elements = 0;
    for (const char c : text) {
        containers += c == '[' || c == '{';
        members += c == ':';
        elements += c == ',';
    }
    return 72 * containers + 112 * members + 28 * elements + text.size();
}

// Deeper documents are refused: the library copies and prints values by recursion, for which a stack is too small.
inline constexpr std::size_t deepest_json = 256;

// How deeply lists and objects nest in the text, brackets in strings aside; in text that is no JSON, any number.
inline std::size_t json_nesting(std::string_view text) noexcept {
    std::size_t deepest = 0, depth = 0;
    bool in_string = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            in_string = !in_string;
        } else if (in_string) {
            i += c == '\\'; // what is escaped ends no string
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}

} // namespace vorna::drawing
