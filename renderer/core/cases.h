// The six configurations that every slot distinguishes.
#pragma once

namespace krb {

enum class Pixel_Format { index8, rgb32 };

// Depth buffer or none; 8-bit palette indices, 32-bit opaque, 32-bit with alpha blending. In this order everywhere.
enum class Case {
    index8,
    rgb32,
    rgb32_alpha,
    depth_index8,
    depth_rgb32,
    depth_rgb32_alpha,
};

inline constexpr int case_count = 6;

constexpr bool has_depth(Case c) noexcept {
    return c >= Case::depth_index8;
}

constexpr Pixel_Format format_of(Case c) noexcept {
    return c == Case::index8 || c == Case::depth_index8 ? Pixel_Format::index8 : Pixel_Format::rgb32;
}

constexpr bool is_alpha(Case c) noexcept {
    return c == Case::rgb32_alpha || c == Case::depth_rgb32_alpha;
}

// The same colour configuration without a depth buffer.
constexpr Case without_depth(Case c) noexcept {
    return has_depth(c) ? static_cast<Case>(static_cast<int>(c) - 3) : c;
}

constexpr Case case_of(bool depth, bool rgb32, bool alpha) noexcept {
    return static_cast<Case>((depth ? 3 : 0) + (rgb32 ? (alpha ? 2 : 1) : 0));
}

} // namespace krb
