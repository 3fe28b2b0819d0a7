// Members of the ellipse and elliptical arc slots for 32-bit buffers without depth: midpoint algorithms after Bresenham and Van
// Aken.
#include "renderer/primitives/ellipses.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "host/scratch.h"
#include "renderer/core/compiler_hints.h"
#include "renderer/core/entry.h"
#include "renderer/core/fixed_point.h"
#include "renderer/depth_lines/line_target.h"
#include "renderer/depth_lines/polylines_dci.h"
#include "renderer/kernels/call_target.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/kernels/span_kernels.h"
#include "renderer/mask/mask_cache.h"
#include "renderer/primitives/single_pixels.h"

namespace krb {

namespace {

struct Radii {
    std::int32_t x, y;
};

// A walk passes the places of the outline, relative to the centre, to these functions of a shape. (The walk around circles is
// inlined: calls would reload the shape's values after every pixel.)
//   add_row_ends(dx)     the pixels dx to both sides in the centre's row
//   add_column_ends(dy)  the pixels dy up and down in the centre's column
//   add(dx, dy)          the pixels dx to both sides in the rows dy up and down

// An eighth of the circle, mirrored. The radius is above 0.
template <class Shape> KRB_ALWAYS_INLINE void walk_circle(std::int32_t radius, Shape& shape) {
    shape.add_row_ends(radius);
    shape.add_column_ends(radius);
    std::int32_t d = 1 - radius;
    std::int32_t i = 0;
    std::int32_t j = radius;
    for (;;) {
        ++i;
        if (d > 0) {
            --j;
            d += 2 * (i - j) + 1;
        } else {
            d += 2 * i + 1;
        }
        if (j < i) {
            return;
        }
        shape.add(j, i);
        if (j == i) {
            return;
        }
        shape.add(i, j);
    }
}

// A quarter of the ellipse in two regions, first the columns from the top to where the slope is 1, then the rows from there on.
// The radii are above 0. The decision value d is carried from the first region into the second as it is, and all values wrap at
// 32 bits: large ellipses lose their shape. A pixel beyond the radii is never added.
template <class Shape> void walk_ellipse(Radii radii, Shape& shape) {
    const auto b = static_cast<std::uint32_t>(radii.y);
    const std::uint32_t aa = static_cast<std::uint32_t>(radii.x) * static_cast<std::uint32_t>(radii.x);
    const std::uint32_t bb = b * b;
    const auto is_signed = [](std::uint32_t value) { return static_cast<std::int32_t>(value); };
    std::uint32_t px = 0;
    std::uint32_t py = 2 * aa * b;
    std::uint32_t d = static_cast<std::uint32_t>(is_signed(aa) >> 2) - aa * b + bb;
    std::int32_t i = 0;
    std::int32_t j = radii.y;
    shape.add_row_ends(radii.x);
    do {
        px += 2 * bb;
        shape.add(i, j);
        if (is_signed(d) >= 0) {
            py -= 2 * aa;
            --j;
            d += px - py + bb;
        } else {
            d += px + bb;
        }
        ++i;
        if (i > radii.x || j < -radii.y) {
            return;
        }
    } while (is_signed(px) < is_signed(py));
    while (j > 0 && i <= radii.x) {
        py -= 2 * aa;
        shape.add(i, j);
        --j;
        if (is_signed(d) < 1) {
            px += 2 * bb;
            ++i;
            d += px - py + aa;
        } else {
            d -= py + aa;
        }
    }
}

template <class Shape> void walk(Radii radii, Shape& shape) {
    if (radii.x == radii.y) {
        walk_circle(radii.x, shape);
    } else {
        walk_ellipse(radii, shape);
    }
}

// How many rows ahead memory is prefetched: where an outline is steep every row lies in new memory, which no processor predicts.
constexpr std::int32_t rows_ahead = 8;

// Draws the pixels in the order of the walk, which meets the upper and the lower end of an ellipse twice: there it blends twice.
template <class Rules, bool fetches> struct Outline {
    using Format = typename Rules::Format;

    std::uint8_t* const* rows;
    const std::uint8_t* const* mask_rows; // null unless masked
    VT_Int_Pair window;                   // width and height
    std::int32_t x, y;
    std::int32_t last; // row from the centre
    typename Format::Flat color;

    void add_row_ends(std::int32_t dx) {
        draw(x - dx, y);
        draw(x + dx, y);
    }
    void add_column_ends(std::int32_t dy) {
        draw(x, y + dy);
        draw(x, y - dy);
    }
    void add(std::int32_t dx, std::int32_t dy) {
        if (fetches && dx >= dy && dy + rows_ahead <= last) {
            for (const std::int32_t row : {y + dy + rows_ahead, y - dy - rows_ahead}) {
                KRB_FETCH_EARLY(rows[row] + std::int64_t{Format::bytes} * (x - dx));
                KRB_FETCH_EARLY(rows[row] + std::int64_t{Format::bytes} * (x + dx));
            }
        }
        // A copy, which no store to a pixel can alias.
        const Outline copy = *this;
        copy.draw(copy.x - dx, copy.y + dy);
        copy.draw(copy.x + dx, copy.y + dy);
        copy.draw(copy.x - dx, copy.y - dy);
        copy.draw(copy.x + dx, copy.y - dy);
    }

private:
    // The target is local to each pixel, so that compilers keep only the fields that the rules read: a copy of a whole target
    // takes as long as a small outline.
    KRB_ALWAYS_INLINE void draw(std::int32_t column, std::int32_t row) const {
        Pixel_Target target{};
        target.color_rows = rows;
        target.mask_rows = mask_rows;
        target.width = window.x;
        target.height = window.y;
        one_lane::draw_pixel<Rules>(target, row, column, 0, color);
    }
};

// How far the outline reaches to both sides in each row from the centre's up; -1 where it has no pixel.
class Extents {
public:
    explicit Extents(std::int32_t last) : extents_(std::int64_t{last} + 1) {
        std::fill_n(extents_.data(), std::size_t{1} + static_cast<std::size_t>(last), -1);
    }

    void add_row_ends(std::int32_t dx) { add(dx, 0); }
    void add_column_ends(std::int32_t dy) { add(0, dy); }
    void add(std::int32_t dx, std::int32_t dy) {
        std::int32_t& extent = extents_[std::abs(dy)];
        extent = std::max(extent, dx);
    }
    const std::int32_t* data() { return extents_.data(); }

private:
    vorna::Scratch<std::int32_t, 512> extents_;
};

// A shape that is drawn here, with both radii above 0.
struct Ellipse {
    std::int32_t x, y; // column and row of the centre
    Radii radii;
    VT_RGB32 color;
};

template <Pixel_Rule pixel, Clip_Rule clip>
void draw_outline(const Software_Z_Buffer& renderer, const Ellipse& ellipse, const Frame_Buffer_Mask* mask) {
    using Rules = Single_Rules<format_of(Case::rgb32), Depth_Rule::none, pixel, clip>;
    const auto draw = [&]<bool fetches>() {
        Outline<Rules, fetches> outline{renderer.target.color_rows,
                                        mask ? mask->rows() : nullptr,
                                        renderer.window_size,
                                        ellipse.x,
                                        ellipse.y,
                                        ellipse.radii.y,
                                        {renderer.target, ellipse.color}};
        walk(ellipse.radii, outline);
    };
    // Small ones are finished before it would help.
    if (ellipse.radii.y >= 2 * rows_ahead) {
        draw.template operator()<true>();
    } else {
        draw.template operator()<false>();
    }
}

void draw_filled(const Software_Z_Buffer& renderer, const Ellipse& ellipse, const Frame_Buffer_Mask* mask) {
    Extents extents(ellipse.radii.y);
    walk(ellipse.radii, extents);
    Pixel_Target target = pixel_target_of(Case::rgb32, renderer, {});
    target.mask_rows = mask ? mask->rows() : nullptr;
    const Span_Configuration configuration{format_of(Case::rgb32), Depth_Rule::none,
                                           ellipse.color.alpha == 255 ? Pixel_Rule::store : Pixel_Rule::blend,
                                           mask ? Clip_Rule::masked : Clip_Rule::open};
    renderer.kernels->spans->fill[configuration](target, {ellipse.x, ellipse.y, ellipse.radii.y, extents.data()}, ellipse.color);
}

constexpr float quarter_turn = 1.5707964F, half_turn = 3.1415927F, three_quarter_turn = 4.712389F, full_turn = 6.2831855F;

bool turns_axes_into_axes(float rotation) {
    return rotation == 0 || rotation == quarter_turn || rotation == half_turn || rotation == three_quarter_turn;
}

// The ends of the polyline that an ellipse without width or height is. The centre is a column and row of the buffer, the ends are
// device points.
struct Flat_Ellipse {
    VT_DCI_Point ends[2];

    Flat_Ellipse(const VT_DCI_Point& center, Radii radii, VT_Int_Pair origin) {
        const VT_Int_Pair middle{wrapping_add(center.x, origin.x), wrapping_add(center.y, origin.y)};
        ends[0] = {wrapping_subtract(middle.x, radii.x), wrapping_subtract(middle.y, radii.y), 0};
        ends[1] = {wrapping_add(middle.x, radii.x), wrapping_add(middle.y, radii.y), 0};
    }
};

enum class Form { filled, outline };

// The members serve the cases with and without alpha blending alike: shapes blend by their colour's alpha.
template <Form form, Case c> struct Ellipse_Entry : Entry_Rules<c> {
    static constexpr bool host_goes_first = true;

    static bool is_hosts(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point*,
                         const VT_DCI_Point* radii, double start, double end, double rotation, const VT_RGB32*) {
        const bool whole = static_cast<float>(start) == 0 && static_cast<float>(end) == full_turn;
        const bool smoothed = form == Form::outline && (rendition.line.flags & vorna::line_flag::smoothed) != 0;
        return radii->x < 0 || radii->y < 0 || !whole || !drawn_by_renderer(rendition.line) || smoothed ||
               (radii->x != radii->y && !turns_axes_into_axes(static_cast<float>(rotation))) ||
               (renderer.color_buffer && !holds_pixels_of(c, renderer));
    }
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point* center,
                     const VT_DCI_Point* given, double, double, double rotation, const VT_RGB32* given_color) {
        const auto turn = static_cast<float>(rotation);
        Radii radii{given->x, given->y};
        if (turn == quarter_turn || turn == three_quarter_turn) {
            std::swap(radii.x, radii.y);
        }
        const VT_RGB32 color = given_color ? *given_color : rendition.line.color;
        if (radii.x == 0 || radii.y == 0) {
            const Flat_Ellipse line(*center, radii, renderer.window_origin);
            Member<slots::Draw_DCI_Colorized_Polyline, Case::rgb32_alpha>::enter(renderer, rendition, 2, line.ends, &color, true);
            return;
        }
        const Frame_Buffer_Mask* mask = is_masked(renderer, rendition) ? renderer.mask_cache->newest : nullptr;
        const Ellipse ellipse{center->x, center->y, radii, color};
        if constexpr (form == Form::filled) {
            draw_filled(renderer, ellipse, mask);
        } else if (mask) {
            color.alpha == 255 ? draw_outline<Pixel_Rule::store, Clip_Rule::masked>(renderer, ellipse, mask)
                               : draw_outline<Pixel_Rule::blend, Clip_Rule::masked>(renderer, ellipse, mask);
        } else {
            color.alpha == 255 ? draw_outline<Pixel_Rule::store, Clip_Rule::open>(renderer, ellipse, mask)
                               : draw_outline<Pixel_Rule::blend, Clip_Rule::open>(renderer, ellipse, mask);
        }
    }
};

} // namespace

template <Case c> struct Entry<slots::Draw_DCI_Ellipse, c> : Ellipse_Entry<Form::filled, c> {};
template <Case c> struct Entry<slots::Draw_DCI_Elliptical_Arc, c> : Ellipse_Entry<Form::outline, c> {};

template struct Member<slots::Draw_DCI_Ellipse, Case::rgb32>;
template struct Member<slots::Draw_DCI_Elliptical_Arc, Case::rgb32>;

} // namespace krb
