// The rendition: all attributes that primitives are drawn with.
#pragma once

#include <cstdint>
#include <vector>

#include "host/color.h"
#include "host/contour.h"
#include "host/export.h"
#include "host/frame_buffer.h"
#include "host/geometry.h"
#include "host/line_type.h"
#include "host/object.h"

namespace vorna {

// The drawing mode in which pixels are combined by merge control.
inline constexpr std::int32_t merge_drawing_mode = 20;

// Bits of the flag words.
namespace face_flag {
inline constexpr std::uint32_t opaque_pattern = 1;   // gaps are filled with the contrast colour
inline constexpr std::uint32_t inverted_pattern = 2; // cells and gaps are exchanged
inline constexpr std::uint32_t translucent = 8;
inline constexpr std::uint32_t special_shading = 32;
} // namespace face_flag

namespace line_flag {
inline constexpr std::uint32_t smoothed = 2;
} // namespace line_flag

// Ends and corners of lines wider than a pixel.
namespace line_cap {
inline constexpr std::int32_t butt = 0; // at the end point
inline constexpr std::int32_t round = 1;
inline constexpr std::int32_t square = 2; // half the weight beyond the end point
} // namespace line_cap

namespace line_join {
inline constexpr std::int32_t round = 0;
inline constexpr std::int32_t miter = 1; // a bevel where the tip would be farther than twice the weight from the vertex
inline constexpr std::int32_t bevel = 2;
} // namespace line_join

// Dash patterns of the standard functions. All other values are solid.
namespace line_style {
inline constexpr std::int32_t solid = 0;
inline constexpr std::int32_t dashed = 1;
inline constexpr std::int32_t dotted = 2;
inline constexpr std::int32_t dash_dot = 3;
inline constexpr std::int32_t dash_dot_dot = 4;
inline constexpr std::int32_t long_dashed = 5;
} // namespace line_style

// Outlines are one pixel wide. All other values are dots.
namespace marker_symbol {
inline constexpr std::int32_t dot = 0; // one pixel whatever the size
inline constexpr std::int32_t plus = 1;
inline constexpr std::int32_t cross = 2;
inline constexpr std::int32_t circle = 3;
inline constexpr std::int32_t filled_circle = 4;
inline constexpr std::int32_t square = 5;
inline constexpr std::int32_t filled_square = 6;
inline constexpr std::int32_t triangle = 7; // an outline that points upwards
inline constexpr std::int32_t star = 8;     // plus and cross together
} // namespace marker_symbol

namespace drawing_flag {
inline constexpr std::uint32_t second_blend = 4;
inline constexpr std::uint32_t translucent = 8;
} // namespace drawing_flag

// 0 to 73 are stock patterns, of which 64 is solid; 74 is the bitmap of the rendition; higher numbers are hatches.
namespace face_pattern {
inline constexpr std::int32_t solid = 64;
inline constexpr std::int32_t bitmap = 74;
inline constexpr std::int32_t last_drawn_by_renderers = 74;
} // namespace face_pattern

} // namespace vorna

// A face pattern of any size, the lowest row first.
class VORNA_API VT_Pattern_Bitmap final : public VT_Counted {
public:
    // cells: width * height values, row after row; other than 0 = set.
    VT_Pattern_Bitmap(std::int32_t width, std::int32_t height, std::vector<std::uint8_t> cells)
        : width_(width), height_(height), cells_(std::move(cells)) {}
    VT_Counted* clone() const override { return new VT_Pattern_Bitmap(*this); }

    std::int32_t width() const noexcept { return width_; }
    std::int32_t height() const noexcept { return height_; }
    const std::uint8_t* row(std::int32_t r) const noexcept { return cells_.data() + std::int64_t{r} * width_; }

private:
    std::int32_t width_, height_;
    std::vector<std::uint8_t> cells_;
};

// The texture of a face and its colour.
class VORNA_API VT_Basic_Material final : public VT_Counted {
public:
    VT_Counted* clone() const override { return new VT_Basic_Material(*this); }

    VT_RGB32 color{255, 255, 255, 255};
    // The first row in memory is at v = 1. Renderers draw textures for which drawable_texture (host/texture.h) is not null.
    VT_Reference<const VT_Shared_Image> texture;
    VT_Matrix texture_matrix; // applied to (u, v, 0, 1)
    bool has_texture_matrix = false;
};

struct VT_Face_Attributes {
    VT_RGB32 color;
    VT_RGB32 contrast_color;
    std::uint8_t index = 0;
    std::uint8_t contrast_index = 0;
    std::int32_t pattern = vorna::face_pattern::solid;
    std::uint32_t flags = 0;
    std::int32_t mode = 0; // drawing-mode code
    VT_Reference<const VT_Pattern_Bitmap> bitmap;
    VT_Reference<const VT_Basic_Material> material;

    friend bool operator==(const VT_Face_Attributes&, const VT_Face_Attributes&) = default;
};

struct VT_Line_Attributes {
    VT_RGB32 color;
    VT_RGB32 contrast_color;
    std::uint8_t index = 0;
    std::int32_t weight = 1; // width in pixels
    std::int32_t style = 0;  // vorna::line_style
    std::uint32_t flags = 0;
    std::int32_t mode = 0; // drawing-mode code
    VT_Reference<const VT_Line_Type_Set> line_types = VT_Line_Type_Set::None;
    std::int32_t cap = vorna::line_cap::butt;
    std::int32_t join = vorna::line_join::round;

    friend bool operator==(const VT_Line_Attributes&, const VT_Line_Attributes&) = default;
};

struct VT_Marker_Attributes {
    VT_RGB32 color;
    std::uint8_t index = 0;
    std::int32_t symbol = 0; // vorna::marker_symbol
    std::int32_t size = 1;   // pixels
    std::int32_t mode = 0;   // drawing-mode code

    friend bool operator==(const VT_Marker_Attributes&, const VT_Marker_Attributes&) = default;
};

struct VT_Clip_Attributes {
    VT_Int_Rectangle hard_clip;                      // device pixels
    bool depth_test = true;                          // off: primitives neither test nor write depth
    VT_Reference<const VT_Contour_Set> complex_clip; // null = none
    VT_Int_Pair window_offset;

    friend bool operator==(const VT_Clip_Attributes&, const VT_Clip_Attributes&) = default;
};

// Attributes of painting a window and of clearing its depths.
struct VT_Window_Attributes {
    VT_Int_Rectangle rectangle;
    std::int32_t fill = vorna::face_pattern::solid; // a face pattern
    VT_RGB32 color;
    std::uint8_t index = 0;

    friend bool operator==(const VT_Window_Attributes&, const VT_Window_Attributes&) = default;
};

class VORNA_API VT_Rendition final : public VT_Counted {
public:
    VT_Counted* clone() const override { return new VT_Rendition(*this); }

    VT_Face_Attributes face;
    VT_Line_Attributes line;
    VT_Marker_Attributes marker;
    VT_Clip_Attributes clip;
    VT_Window_Attributes window;
    std::uint32_t drawing_flags = 0;

    // Sets the colour of faces, lines and markers.
    void set_color(VT_RGB32 color) noexcept;
    void set_contrast_color(VT_RGB32 color) noexcept;
    // Sets the hard clip; with restrict to the common part of the old and the given one.
    void set_hard_clip_unrestricted(const VT_Int_Rectangle& clip, bool restrict) noexcept;
    // The complex clip translated by the window offset, or null. Renditions with the same clip and offset get the same object.
    VT_Reference<const VT_Contour_Set> shifted_complex_clip() const;
};
