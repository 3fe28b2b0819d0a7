// Numbers from unaligned bytes of either byte order.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace vorna::drawing::model {

template <class Number, std::endian Order> Number load(const char* bytes) noexcept {
    std::array<char, sizeof(Number)> copy;
    std::memcpy(copy.data(), bytes, sizeof(Number));
    if constexpr (Order != std::endian::native) {
        std::reverse(copy.begin(), copy.end());
    }
    return std::bit_cast<Number>(copy);
}

} // namespace vorna::drawing::model
