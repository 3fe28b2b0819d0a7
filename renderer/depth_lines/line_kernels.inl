// Line kernels: segments, and polylines of them.
//
// Values along a segment are start + i * step at its pixel i, so that a part of a segment has the pixels, colours and depths of
// the whole.
//
// Runs are drawn in lanes, pixels that each have a row of their own by the vocabulary of one lane, in namespace single.

#include <cassert>
#include <cstring>

#include "renderer/depth_lines/line_kernels.h"
#include "renderer/depth_lines/line_pixels.inl"
#include "renderer/depth_lines/short_segments.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

// How many rows ahead memory is prefetched: every row of a line lies in new memory, which no processor predicts.
constexpr std::int32_t rows_ahead = 16;

// Which pixels of a segment are drawn.
struct Whole {
    static constexpr bool cuts = false;
};

// Columns of the ends and the limits are device ones: those of a buffer that begins far away may not fit 16.16.
struct Cut {
    static constexpr bool cuts = true;
    std::int32_t first_row, last_row; // from the start's row on
    std::int32_t left, right;
    std::int32_t origin; // column 0 of the buffer
};

// The same ramps by columns: their values at column 0, when x0 is where they start.
template <Line_Configuration c> Line_Paint along_columns(const Line_Paint& paint, std::int32_t x0, bool rightwards) {
    const auto moved = [=](Fixed_Interpolator ramp) {
        ramp.step = rightwards ? ramp.step : wrapping_subtract(0, ramp.step);
        ramp.value = wrapping_subtract(ramp.value, wrapping_multiply(x0, ramp.step));
        return ramp;
    };
    Line_Paint by_column = paint;
    if constexpr (c.depth != Depth_Rule::none) {
        by_column.depth = moved(paint.depth);
    }
    if constexpr (c.shading == Line_Shading::gouraud) {
        by_column.blue = moved(paint.blue);
        by_column.green = moved(paint.green);
        by_column.red = moved(paint.red);
        by_column.alpha = moved(paint.alpha);
    }
    return by_column;
}

// Level segments are those with no row but the last.
template <Line_Configuration c, class Limits>
void draw_x_major(const Line_Target& target, const Ends& ends, const Line_Paint& paint, std::int32_t ramps_from,
                  const Limits& limits) {
    const std::int32_t leftwards = ends.goes_right() ? 0 : 1;
    const Line_Pen<c> pen(target, along_columns<c>(paint, ramps_from, ends.goes_right()));
    const auto draw_run = [&](std::int32_t row, std::int32_t from, std::int32_t to) {
        std::int32_t column = (from < to ? from : to) + leftwards;
        std::int32_t end = (from < to ? to : from) + leftwards;
        if constexpr (Limits::cuts) {
            column = (column < limits.left ? limits.left : column) - limits.origin;
            end = (end > limits.right ? limits.right + 1 : end) - limits.origin;
        }
        if (end > column) {
            pen.draw_run(row, column, end - column);
        }
    };
    const std::int32_t rows = ends.rows();
    std::int32_t k = 0;
    std::int32_t last = rows;
    Run_Stepper run(ends);
    if constexpr (Limits::cuts) {
        last = limits.last_row < rows ? limits.last_row : rows;
        if (limits.first_row > 0) {
            k = limits.first_row;
            run.skip(k);
        }
    }
    for (const std::int32_t end = last < rows ? last + 1 : rows; k < end; ++k) {
        if (k + rows_ahead < end) {
            std::int32_t ahead = run.from_after(rows_ahead);
            if constexpr (Limits::cuts) {
                ahead = (ahead < limits.left ? limits.left : ahead > limits.right ? limits.right : ahead) - limits.origin;
            }
            pen.fetch_early(run.row_after(rows_ahead), ahead);
        }
        draw_run(run.row, run.from, run.to());
        run.advance();
    }
    if (k == rows && last == rows) {
        draw_run(run.row, run.from, ends.x1);
    }
}

template <Line_Configuration c, class Limits>
void draw_y_major(const Line_Target& target, const Ends& ends, const Line_Paint& paint, std::int32_t ramps_from,
                  const Limits& limits) {
    std::int32_t rows = ends.rows();
    if (rows == 0) {
        return;
    }
    Line_Stepper line(ends);
    Line_Paint start = paint;
    if constexpr (Limits::cuts) {
        const auto is_beside = [&](std::int32_t k) {
            const std::int32_t column = line.column_after(k);
            return column < limits.left || column > limits.right;
        };
        // A line may still cross a column's border while it is in the first and last of its rows.
        std::int32_t skipped = limits.first_row;
        std::int32_t end = limits.last_row < rows ? limits.last_row + 1 : rows;
        while (skipped < end && is_beside(skipped)) {
            ++skipped;
        }
        while (skipped < end && is_beside(end - 1)) {
            --end;
        }
        rows = end - skipped;
        line.skip(skipped);
        line.x.value = wrapping_subtract(line.x.value, wrapping_shift_left(limits.origin, 16));
        const std::int32_t passed = wrapping_multiply(line.row_step, wrapping_subtract(line.row, ramps_from));
        start.depth.skip(passed);
        start.blue.skip(passed);
        start.green.skip(passed);
        start.red.skip(passed);
        start.alpha.skip(passed);
    }
    single::Line_Pen<c> pen(target, start);
    for (std::int32_t k = 0; k < rows; ++k) {
        if (k + rows_ahead < rows) {
            pen.fetch_early(line.row_after(rows_ahead), line.column_after(rows_ahead));
        }
        pen.draw_single(line.row, line.column());
        pen.advance();
        line.advance();
    }
}

template <Line_Configuration c, class Limits>
void draw_segment(const Line_Target& target, const Ends& ends, const Line_Paint& paint, VT_Int_Pair ramps_from,
                  const Limits& limits) {
    if (ends.is_x_major()) {
        draw_x_major<c>(target, ends, paint, ramps_from.x, limits);
    } else {
        draw_y_major<c>(target, ends, paint, ramps_from.y, limits);
    }
}

template <Line_Configuration c>
void set_ramps(Line_Paint& paint, const VT_DCI_Point* points, const VT_RGB32* colors, std::int32_t steps) {
    if constexpr (c.depth != Depth_Rule::none) {
        paint.depth = Fixed_Interpolator::between<15>(points[0].z, points[1].z, steps);
    }
    if constexpr (c.shading == Line_Shading::gouraud) {
        paint.blue = Fixed_Interpolator::between<16>(colors[0].blue, colors[1].blue, steps);
        paint.green = Fixed_Interpolator::between<16>(colors[0].green, colors[1].green, steps);
        paint.red = Fixed_Interpolator::between<16>(colors[0].red, colors[1].red, steps);
        if constexpr (c.pixel == Pixel_Rule::blend) {
            paint.alpha = Fixed_Interpolator::between<16>(colors[0].alpha, colors[1].alpha, steps);
        }
    }
}

inline bool is_near_flat(VT_RGB32 a, VT_RGB32 b) {
    return magnitude(a.blue - b.blue) < 4 && magnitude(a.green - b.green) < 4 && magnitude(a.red - b.red) < 4;
}

inline bool is_drawable(const Pixel_Target& target, std::int32_t column, std::int32_t row) {
    return static_cast<std::uint32_t>(column) < static_cast<std::uint32_t>(target.width) &&
           static_cast<std::uint32_t>(row) - static_cast<std::uint32_t>(target.first_row) <
               static_cast<std::uint32_t>(target.end_row - target.first_row);
}

// The window's columns and drawable rows as the limits of a segment. Columns and rows count from the window.
inline Cut window_limits(const Pixel_Target& target, const Ends& ends) {
    const std::int32_t last = target.end_row - 1;
    const bool upwards = ends.y1 > ends.y0;
    const std::int32_t to_first = upwards ? wrapping_subtract(target.first_row, ends.y0) : wrapping_subtract(ends.y0, last);
    const std::int32_t to_last = upwards ? wrapping_subtract(last, ends.y0) : wrapping_subtract(ends.y0, target.first_row);
    return {to_first < 0 ? 0 : to_first, to_last, 0, target.width - 1, 0};
}

// The last point has its own depth, tested and written by the fixed rule. Of interpolated colours its own one is drawn, opaque
// where pixels are stored.
template <Line_Configuration c> void draw_last_point(const Line_Target& target, const VT_DCI_Point& point, Line_Paint paint) {
    constexpr bool is_shaded = c.shading == Line_Shading::gouraud;
    constexpr Line_Configuration of_pixel = {is_shaded ? Line_Shading::flat : c.shading,
                                             c.format,
                                             c.dither,
                                             c.depth == Depth_Rule::none ? Depth_Rule::none : Depth_Rule::less_or_equal,
                                             c.pixel,
                                             c.clip};
    const std::int32_t row = wrapping_subtract(point.y, target.origin_y);
    const std::int32_t column = wrapping_subtract(point.x, target.origin_x);
    if (!is_drawable(target, column, row)) {
        return;
    }
    if constexpr (is_shaded) {
        if constexpr (c.pixel == Pixel_Rule::store) {
            paint.color.alpha = 255;
        }
        single::prepare_color<of_pixel>(target, paint);
    }
    single::draw_line_pixel<of_pixel>(target, row, column, point.z, paint);
}

// Whether the target has what the configuration reads.
template <Line_Configuration c> bool is_complete(const Line_Target& target) {
    return target.color_rows && (c.depth == Depth_Rule::none || target.depth_rows) &&
           (c.clip != Clip_Rule::masked || target.mask_rows) && (Format_Type<c.format>::stores_words || target.dither);
}

// The same without the mask.
constexpr Line_Configuration unmasked(Line_Configuration c) {
    c.clip = Clip_Rule::open;
    return c;
}

// Whether the mask is known to leave all pixels of a box around the segment, which lies in the window.
inline bool is_unclipped(const Line_Target& target, const Ends& ends) {
    if (!target.clipped_cells.before) {
        return false;
    }
    const auto cell = [](std::int32_t pixel) { return pixel >> Clipped_Cells::side_bits; };
    const std::int32_t left = cell(ends.x0 < ends.x1 ? ends.x0 : ends.x1);
    const std::int32_t right = cell(ends.x0 < ends.x1 ? ends.x1 : ends.x0) + 1;
    const std::int32_t bottom = cell(ends.y0 < ends.y1 ? ends.y0 : ends.y1);
    const std::int32_t top = cell(ends.y0 < ends.y1 ? ends.y1 : ends.y0) + 1;
    const std::uint32_t* const low = target.clipped_cells.before + std::int64_t{target.clipped_cells.row} * bottom;
    const std::uint32_t* const high = target.clipped_cells.before + std::int64_t{target.clipped_cells.row} * top;
    return high[right] - high[left] == low[right] - low[left];
}

// A segment in the window, without its last pixel.
template <Line_Configuration c> void draw_whole_segment(const Line_Target& target, const Ends& ends, const Line_Paint& paint) {
    if constexpr (c.clip == Clip_Rule::masked) {
        if (is_unclipped(target, ends)) {
            draw_segment<unmasked(c)>(target, ends, paint, {ends.x0, ends.y0}, Whole{});
            return;
        }
    }
    draw_segment<c>(target, ends, paint, {ends.x0, ends.y0}, Whole{});
}

// What draw_short_segment does not draw; without the last pixel.
template <Line_Configuration c>
KRB_NEVER_INLINE void draw_other_segment(const Line_Target& target, const Ends& ends, const Plain_Color& plain) {
    const Line_Paint paint = paint_of(plain);
    if (is_drawable(target, ends.x0, ends.y0) && is_drawable(target, ends.x1, ends.y1)) {
        draw_whole_segment<c>(target, ends, paint);
    } else if (const Cut limits = window_limits(target, ends); limits.first_row <= limits.last_row) {
        draw_segment<c>(target, ends, paint, {ends.x0, ends.y0}, limits);
    }
}

template <Line_Configuration c> void draw_plain_polyline(const Line_Target& target, const Polyline& polyline) {
    const VT_DCI_Point* point = polyline.points;
    const VT_DCI_Point* const last = point + (polyline.count - 1);
    const VT_RGB32* color = polyline.colors;
    Plain_Color plain;
    plain.index = polyline.index;
    const auto take_color = [&] {
        if constexpr (c.shading != Line_Shading::index) {
            plain.color = *color;
            single::Format_Type<c.format>::prepare(target, plain.color, plain.prepared);
        }
    };
    take_color();
    for (;;) {
        const Ends ends{wrapping_subtract(point[0].x, target.origin_x), wrapping_subtract(point[0].y, target.origin_y),
                        wrapping_subtract(point[1].x, target.origin_x), wrapping_subtract(point[1].y, target.origin_y)};
        if (is_drawable(target, ends.x0, ends.y0) && is_drawable(target, ends.x1, ends.y1) && is_short(ends) &&
            (c.clip == Clip_Rule::open || is_unclipped(target, ends))) {
            draw_short_segment<unmasked(c)>(target, ends, plain);
        } else {
            draw_other_segment<c>(target, ends, plain);
        }
        if (++point == last) {
            break;
        }
        if (c.shading != Line_Shading::index && !polyline.single_color) {
            ++color;
            take_color();
        }
    }
    draw_last_point<c>(target, *point, paint_of(plain));
    clear_upper_halves();
}

template <Line_Configuration c> void draw_polyline(const Line_Target& target, const Polyline& polyline) {
    assert(is_complete<c>(target) && polyline.count >= 2 && polyline.points);
    assert(c.shading == Line_Shading::index || polyline.colors);
    if constexpr (is_plain<c>) {
        // Places of short segments fit 32 bits. Only buffers with much unused room in their rows have rows farther apart.
        constexpr std::int32_t farthest = 1 << 20;
        if (-target.color_row_bytes <= farthest) {
            draw_plain_polyline<c>(target, polyline);
            return;
        }
    }
    constexpr bool shaded = c.shading == Line_Shading::gouraud;
    Line_Paint paint{};
    paint.index = polyline.index;
    const VT_DCI_Point* point = polyline.points;
    const VT_RGB32* color = polyline.colors;
    const std::int32_t segments = polyline.count - 1;
    Ends ends{0, 0, wrapping_subtract(point->x, target.origin_x), wrapping_subtract(point->y, target.origin_y)};
    bool ends_inside = is_drawable(target, ends.x1, ends.y1);
    for (std::int32_t i = 0; i < segments; ++i, ++point) {
        ends = {ends.x1, ends.y1, wrapping_subtract(point[1].x, target.origin_x), wrapping_subtract(point[1].y, target.origin_y)};
        const bool starts_inside = ends_inside;
        ends_inside = is_drawable(target, ends.x1, ends.y1);
        if constexpr (c.shading != Line_Shading::index) {
            paint.color = *color;
            if (i == 0 || !polyline.single_color) {
                single::prepare_color<c>(target, paint);
            }
            const VT_RGB32* const first_color = color;
            color += shaded || (!polyline.single_color && i + 1 < segments) ? 1 : 0;
            if (shaded && target.draw_near_flat && is_near_flat(first_color[0], first_color[1])) {
                target.draw_near_flat(target.call, point, first_color);
                continue;
            }
            if constexpr (shaded || c.depth != Depth_Rule::none) {
                const std::int32_t columns = ends.columns();
                const std::int32_t rows = ends.rows();
                const std::int32_t steps = columns > rows ? columns : rows;
                if (steps == 0) {
                    continue;
                }
                set_ramps<c>(paint, point, first_color, steps);
            }
        }
        if (starts_inside && ends_inside) {
            draw_whole_segment<c>(target, ends, paint);
        } else if (const Cut limits = window_limits(target, ends); limits.first_row <= limits.last_row) {
            draw_segment<c>(target, ends, paint, {ends.x0, ends.y0}, limits);
        }
    }
    if constexpr (c.shading != Line_Shading::index) {
        paint.color = *color;
    }
    draw_last_point<c>(target, *point, paint);
    clear_upper_halves();
}

template <Line_Configuration c> void draw_cut_segment(const Line_Target& target, const Cut_Segment& segment) {
    assert(is_complete<c>(target) && 0 <= segment.first_row && segment.first_row <= segment.last_row);
    assert(segment.left <= segment.right);
    const Ends ends{segment.from.x, wrapping_subtract(segment.from.y, target.origin_y), segment.to.x,
                    wrapping_subtract(segment.to.y, target.origin_y)};
    const Cut cut{segment.first_row, segment.last_row, segment.left, segment.right, target.origin_x};
    const VT_Int_Pair ramps_from{wrapping_subtract(segment.ramps_from.x, target.origin_x),
                                 wrapping_subtract(segment.ramps_from.y, target.origin_y)};
    draw_segment<c>(target, ends, segment.paint, ramps_from, cut);
    clear_upper_halves();
}

struct Polyline_Kernel_Of {
    template <Line_Configuration c> constexpr Line_Kernel<Polyline>* operator()() const { return &draw_polyline<c>; }
};

struct Cut_Segment_Kernel_Of {
    template <Line_Configuration c> constexpr Line_Kernel<Cut_Segment>* operator()() const { return &draw_cut_segment<c>; }
};

} // namespace

extern const Line_Kernel_Table line_kernels;
constinit const Line_Kernel_Table line_kernels{
    table_over<decltype(Line_Kernel_Table::polylines), polyline_configurations>(Polyline_Kernel_Of{}),
    table_over<decltype(Line_Kernel_Table::cut_segments), cut_segment_configurations>(Cut_Segment_Kernel_Of{})};

} // namespace krb::KRB_KERNEL_SET
