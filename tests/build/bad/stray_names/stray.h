// A header with names that are anybody's.
#pragma once

#define LEAKED_MACRO 1

namespace vorna {
struct Kept {
    int value = 0;
};
} // namespace vorna

struct VT_Kept : vorna::Kept {};

template <class Type> vorna::Kept leaked_function(const Type&) noexcept {
    return {};
}

inline constexpr int leaked_values[2] = {1, 2};
