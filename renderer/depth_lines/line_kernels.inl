// Line kernels: the stepping of segments.
//
// A segment has one pixel for each step along its major axis, the first point's but not the last one's. Segments with more
// columns than rows are drawn as one run a row (after Bresenham's run slices); runs end where the line crosses the middle between
// two rows, and the bias of the start decides to which run a crossing on a column's border belongs, so that either direction
// draws the same pixels. All others have one pixel a row. Values along a segment are start + i * step at its pixel i, so that a
// part of a segment has the pixels, colours and depths of the whole.
//
// Runs are drawn in lanes, pixels that each have a row of their own by the vocabulary of one lane, in namespace single.

#include <cassert>
#include <cstring>

#include "renderer/depth_lines/line_kernels.h"
#include "renderer/depth_lines/line_pixels.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

inline std::int32_t add(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

inline std::int32_t subtract(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

inline std::int32_t multiply(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

inline std::int32_t magnitude(std::int32_t a) {
    return a < 0 ? subtract(0, a) : a;
}

template <int bits> inline std::int32_t to_fraction(std::int32_t a) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) << bits);
}

// From a towards b in n steps, n above 0. Divisions by 2, 4 and 8 are smaller shifts, which matters to differences that wrap.
template <int bits> inline Line_Ramp ramp_between(std::int32_t a, std::int32_t b, std::int32_t n) {
    const int dropped = n == 2 ? 1 : n == 4 ? 2 : n == 8 ? 3 : 0;
    const auto difference = static_cast<std::uint32_t>(subtract(b, a)) << (bits - dropped);
    return {add(to_fraction<bits>(a), 1 << (bits - 1)), static_cast<std::int32_t>(difference) / (n >> dropped)};
}

// The ends of a segment in columns and rows of the buffer.
struct Ends {
    std::int32_t x0, y0, x1, y1;

    std::int32_t columns() const { return magnitude(subtract(x1, x0)); }
    std::int32_t rows() const { return magnitude(subtract(y1, y0)); }
    bool is_x_major() const { return columns() > rows(); }
    // Without a branch, which would be mispredicted half the time.
    std::int32_t row_step() const { return (subtract(y1, y0) >> 31) | 1; }
    // Change of x from row to row, 16.16.
    std::int32_t slope() const {
        assert(rows() != 0);
        return to_fraction<16>(subtract(x1, x0)) / rows();
    }
};

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
    const auto moved = [=](Line_Ramp ramp) {
        const std::int32_t step = rightwards ? ramp.step : subtract(0, ramp.step);
        return Line_Ramp{subtract(ramp.value, multiply(x0, step)), step};
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

// Horizontal segments are those with no row but the last.
template <Line_Configuration c, class Limits>
void draw_x_major(const Line_Target& target, const Ends& ends, const Line_Paint& paint, std::int32_t ramps_from,
                  const Limits& limits) {
    const bool rightwards = ends.x1 > ends.x0;
    const std::int32_t leftwards = rightwards ? 0 : 1;
    const std::int32_t rows = ends.rows();
    const std::int32_t row_step = ends.row_step();
    const Line_Pen<c> pen(target, along_columns<c>(paint, ramps_from, rightwards));
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
    std::int32_t k = 0;
    std::int32_t last = rows;
    std::int32_t column = ends.x0;
    std::int32_t row = ends.y0;
    std::int32_t x = 0;
    std::int32_t slope = 0;
    if (rows > 0) {
        slope = ends.slope();
        static constexpr std::int32_t biases[2][2] = {{0x10000, 0xFFFF}, {-1, 0}}; // [leftwards][upwards]
        const std::int32_t bias = biases[leftwards][ends.y1 > ends.y0 ? 1 : 0];
        x = add(add(to_fraction<16>(ends.x0), bias), (slope + leftwards) >> 1);
    }
    if constexpr (Limits::cuts) {
        last = limits.last_row < rows ? limits.last_row : rows;
        if (limits.first_row > 0) {
            k = limits.first_row;
            row += multiply(row_step, k);
            x = add(x, multiply(k - 1, slope));
            column = x >> 16;
            x = add(x, slope);
        }
    }
    for (const std::int32_t end = last < rows ? last + 1 : rows; k < end; ++k) {
        const std::int32_t next = x >> 16;
        if (k + rows_ahead < end) {
            std::int32_t ahead = add(x, multiply(slope, rows_ahead - 1)) >> 16;
            if constexpr (Limits::cuts) {
                ahead = (ahead < limits.left ? limits.left : ahead > limits.right ? limits.right : ahead) - limits.origin;
            }
            pen.fetch_early(row + row_step * rows_ahead, ahead);
        }
        draw_run(row, column, next);
        column = next;
        x = add(x, slope);
        row += row_step;
    }
    if (k == rows && last == rows) {
        draw_run(row, column, ends.x1);
    }
}

template <Line_Configuration c, class Limits>
void draw_y_major(const Line_Target& target, const Ends& ends, const Line_Paint& paint, std::int32_t ramps_from,
                  const Limits& limits) {
    std::int32_t rows = ends.rows();
    if (rows == 0) {
        return;
    }
    const std::int32_t row_step = ends.row_step();
    const std::int32_t slope = ends.slope();
    std::int32_t x = add(to_fraction<16>(ends.x0), 0x8000);
    std::int32_t row = ends.y0;
    Line_Paint start = paint;
    if constexpr (Limits::cuts) {
        const auto is_beside = [&](std::int32_t k) {
            const std::int32_t column = add(x, multiply(k, slope)) >> 16;
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
        x = subtract(add(x, multiply(skipped, slope)), to_fraction<16>(limits.origin));
        row += multiply(row_step, skipped);
        const std::int32_t passed = multiply(row_step, subtract(row, ramps_from));
        const auto move = [=](Line_Ramp& ramp) { ramp.value = add(ramp.value, multiply(passed, ramp.step)); };
        move(start.depth);
        move(start.blue);
        move(start.green);
        move(start.red);
        move(start.alpha);
    }
    single::Line_Pen<c> pen(target, start);
    for (std::int32_t k = 0; k < rows; ++k) {
        if (k + rows_ahead < rows) {
            pen.fetch_early(row + row_step * rows_ahead, add(x, multiply(slope, rows_ahead)) >> 16);
        }
        pen.draw_single(row, x >> 16);
        pen.advance();
        x = add(x, slope);
        row += row_step;
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
        paint.depth = ramp_between<15>(points[0].z, points[1].z, steps);
    }
    if constexpr (c.shading == Line_Shading::gouraud) {
        paint.blue = ramp_between<16>(colors[0].blue, colors[1].blue, steps);
        paint.green = ramp_between<16>(colors[0].green, colors[1].green, steps);
        paint.red = ramp_between<16>(colors[0].red, colors[1].red, steps);
        if constexpr (c.pixel == Pixel_Rule::blend) {
            paint.alpha = ramp_between<16>(colors[0].alpha, colors[1].alpha, steps);
        }
    }
}

inline bool is_near_flat(VT_RGB32 a, VT_RGB32 b) {
    return magnitude(a.blue - b.blue) < 4 && magnitude(a.green - b.green) < 4 && magnitude(a.red - b.red) < 4;
}

inline bool is_in_window(const Pixel_Target& target, std::int32_t column, std::int32_t row) {
    return static_cast<std::uint32_t>(column) < static_cast<std::uint32_t>(target.width) &&
           static_cast<std::uint32_t>(row) < static_cast<std::uint32_t>(target.height);
}

// The window as the limits of a segment. Columns and rows count from it.
inline Cut window_limits(const Pixel_Target& target, const Ends& ends) {
    const std::int32_t last = target.height - 1;
    const bool upwards = ends.y1 > ends.y0;
    const std::int32_t to_first = upwards ? subtract(0, ends.y0) : subtract(ends.y0, last);
    const std::int32_t to_last = upwards ? subtract(last, ends.y0) : ends.y0;
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
    const std::int32_t row = subtract(point.y, target.origin_y);
    const std::int32_t column = subtract(point.x, target.origin_x);
    if (!is_in_window(target, column, row)) {
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
           (c.clip != Clip_Rule::masked || target.mask_rows) && (facts_of(c.format).stores_words || target.dither);
}

template <Line_Configuration c> void draw_polyline(const Line_Target& target, const Polyline& polyline) {
    assert(is_complete<c>(target) && polyline.count >= 2 && polyline.points);
    assert(c.shading == Line_Shading::index || polyline.colors);
    constexpr bool shaded = c.shading == Line_Shading::gouraud;
    Line_Paint paint{};
    paint.index = polyline.index;
    const VT_DCI_Point* point = polyline.points;
    const VT_RGB32* color = polyline.colors;
    const std::int32_t segments = polyline.count - 1;
    Ends ends{0, 0, subtract(point->x, target.origin_x), subtract(point->y, target.origin_y)};
    bool ends_inside = is_in_window(target, ends.x1, ends.y1);
    for (std::int32_t i = 0; i < segments; ++i, ++point) {
        ends = {ends.x1, ends.y1, subtract(point[1].x, target.origin_x), subtract(point[1].y, target.origin_y)};
        const bool starts_inside = ends_inside;
        ends_inside = is_in_window(target, ends.x1, ends.y1);
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
            draw_segment<c>(target, ends, paint, {ends.x0, ends.y0}, Whole{});
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
    const Ends ends{segment.from.x, subtract(segment.from.y, target.origin_y), segment.to.x,
                    subtract(segment.to.y, target.origin_y)};
    const Cut cut{segment.first_row, segment.last_row, segment.left, segment.right, target.origin_x};
    const VT_Int_Pair ramps_from{subtract(segment.ramps_from.x, target.origin_x),
                                 subtract(segment.ramps_from.y, target.origin_y)};
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
