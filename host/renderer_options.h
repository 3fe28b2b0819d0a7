// The options that a renderer declares and that an application requests.
#pragma once

#include <cstdint>
#include <utility>

#include "host/color.h"
#include "host/geometry.h"
#include "host/object.h"

class VT_Renderer_Options {
public:
    // Bits of a depth value; below 1 there is no depth buffer.
    std::int32_t buffer_depth() const noexcept { return buffer_depth_; }
    void set_buffer_depth(std::int32_t bits) noexcept { buffer_depth_ = bits; }

    // 1 = 32-bit colours, all others = 8-bit palette indices.
    std::int32_t color_system() const noexcept { return color_system_; }
    void set_color_system(std::int32_t system) noexcept { color_system_ = system; }

    bool alpha_blending() const noexcept { return alpha_blending_; }
    void set_alpha_blending(bool on) noexcept { alpha_blending_ = on; }

    // Width and height in pixels.
    VT_Int_Pair window_size() const noexcept { return window_size_; }
    void set_window_size(VT_Int_Pair size) noexcept { window_size_ = size; }

    // Device coordinates of the lower left pixel; (0, 0) with local_coordinates.
    VT_Int_Pair window_origin() const noexcept { return window_origin_; }
    void set_window_origin(VT_Int_Pair origin) noexcept { window_origin_ = origin; }
    bool local_coordinates() const noexcept { return local_coordinates_; }
    void set_local_coordinates(bool on) noexcept { local_coordinates_ = on; }

    // Never null.
    const VT_Palette& palette() const noexcept { return *palette_; }
    void set_palette(VT_Reference<const VT_Palette> palette) noexcept { palette_ = std::move(palette); }

    bool backing_store() const noexcept { return backing_store_; }
    void set_backing_store(bool on) noexcept { backing_store_ = on; }
    bool supports_complex_clip() const noexcept { return supports_complex_clip_; }
    void set_supports_complex_clip(bool on) noexcept { supports_complex_clip_ = on; }

private:
    // A function, because GCC 12 does not free the memory of a new-expression in a member initializer whose constructor throws.
    static VT_Reference<const VT_Palette> default_palette() { return new VT_Palette; }

    std::int32_t buffer_depth_ = 0;
    std::int32_t color_system_ = 1;
    bool alpha_blending_ = false;
    bool local_coordinates_ = false;
    bool backing_store_ = false;
    bool supports_complex_clip_ = false;
    VT_Int_Pair window_size_;
    VT_Int_Pair window_origin_;
    VT_Reference<const VT_Palette> palette_ = default_palette();
};
