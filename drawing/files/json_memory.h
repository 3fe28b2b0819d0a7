// What JSON documents take in memory.
#pragma once

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

} // namespace vorna::drawing
