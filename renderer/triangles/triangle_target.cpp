// The target and the kernel of a call of a triangle member.
#include "renderer/triangles/triangle_target.h"

#include <algorithm>

#include "host/clip.h"
#include "host/rounding.h"
#include "host/strip.h"
#include "host/triangle_clipper.h"
#include "renderer/core/fixed_point.h"
#include "renderer/kernels/call_target.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/mask/mask_cache.h"

namespace krb {

namespace {

// A pattern row has its leftmost cell in the high bit; kernels want it in bit 0, and more than eight bits from any column on.
constexpr std::uint32_t repeated_row(std::uint8_t row) noexcept {
    std::uint32_t bits = 0;
    for (int a = 0; a < 8; ++a) {
        bits |= (row & 0x80U >> a) != 0 ? 1U << a : 0U;
    }
    return bits * 0x01010101U;
}

// Cells, gaps and contrast colour of a face's pattern. Without a bitmap of its own the bitmap pattern has no cells.
Face_Pattern pattern_of(const VT_Face_Attributes& face) noexcept {
    Face_Pattern pattern{};
    if (face.pattern == vorna::face_pattern::bitmap) {
        if (face.bitmap && face.bitmap->width() > 0 && face.bitmap->height() > 0) {
            pattern.bitmap = face.bitmap->row(0);
            pattern.width = face.bitmap->width();
            pattern.height = face.bitmap->height();
        }
    } else if (face.pattern >= 0) {
        for (int b = 0; b < 8; ++b) {
            pattern.stock_rows[b] = repeated_row(SHARED.stock_patterns[face.pattern][b]);
        }
    }
    pattern.inverted = (face.flags & vorna::face_flag::inverted_pattern) != 0;
    pattern.opaque_gaps = (face.flags & vorna::face_flag::opaque_pattern) != 0;
    pattern.contrast = face.contrast_color;
    return pattern;
}

bool is_solid(const VT_Face_Attributes& face) noexcept {
    return face.pattern == vorna::face_pattern::solid && !(face.flags & vorna::face_flag::inverted_pattern);
}

// Where the format follows depth modes, members follow the write flag; the test mode belongs to the opaque ones, and to all
// textured ones.
Depth_Rules depth_rules_of(Case c, Shading shading) noexcept {
    return {c == Case::depth_rgb32 || (c == Case::depth_rgb32_alpha && shading == Shading::textured), true};
}

// The window's rows, or those of them in the hard clip where that counts for device strips too, drawable or not.
Row_Limits rows_of(const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept {
    const std::int32_t height = renderer.window_size.y;
    if (!renderer.keeps_to_hard_clip) {
        return {0, height};
    }
    const auto limit = [&](std::int64_t row) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(row - renderer.window_origin.y, 0, height));
    };
    const std::int32_t first = limit(rendition.clip.hard_clip.bottom);
    return {first, std::max(limit(std::int64_t{rendition.clip.hard_clip.top} + 1), first)};
}

// Columns of the window, those of them in the hard clip as above, and the drawable ones of these rows.
void set_limits(Triangle_Target& target, const Software_Z_Buffer& renderer, const VT_Rendition& rendition,
                Row_Limits rows) noexcept {
    target.end_column = renderer.window_size.x;
    if (renderer.keeps_to_hard_clip) {
        const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
        const auto limit = [](std::int64_t side, std::int32_t origin, std::int32_t least, std::int32_t most) {
            return static_cast<std::int32_t>(std::min<std::int64_t>(std::max<std::int64_t>(side - origin, least), most));
        };
        target.first_column = limit(clip.left, renderer.window_origin.x, 0, target.end_column);
        target.end_column = limit(std::int64_t{clip.right} + 1, renderer.window_origin.x, target.first_column, target.end_column);
    }
    target.first_row = std::min(std::max(rows.first, target.first_row), target.end_row);
    target.end_row = std::max(std::min(rows.end, target.end_row), target.first_row);
}

// rows: see rows_of.
Triangle_Target target_of(Case c, Shading shading, const Software_Z_Buffer& renderer, const VT_Rendition& rendition,
                          Row_Limits rows) noexcept {
    Triangle_Target target{};
    static_cast<Pixel_Target&>(target) = pixel_target_of(c, renderer, depth_rules_of(c, shading));
    set_limits(target, renderer, rendition, rows);
    // Kernels keep to the drawable rows by these limits, and find rows by their distance.
    target.color_rows = renderer.color_buffer->rows;
    target.depth_rows = renderer.depth_buffer ? renderer.depth_buffer->rows : nullptr;
    target.palette = reinterpret_cast<const std::uint8_t*>(renderer.palette_pixels);
    return target;
}

// Tested for every device strip, in one pass over its points. Points on the far edges of the last pixels lie inside.
bool lies_inside(const Triangle_Target& target, const Triangle_Strip& strip) noexcept {
    const auto left = static_cast<std::uint32_t>(target.origin_x) + static_cast<std::uint32_t>(target.first_column);
    const auto bottom = static_cast<std::uint32_t>(target.origin_y) + static_cast<std::uint32_t>(target.first_row);
    // Unsigned, so that points before the first column or row lie far behind the last.
    std::uint32_t farthest_x = 0;
    std::uint32_t farthest_y = 0;
    for (std::int32_t i = 0; i < strip.count; ++i) {
        farthest_x = std::max(farthest_x, static_cast<std::uint32_t>(strip.points[i].x) - left);
        farthest_y = std::max(farthest_y, static_cast<std::uint32_t>(strip.points[i].y) - bottom);
    }
    return farthest_x <= static_cast<std::uint32_t>(target.end_column - target.first_column) &&
           farthest_y <= static_cast<std::uint32_t>(target.end_row - target.first_row);
}

// Kernels hold columns and their differences as signed 16.16. Rows are whole numbers of 32 bits, and what is added up over them
// stays between two vertices: as long as their differences fit, nothing wraps that does not wrap in the whole triangle.
constexpr std::int64_t widest = 32767;
constexpr std::int64_t tallest = 0x40000000;
// A strip is drawn in one call where it keeps to as many columns around the window, far edge of the last one included.
constexpr std::int32_t columns_before = 16383;
constexpr std::int32_t columns_held = 32768;
// Triangles that are larger still are cut along a grid. It lies in the picture and not in the window, and whether a triangle is
// cut depends on the triangle alone, so that all tiles draw the same pieces.
constexpr int cell_bits = 14;

struct Extent {
    std::int64_t least, most;

    Extent(const VT_DCI_Point* points, std::int32_t count, std::int32_t VT_DCI_Point::*axis) noexcept
        : least(points->*axis), most(points->*axis) {
        for (std::int32_t i = 1; i < count; ++i) {
            least = std::min<std::int64_t>(least, points[i].*axis);
            most = std::max<std::int64_t>(most, points[i].*axis);
        }
    }
    std::int64_t length() const noexcept { return most - least; }
};

bool is_too_large(const VT_DCI_Point* triangle) noexcept {
    return Extent(triangle, 3, &VT_DCI_Point::x).length() > widest || Extent(triangle, 3, &VT_DCI_Point::y).length() > tallest;
}

// The target of a strip whose columns begin with that one, relative to the window's first.
Triangle_Target scissored_target(const Triangle_Target& target, std::int32_t first_column) noexcept {
    Triangle_Target scissored = target;
    scissored.scissored = true;
    scissored.column_bias = -first_column;
    scissored.origin_x = wrapping_add(target.origin_x, first_column);
    return scissored;
}

// The sides of a rectangle of pixels in device coordinates.
VT_Int_Rectangle device_rectangle(const Triangle_Target& target, std::int32_t left, std::int32_t right, std::int32_t bottom,
                                  std::int32_t top) noexcept {
    const auto side = [](std::int32_t origin, std::int32_t offset) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{origin} + offset, INT32_MIN, INT32_MAX));
    };
    return {side(target.origin_x, left), side(target.origin_x, right), side(target.origin_y, bottom), side(target.origin_y, top)};
}

// Calls visit(cell) for each cell of the grid that the target's columns and rows touch. Cells are rectangles of the picture.
template <class Visit> void visit_cells(const Triangle_Target& target, VT_Int_Pair tile_origin, Visit visit) {
    const auto range = [](std::int32_t origin, std::int32_t tile, std::int32_t first, std::int32_t end) {
        const std::int64_t from = std::int64_t{origin} + tile + first;
        const std::int64_t to = from + (end - first) - 1;
        const auto cell = [](std::int64_t v) {
            return static_cast<std::int32_t>(std::clamp<std::int64_t>(v, INT32_MIN, INT32_MAX) >> cell_bits);
        };
        return VT_Int_Pair{cell(from), cell(to)};
    };
    const VT_Int_Pair columns = range(target.origin_x, tile_origin.x, target.first_column, target.end_column);
    const VT_Int_Pair rows = range(target.origin_y, tile_origin.y, target.first_row, target.end_row);
    constexpr std::int32_t size = 1 << cell_bits;
    for (std::int32_t row = rows.x; row <= rows.y; ++row) {
        for (std::int32_t column = columns.x; column <= columns.y; ++column) {
            const std::int32_t left = column * size;
            const std::int32_t bottom = row * size;
            visit(VT_Int_Rectangle{left, left + (size - 1), bottom, bottom + (size - 1)});
        }
    }
}

// Texel coordinates of whole strips are converted from floats, so the conversion back to floats is exact.
Texel_Coordinates cut_coordinates(float s, float t) noexcept {
    const auto fixed = [](float v) { return static_cast<std::int32_t>(std::clamp(v, -2147483648.0F, 2147483520.0F)); };
    return {fixed(s), fixed(t)};
}

} // namespace

Triangle_Call::Triangle_Call(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, Shading shading,
                             Pixel_Rule pixel, bool consults_mask)
    : rows(rows_of(renderer, rendition)), target(target_of(c, shading, renderer, rendition, rows)), kernels_(renderer.kernels),
      tile_origin_(renderer.tile_origin) {
    if (consults_mask && is_masked(renderer, rendition)) {
        target.mask_rows = renderer.mask_cache->newest->rows();
    }
    Clip_Rule clip = target.mask_rows ? Clip_Rule::masked : Clip_Rule::open;
    if (!is_solid(rendition.face)) {
        clip = Clip_Rule::patterned;
        pattern_ = pattern_of(rendition.face);
        target.pattern = &pattern_;
    }
    configuration_ = {shading, format_of(c), depth_rule_of(c, renderer, depth_rules_of(c, shading)), pixel, clip};
    kernel_ = kernel(shading, pixel);
}

Strip_Kernel* Triangle_Call::kernel(Shading shading, Pixel_Rule pixel) const noexcept {
    Triangle_Configuration configuration = configuration_;
    configuration.shading = shading;
    configuration.pixel = pixel;
    return kernels_->triangles->strips[configuration];
}

void Triangle_Call::draw_any(const Triangle_Strip& strip) const {
    if (lies_inside(target, strip)) {
        draw(strip);
    } else {
        draw_scissored(strip);
    }
}

void Triangle_Call::draw_scissored(const Triangle_Strip& strip) const {
    if (target.first_column == target.end_column || target.first_row == target.end_row) {
        return;
    }
    // What is left out must not depend on which rows are drawable. Triangles that are cut may appear elsewhere than their points
    // lie, since coordinates wrap.
    const bool has_large = Extent(strip.points, strip.count, &VT_DCI_Point::x).length() > widest ||
                           Extent(strip.points, strip.count, &VT_DCI_Point::y).length() > tallest;
    const Row_Limits clip_rows = has_large ? rows : Row_Limits{target.first_row, target.end_row};
    vorna::Scratch<std::uint16_t> outcodes(strip.count);
    if (VD_Clip(device_rectangle(target, target.first_column, target.end_column - 1, clip_rows.first, clip_rows.end - 1),
                strip.count, strip.points, outcodes.data()) == 0) {
        return;
    }
    const auto fits = [&](const VT_DCI_Point* triangle) {
        const Extent columns(triangle, 3, &VT_DCI_Point::x);
        return columns.least - target.origin_x >= -columns_before &&
               columns.most - target.origin_x < columns_held - columns_before && !is_too_large(triangle);
    };
    const Triangle_Target around_window = scissored_target(target, -columns_before);
    using vorna::Placement;
    vorna::walk_strip(
        strip.count,
        [&](std::int32_t k) {
            const Placement placement = vorna::placement_of(&outcodes[k]);
            return placement == Placement::across && fits(strip.points + k) ? Placement::inside : placement;
        },
        [&](std::int32_t first, std::int32_t length) { kernel_(around_window, strip.part(first, length)); },
        [&](std::int32_t k) {
            const Triangle_Strip triangle = strip.part(k, 3);
            if (is_too_large(triangle.points)) {
                draw_in_cells(triangle);
            } else {
                draw_apart(triangle);
            }
        });
}

void Triangle_Call::draw_apart(const Triangle_Strip& strip) const {
    const std::int64_t least = Extent(strip.points, strip.count, &VT_DCI_Point::x).least;
    kernel_(scissored_target(target, static_cast<std::int32_t>(least - target.origin_x)), strip);
}

void Triangle_Call::draw_in_cells(const Triangle_Strip& whole) const {
    vorna::Clip_Vertex<VT_Point_D> triangle[3]; // in doubles, since corners may be far away
    for (std::int32_t i = 0; i < 3; ++i) {
        const Texel_Coordinates at = whole.coordinates ? whole.coordinates[i] : Texel_Coordinates{};
        const VT_DCI_Point& point = whole.points[i];
        triangle[i] = {
            {double(wrapping_add(point.x, tile_origin_.x)), double(wrapping_add(point.y, tile_origin_.y)), double(point.z)},
            is_flat() ? VT_RGB32{} : whole.colors[i],
            static_cast<float>(at.s),
            static_cast<float>(at.t)};
    }
    visit_cells(target, tile_origin_, [&](const VT_Int_Rectangle& cell) {
        vorna::Clipped_Polygon polygon;
        if (clip_triangle_to_rectangle(cell, triangle, polygon) < 3) {
            return;
        }
        Texel_Coordinates coordinates[vorna::Clipped_Polygon::most_vertices];
        for (std::int32_t i = 0; i < polygon.count; ++i) {
            polygon.points[i].x = wrapping_subtract(polygon.points[i].x, tile_origin_.x);
            polygon.points[i].y = wrapping_subtract(polygon.points[i].y, tile_origin_.y);
            coordinates[i] = cut_coordinates(polygon.u[i], polygon.v[i]);
        }
        draw_apart(
            {polygon.count, polygon.points, is_flat() ? whole.colors : polygon.colors, is_flat(), whole.near_flat, coordinates});
    });
}

Flat_Face flat_face(Case c, const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept {
    const bool merges = renderer.merges(rendition.face.mode);
    const bool translucent = (rendition.face.flags & vorna::face_flag::translucent) != 0;
    Flat_Face face{rendition.face.color, colorized_pixel_rule(c, renderer, rendition)};
    if (draws_indices(c)) {
        face.pixel = merges ? Pixel_Rule::merge : Pixel_Rule::store;
    } else if (c == Case::rgb32 && (translucent || merges)) {
        // Drawn as the alpha member draws it; a face that only merges is opaque.
        face.pixel = merges ? Pixel_Rule::merge : Pixel_Rule::blend;
        face.color.alpha = translucent ? face.color.alpha : 255;
    }
    return face;
}

vorna::Scratch<VT_DCI_Point> rounded_points(std::int32_t count, const VT_Point* points) {
    vorna::Scratch<VT_DCI_Point> rounded(count);
    for (std::int32_t i = 0; i < count; ++i) {
        rounded[i] = vorna::rounded_point(points[i]);
    }
    return rounded;
}

} // namespace krb
