// A second telling of the drawing rules, as plain as can be: one pixel at a time, no families, no fast paths. Tests compare what
// renderers draw with what this draws.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/rendition.h"
#include "tests/support/renderer_setup.h"

namespace model {

// A raster of numbers by column and row, row 0 the lowest.
class Plane {
public:
    Plane() = default;
    Plane(VT_Int_Pair size, std::uint32_t value)
        : width_(size.x), values_(static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y), value) {}

    std::uint32_t& at(std::int32_t column, std::int32_t row) { return values_[position(column, row)]; }
    std::uint32_t at(std::int32_t column, std::int32_t row) const { return values_[position(column, row)]; }

private:
    std::size_t position(std::int32_t column, std::int32_t row) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(column);
    }

    std::int32_t width_ = 0;
    std::vector<std::uint32_t> values_;
};

// What happens to the pixel under a new colour.
enum class Color_Rule {
    store,            // all four bytes as they are
    store_opaque,     // three bytes, and 255 as the fourth
    blend,            // by the alpha of the colour, and 255 as the fourth byte
    blend_visible,    // the same; alpha 0 leaves pixel and depth alone
    blend_as_line,    // by the alpha of the colour in 256ths
    blend_by_weight,  // by the fragment's weight
    merge,            // merge control
    dither,           // the colour's index at this pixel
    dither_and_merge, // the same, combined by merge control
};

enum class Depth_Rule {
    none,
    nearer_or_equal,             // always written
    nearer_or_equal_write_if_on, // written when z write is on
    by_mode,                     // z test mode; written when z write is on
};

struct Pixel_Rules {
    Color_Rule color = Color_Rule::store;
    Depth_Rule depth = Depth_Rule::none;
    VT_Reference<const VT_Contour_Set> region = nullptr; // only pixels inside are drawn; null = all
};

enum class Line_Kind { flat, colorized, gouraud };

// A segment of a polyline with the colours of its ends.
struct Stroke {
    VT_DCI_Point from, to;
    VT_RGB32 from_color, to_color;
};

std::vector<Stroke> strokes_between(const std::vector<VT_DCI_Point>& points, const std::vector<VT_RGB32>& colors, Line_Kind kind,
                                    bool single_color);

class Model {
public:
    explicit Model(const Renderer_Setup& setup);

    Renderer_Setup setup;
    // Palette indices or colour words, and depths. Both are filled with zeros.
    Plane color, depth;
    // The byte address of each row's first pixel: the dither matrix hangs on the low three bits of addresses.
    std::vector<std::uintptr_t> row_addresses;
    bool z_write = true;
    std::int32_t z_test = 2;

    std::uint32_t background, alternate; // colour words, or indices, as the pixels are

    // Drawing. Each returns the names of the host's functions that have to draw instead, one a call; none when all is drawn here.
    using Handed_Over = std::vector<std::string>;
    Handed_Over draw_dot(const VT_Rendition& rendition, const VT_DCI_Point& point, const VT_RGB32* color);
    // A list of colours, or a single one, makes colorized markers; without any colour they have their own.
    Handed_Over draw_polymarker(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
                                const std::vector<VT_RGB32>& colors, bool single_color);
    Handed_Over draw_polytriangle(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points);
    Handed_Over draw_colorized_polytriangle(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
                                            const std::vector<VT_RGB32>& colors, bool single_color);
    Handed_Over draw_gouraud_polytriangle(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
                                          const std::vector<VT_RGB32>& colors);
    // Lines without line types. Those of one colour have it in every stroke, index or not. DCI ones have a stroke at least.
    Handed_Over draw_dci_polyline(const VT_Rendition& rendition, Line_Kind kind, const std::vector<Stroke>& strokes);
    Handed_Over draw_2di_polyline(const VT_Rendition& rendition, Line_Kind kind, const std::vector<Stroke>& strokes);
    Handed_Over draw_window(const VT_Rendition& rendition);

    // Buffers. Sources and results are rows from the top down, as wide as the rectangle.
    void clear_depth_rectangle(const VT_Rendition& rendition);
    void write_depth_rectangle(const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                               const std::vector<std::uint16_t>& depths);
    std::vector<std::uint32_t> read(const Plane& plane, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right) const;

    // The palette index that a colour has at a pixel.
    std::uint32_t dithered(VT_RGB32 color, std::int32_t column, std::int32_t row) const;
    // The index of the closest palette colour.
    std::uint32_t closest_index(VT_RGB32 color) const;

private:
    // A pixel of a primitive with the colour and depth that it has there.
    struct Fragment {
        std::int32_t column, row;
        std::int64_t z;
        VT_RGB32 color;
        std::int32_t weight = 0; // in 65536ths
    };

    std::uint32_t find_alternate_index() const;
    bool is_merging(std::int32_t mode) const { return setup.force_merge || mode == vorna::merge_drawing_mode; }
    std::int32_t column_of(std::int32_t x) const { return x - setup.origin.x; }
    std::int32_t row_of(std::int32_t y) const { return y - setup.origin.y; }
    std::uintptr_t address_of(std::int32_t column, std::int32_t row) const {
        return row_addresses[static_cast<std::size_t>(row)] + static_cast<std::uintptr_t>(column);
    }
    Fragment fragment_at(std::int64_t x, std::int64_t y, std::int64_t z, VT_RGB32 shown) const {
        return {column_of(static_cast<std::int32_t>(x)), row_of(static_cast<std::int32_t>(y)), z, shown};
    }
    // The rendition's clip region where renderers look for one, null where they do not. Triangles and images are not modelled
    // with regions.
    VT_Reference<const VT_Contour_Set> region_of(const VT_Rendition& rendition) const;
    VT_Color_Cube color_cube() const;

    void draw_pixel(const Fragment& fragment, const Pixel_Rules& rules);
    bool passes_depth_test(std::int64_t z, std::uint32_t stored, Depth_Rule rule) const;
    std::uint32_t combined(std::uint32_t stored, const Fragment& fragment, Color_Rule rule) const;
    std::uint32_t merged_color(std::uint32_t stored, std::uint32_t fresh) const;
    std::uint32_t merged_index(std::uint32_t stored, std::uint32_t fresh) const;

    Pixel_Rules colorized_rules(const VT_Rendition& rendition, bool with_depth, bool with_alpha) const;
    Depth_Rule triangle_depth_rule(bool with_depth, bool with_alpha) const;
    void draw_face_pixel(const Fragment& fragment, const VT_Face_Attributes& face, const Pixel_Rules& rules);
    void draw_triangle(const VT_Face_Attributes& face, const std::array<VT_DCI_Point, 3>& points,
                       const std::array<VT_RGB32, 3>& colors, const Pixel_Rules& rules);

    void draw_with_fringes(const VT_Rendition& rendition, std::int64_t x, std::int64_t y, bool is_vertical, VT_RGB32 shown,
                           const Pixel_Rules& rules);
    void draw_fringe(std::int64_t x, std::int64_t y, std::int32_t weight, VT_RGB32 shown, const Pixel_Rules& rules);
    void draw_smoothed(const VT_Rendition& rendition, const Stroke& stroke, const Pixel_Rules& rules);
    void draw_clipped(const VT_Rendition& rendition, Line_Kind kind, const Stroke& stroke);
    std::uint32_t additive_index(const Stroke& stroke, std::int64_t count, std::int64_t i, std::int32_t column,
                                 std::int64_t y) const;
};

// Even-odd over all contours. A pixel is open when its centre is inside.
bool is_inside(const VT_Contour_Set& region, long double x, long double y);

inline bool contains(const VT_Int_Rectangle& r, std::int32_t x, std::int32_t y) {
    return x >= r.left && x <= r.right && y >= r.bottom && y <= r.top;
}

// What a smoothed line weighs, in 256ths, so many 256ths of a pixel away.
std::int32_t distance_weight(std::int64_t distance);

// The ordered-dither threshold at a cell, and the Bayer rank that it comes from.
std::uint32_t threshold(std::uintptr_t column, std::int32_t row);
std::int32_t bayer_rank(std::int32_t column, std::int32_t row, std::int32_t size = 8);

// Whether the face's pattern sets the pixel, inversion included.
bool is_pattern_set(const VT_Face_Attributes& face, std::int32_t column, std::int32_t row);

// Floating device points as whole ones.
std::vector<VT_DCI_Point> rounded(const std::vector<VT_Point>& points);

} // namespace model
