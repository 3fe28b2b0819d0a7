// Texts that are several whole numbers.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

namespace vorna::app {

// Whole numbers with these characters between them and nothing else.
template <std::size_t count>
std::optional<std::array<std::int32_t, count>> numbers_in(std::string_view text, const char (&separators)[count]) {
    std::array<std::int32_t, count> numbers{};
    const char *next = text.data(), *const end = next + text.size();
    for (std::size_t i = 0; i < count; ++i) {
        const auto [stop, error] = std::from_chars(next, end, numbers[i]);
        const bool is_last = i + 1 == count;
        if (error != std::errc{} || (is_last ? stop != end : stop == end || *stop != separators[i])) {
            return {};
        }
        next = stop + 1;
    }
    return numbers;
}

} // namespace vorna::app
